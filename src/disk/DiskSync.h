// Keeps the tree in step with the library's own folder: when to look at it, and at how much.
//
// One for each library, on the main thread. The look runs on the queue `corvelle.disk-pass`; what
// it found comes back and is carried out by DiskApply.
#pragma once

#include "base/SerialQueue.h"
#include "disk/DiskApply.h"
#include "disk/FolderIndex.h"
#include "platform/FolderWatcher.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <map>
#include <memory>
#include <stop_token>

namespace corvelle {

class DiskSync : public QObject
{
    Q_OBJECT

public:
    // In milliseconds: from the first event to the look at its folders, from the last of what only
    // a structural pass can judge to that pass, and from the first.
    struct Delays
    {
        int flush = 200;
        int settle = 1'200, longestSettle = 3'000;
    };

    explicit DiskSync(Library& library, QObject* parent = nullptr);
    ~DiskSync() override;

    // Runs a whole structural pass: it catches all that happened while nobody watched. Once the
    // library is open.
    void start();

    // Watches the folder from now on, and then runs such a pass: what changes on disk shows up two
    // seconds after the last change of a quiet folder.
    void watch();

    // A disk came or went at these places: what lies in the library is watched anew, and looked at.
    void lookUnderMounts(const QSet<QString>& mountPoints);

    // Looks at once at what the kernel has told so far, for scripts that can't wait.
    void catchUp();

    bool isIdle() const;

    void setDelays(const Delays& delays) { m_delays = delays; }

    // Counts removals towards what deletedElsewhere() tells.
    void countDeleted(const std::map<QString, double>& times);

signals:
    // The contents of these files are others.
    void filesChanged(const QSet<QString>& ids);
    // So many files went to the Trash because they were deleted elsewhere; once it is quiet.
    void deletedElsewhere(int count);
    // Nothing is under way any more.
    void finished();
    // These were gone from the disk and are in the Trash since those times.
    void removedOnDisk(const std::map<QString, double>& times);

private:
    // ---- when to look: DiskPasses.cpp ----
    void makeWatcher(std::function<void(std::unique_ptr<FolderWatcher>)> then);
    void takeBatch(FolderWatcher::Batch batch);
    void scheduleFlush();
    void flush();
    void requestPass(const DiskRequest& request);
    void runPass();
    void defer(const QSet<QString>& folders);
    void settleDeferred();
    void lookAtEverythingLater();
    bool isInSpace(const QString& folder) const;
    void endPass();

    void took(Result<DiskPass> pass);
    void applied(const DiskApply::Done& done);
    void markSpaces(const QSet<QString>& away);

    Library& m_library;
    DiskApply m_apply;
    FolderIndex m_index;
    NameCase m_nameCase = NameCase::Kept;
    bool m_isIndexed = false; // from the first whole pass on

    Delays m_delays;

    // What the watcher told and nobody has looked at yet.
    QSet<QString> m_paths;
    bool m_everything = false;
    QTimer m_soon;
    QSet<QString> m_settle; // folders that wait for a structural pass
    QElapsedTimer m_settleSince;
    QTimer m_settleSoon;
    int m_catchingUp = 0;

    bool m_running = false;
    int m_failedPasses = 0; // in a row
    DiskRequest m_request;  // the pass that runs
    std::optional<DiskRequest> m_next;
    static constexpr int mostRounds = 6; // without a folder that moved
    int m_rounds = 0; // looks in a row that asked for another and moved no folder
    int m_deletedElsewhere = 0;
    QTimer m_deletedQuiet;
    std::stop_source m_stop;
    SerialQueue m_queue;
    std::unique_ptr<FolderWatcher> m_watcher; // last: it ends first
};

} // namespace corvelle
