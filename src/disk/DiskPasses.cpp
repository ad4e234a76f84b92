// When the disk is looked at, and at how much of it.
#include "disk/DiskSync.h"

#include "base/MainThread.h"
#include "disk/DiskScan.h"
#include "library/NodePaths.h"
#include "platform/LargeBlock.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

FolderWatcher::Wishes wishesOf(std::function<void(FolderWatcher::Batch)> handler)
{
    return {std::move(handler), [](const QString& name) { return isSkippedName(name); },
        [](const QString& name, const QString& path) {
            return DiskPlan::isGeneratedFolder(name, path);
        }};
}

QSet<QString> foldersAround(const QSet<QString>& paths)
{
    QSet<QString> folders;
    for (const QString& path : paths) {
        folders.insert(path); // it may be a folder
        folders.insert(parentPath(path));
    }
    return folders;
}

} // namespace

bool DiskSync::isIdle() const
{
    return !m_running && !m_next && m_catchingUp == 0 && !m_soon.isActive() &&
           !m_settleSoon.isActive() && m_apply.isIdle();
}

void DiskSync::start()
{
    Q_ASSERT(onMainThread());
    if (m_library.isOpen())
        requestPass({true, true, {}, {}});
}

// ---- watching ----

void DiskSync::watch()
{
    Q_ASSERT(onMainThread());
    if (m_watcher || !m_library.isOpen())
        return;
    // No pass before the watcher stands: what happens in between would be missed by both.
    m_running = true;
    makeWatcher([this](std::unique_ptr<FolderWatcher> watcher) {
        m_watcher = std::move(watcher);
        m_running = false;
        start();
    });
}

void DiskSync::makeWatcher(std::function<void(std::unique_ptr<FolderWatcher>)> then)
{
    m_queue.run(
        [this, root = m_library.root(), guard = QPointer<QObject>(this)] {
            return std::make_unique<FolderWatcher>(
                root, wishesOf([this, guard](FolderWatcher::Batch batch) {
                    SerialQueue::onMain(guard, [this, batch = std::move(batch)]() mutable {
                        takeBatch(std::move(batch));
                    });
                }));
        },
        this, std::move(then));
}

void DiskSync::lookUnderMounts(const QSet<QString>& mountPoints)
{
    const QString& root = m_library.root();
    const bool concerns = std::any_of(mountPoints.begin(), mountPoints.end(),
        [&](const QString& point) { return liesBelow(point, root); });
    if (!concerns || !m_watcher)
        return;
    ++m_catchingUp;
    makeWatcher([this](std::unique_ptr<FolderWatcher> watcher) {
        --m_catchingUp;
        // Ending a watcher waits for its thread, and that one for its disk.
        std::shared_ptr<FolderWatcher> old = std::exchange(m_watcher, std::move(watcher));
        m_queue.async([old = std::move(old)]() mutable { old.reset(); });
        m_everything = true;
        scheduleFlush();
    });
}

void DiskSync::takeBatch(FolderWatcher::Batch batch)
{
    m_everything |= batch.everything;
    m_paths.unite(batch.paths);
    if (m_everything || !m_paths.isEmpty())
        scheduleFlush();
}

void DiskSync::scheduleFlush()
{
    // Later events don't put it off.
    if (!m_soon.isActive())
        m_soon.start(m_delays.flush);
}

void DiskSync::catchUp()
{
    if (!m_watcher)
        return;
    ++m_catchingUp;
    m_watcher->flush([this, guard = QPointer<QObject>(this)] {
        SerialQueue::onMain(guard, [this] { --m_catchingUp; });
    });
}

void DiskSync::flush()
{
    m_soon.stop();
    const QSet<QString> paths = std::exchange(m_paths, {});
    if (std::exchange(m_everything, false)) {
        requestPass({true, true, {}, {}});
        return;
    }
    DiskRequest request;
    request.folders = foldersAround(paths);
    requestPass(request);
}

// ---- deferring ----

// A move comes as two events that may lie apart: what only one of them shows is judged once the
// folders are quiet, but not put off for ever.
void DiskSync::defer(const QSet<QString>& folders)
{
    m_settle.unite(folders);
    if (!m_settleSince.isValid())
        m_settleSince.start();
    const qint64 left = m_delays.longestSettle - m_settleSince.elapsed();
    if (!m_settleSoon.isActive() || left > 0)
        m_settleSoon.start(static_cast<int>(std::clamp<qint64>(left, 0, m_delays.settle)));
}

void DiskSync::settleDeferred()
{
    m_settleSince.invalidate();
    const auto look = [this] {
        // What the watcher has just told of may be the other half of a move.
        QSet<QString> folders = std::exchange(m_settle, {});
        folders.unite(foldersAround(m_paths));
        requestPass({false, true, folders, {}});
    };
    if (!m_watcher) {
        look();
        return;
    }
    ++m_catchingUp;
    m_watcher->flush([this, look, guard = QPointer<QObject>(this)] {
        SerialQueue::onMain(guard, [this, look] {
            --m_catchingUp;
            look();
        });
    });
}

void DiskSync::lookAtEverythingLater()
{
    m_everything = true;
    if (!m_soon.isActive())
        m_soon.start(m_delays.settle);
}

// ---- passes ----

bool DiskSync::isInSpace(const QString& folder) const
{
    const auto& spaces = m_library.tree().spaces();
    return std::any_of(spaces.begin(), spaces.end(), [&](const Space& space) {
        return folder == space.folder || liesBelow(folder, space.folder);
    });
}

void DiskSync::requestPass(const DiskRequest& request)
{
    if (m_running) {
        if (m_next)
            m_next->unite(request);
        else
            m_next = request;
        return;
    }
    m_request = request;
    if (!m_isIndexed && !m_request.everything)
        m_request.everything = m_request.structural = true; // nothing is known to compare with yet
    m_request.folders.removeIf([this](const QString& folder) { return !isInSpace(folder); });
    m_rounds = 0;
    if (m_library.isOpen() && (m_request.everything || !m_request.folders.isEmpty()))
        runPass();
}

void DiskSync::runPass()
{
    m_running = true;
    const Round round = m_rounds + 1 < mostRounds ? Round::Another : Round::Last;
    if (m_request.everything) {
        m_queue.run([root = m_library.root(), round,
                        stop = m_stop.get_token()] { return lookAtDisk(root, round, stop); },
            this, [this](Result<DiskPass> pass) { took(std::move(pass)); });
        return;
    }
    m_queue.run(
        [root = m_library.root(), round, request = m_request,
            memory = memoryOf(m_library, m_index, m_request), stop = m_stop.get_token()]() mutable {
            return lookAtFolders(root, std::move(request), std::move(memory), round, stop);
        },
        this, [this](Result<DiskPass> pass) { took(std::move(pass)); });
}

void DiskSync::endPass()
{
    m_running = false;
    if (m_next) {
        requestPass(*std::exchange(m_next, std::nullopt));
        if (m_running)
            return;
    }
    if (m_request.everything)
        m_queue.async(giveBackFreedMemory);
    emit finished();
}

} // namespace corvelle
