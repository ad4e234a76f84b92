// Tells what changes in a folder and all folders below it, by inotify.
//
// Events are gathered for half a second and handed over as one batch of paths; a path may be that
// of a file or of a folder that is new, gone or differs. New folders are watched without a gap:
// what lay in them before their watch began is told as changed. Links are never followed.
//
// Where the kernel lost events, or the folder itself went away or came back, the batch says
// "everything". Where it has no more watches to give, the log says so and "everything" is told
// twice a minute instead.
#pragma once

#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace corvelle {

class FolderWatcher
{
public:
    struct Batch
    {
        QSet<QString> paths; // relative to the root, which has the empty one
        bool everything = false;

        bool isEmpty() const { return paths.isEmpty() && !everything; }
    };

    struct Wishes
    {
        // Called on the watcher's thread.
        std::function<void(Batch)> handler;
        // Names whose events nobody wants, and folders that aren't entered; the path is absolute.
        std::function<bool(const QString& name)> isSkipped;
        std::function<bool(const QString& name, const QString& path)> isExcludedFolder;
        // Between two times that "everything" is told for want of watches.
        std::chrono::milliseconds slowPoll = std::chrono::seconds(30);
    };

    // Returns once every folder is watched: not for the main thread.
    FolderWatcher(const QString& root, Wishes wishes);
    ~FolderWatcher();

    // Hands over at once what has happened so far, and then calls `done`, both on the watcher's
    // thread. A watcher that ends first calls `done` all the same.
    void flush(std::function<void()> done);

private:
    class Thread;
    std::unique_ptr<Thread> m_thread;
};

} // namespace corvelle
