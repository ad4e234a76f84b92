// Keeps linked items in step with their files, which lie outside the library and stay where they
// are: watches the folders that hold them, follows what is moved, marks what can't be found, and
// takes what was deleted in a linked folder to the Trash and back again.
//
// One for each library, on the main thread. Looks run on a queue for each mounted disk, so that a
// disk that hangs holds up only itself; what they found is carried out by DiskApply. Nothing is
// ever changed, moved, deleted or mounted outside: what lies where an automounter waits is away
// until somebody else has gone in.
#pragma once

#include "base/SerialQueue.h"
#include "disk/DiskApply.h"
#include "disk/FolderIndex.h"
#include "disk/LinkedPass.h"
#include "platform/FolderWatcher.h"
#include "platform/MountTable.h"
#include "platform/ShallowWatcher.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <deque>
#include <map>
#include <memory>
#include <stop_token>

namespace corvelle {

class LinkSync : public QObject
{
    Q_OBJECT

public:
    // In milliseconds: from an event to the look at its folder, from the first of many, from a disk
    // that came or went, and between looks for a folder that isn't there.
    struct Delays
    {
        int event = 1'200, longest = 2'000;
        int mount = 200;
        int away = 2'000;
    };

    explicit LinkSync(Library& library, QObject* parent = nullptr);
    ~LinkSync() override;

    // Watches from now on, and looks at all linked items. Once the library is open.
    void start();

    // Points a card at the place that the person chose for it. False when that can't be: it is of
    // another kind, isn't there, has a card already, or lies in the library or around it.
    bool relink(const QString& id, const QString& path);

    // Looks for folders that went without a word: one that lies above them was moved.
    void lookForFolders();

    // The person goes to an item that can't be found: it is looked for again, and an automounter
    // may bring its disk now.
    void visit(const QString& id);

    // Finds the folder that is nearest to where an item was, for the person to look around from. On
    // a disk that doesn't answer within a second, it is the home folder.
    void findPlaceNear(const QString& id, std::function<void(const QString& folder)> then);

    // Looks at once at what the kernel has told so far, for scripts that can't wait.
    void catchUp();

    bool isIdle() const;

    void setDelays(const Delays& delays) { m_delays = delays; }

signals:
    void filesChanged(const QSet<QString>& ids);
    void removedOnDisk(const std::map<QString, double>& times);
    // Disks came to these places or went from them.
    void mountsChanged(const QSet<QString>& mountPoints);

private:
    // A folder that is watched, since linked items lie in it or it is one itself.
    struct Root
    {
        bool isFolder = false;    // linked itself, with all below it
        std::vector<QString> ids; // linked by themselves and lying here, or the folder itself
        std::shared_ptr<FolderWatcher> watcher; // of a linked folder
        bool isStarting = false, isRunning = false, isAway = false;
        bool isCatchingUp = false;       // a look waits for what its watcher knows already
        std::optional<quint64> identity; // of the folder that the last look found
        bool isLookedFor = false; // by a cheap look, of which one at a time waits for the disk
        std::optional<LinkedRequest> changed; // waits for its time
        std::optional<LinkedRequest> again;   // waits for the pass that runs
        LinkedRequest request;                // of the pass that runs
        QElapsedTimer since;                  // the first event that no pass has taken
        std::unique_ptr<QTimer> soon;
        int rounds = 0;
        int failedPasses = 0; // in a row
    };
    struct Found
    {
        QString root;
        LinkedFinding finding;
    };

    // ---- roots ----
    void take(const TreeChange& change);
    void noteCandidate(const QString& id);
    void refresh();
    std::map<QString, Root> wantedRoots() const;
    void watch(const QString& path, Root& root);
    void watchAnew(const QString& path, Root& root);
    void drop(Root& root, const QString& path);
    bool isUnmounted(const QString& path) const { return wouldMount(path, m_mounts); }
    SerialQueue& queueFor(const QString& path);
    void mounted();
    void lookForAway();
    void lookForFolder(const QString& path, Root& root);
    QString rootAround(const Node& node) const;

    // ---- when to look ----
    void takeBatch(const QString& path, const FolderWatcher::Batch& batch);
    void schedule(const QString& path, const LinkedRequest& request, int delay);
    void run(const QString& path);
    void takeWhatWasTold(const QString& path);
    void startPass(const QString& path, Root& root);
    LinkedQuery queryFor(const QString& path, const Root& root) const;
    bool cameWith(const QString& folder, const Node& node) const;
    bool isAnyMissingIn(const QString& folder) const;
    QSet<QString> missingIn(const QString& folder) const;
    DiskPlan::Known known(const QString& id) const;

    // ---- what was found ----
    void took(const QString& path, Result<LinkedFinding> found);
    void lookOnceMore(const QString& path, Root& root);
    void applyNext();
    void applied(const Found& found, const DiskApply::Done& done);
    void markMissing(const Found& found, const DiskApply::Done& done);
    QSet<QString> idsBelow(const QString& folder) const;

    Library& m_library;
    DiskApply m_apply;
    FolderIndex m_index;
    Delays m_delays;
    bool m_started = false, m_isApplying = false;
    int m_catchingUp = 0;

    QSet<QString> m_candidates; // items that are linked by themselves, in the Trash or not
    QTimer m_refreshSoon, m_mountSoon, m_awaySoon;
    std::map<QString, Root> m_roots; // by path
    std::deque<Found> m_found;       // waits to be applied

    Mounts m_mounts;
    std::unique_ptr<MountWatcher> m_mountWatcher;
    std::shared_ptr<ShallowWatcher> m_shallow;
    std::stop_source m_stop;
    std::map<QString, std::unique_ptr<SerialQueue>> m_queues; // by mount point
};

} // namespace corvelle
