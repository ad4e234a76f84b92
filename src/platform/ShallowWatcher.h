// Tells in which of many single folders something changes, without what lies below them.
//
// All folders share one inotify instance, of which a person has few. Changes are gathered for half
// a second. Where the kernel lost events, all folders are told.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>
#include <memory>

namespace corvelle {

class ShallowWatcher
{
public:
    struct Wishes
    {
        // The absolute paths of folders. Called on the watcher's thread.
        std::function<void(QSet<QString>)> handler;
        // Names whose events nobody wants.
        std::function<bool(const QString& name)> isSkipped;
    };

    explicit ShallowWatcher(Wishes wishes);
    ~ShallowWatcher();

    // Watches the folder that lies at this path now; false when there is none, or none that can be
    // watched. Watching the same folder again costs nothing. Any thread, and not for the main one:
    // it waits for the disk.
    bool watch(const QString& folder);
    void forget(const QString& folder); // any thread

    // Hands over at once what has happened so far, and then calls `done`, both on the watcher's
    // thread. A watcher that ends first calls `done` all the same.
    void flush(std::function<void()> done);

private:
    class Thread;
    std::unique_ptr<Thread> m_thread;
};

} // namespace corvelle
