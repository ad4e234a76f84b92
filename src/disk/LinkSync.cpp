#include "disk/LinkSync.h"

#include "base/Log.h"
#include "base/MainThread.h"
#include "disk/DiskScan.h"
#include "library/LinkBookmarks.h"
#include "library/NodePaths.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int refreshMs = 100;
constexpr int mostRoundsOfLooks = 6; // without a folder that moved
constexpr int mostFailedPasses = 5;  // in a row that are tried again
constexpr int hangMs = 1'000;        // what quitting or the person waits for a disk

// What is linked and can be watched.
bool canBeLinked(const Node& node)
{
    return node.isLinked() && (node.kind == NodeKind::Folder || node.kind == NodeKind::File);
}

LinkedRequest everythingThere()
{
    LinkedRequest request;
    request.everything = true;
    return request;
}

QString rootOf(const Node& node)
{
    if (node.kind == NodeKind::Folder)
        return node.path;
    const QString folder = parentPath(node.path);
    return folder.isEmpty() ? u"/"_s : folder;
}

} // namespace

LinkSync::LinkSync(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_apply(library)
    , m_index(FolderIndex::Which::Linked)
{
    const std::pair<QTimer*, void (LinkSync::*)()> timers[] = {{&m_refreshSoon, &LinkSync::refresh},
        {&m_mountSoon, &LinkSync::mounted}, {&m_awaySoon, &LinkSync::lookForAway}};
    for (const auto& [timer, act] : timers) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, act);
    }
    connect(&m_apply, &DiskApply::filesChanged, this, &LinkSync::filesChanged);
    connect(&m_apply, &DiskApply::removedOnDisk, this, &LinkSync::removedOnDisk);
}

// A disk that hangs would hold up the end: its queue is left behind, and ends with the process.
LinkSync::~LinkSync()
{
    m_stop.request_stop();
    for (auto& [path, root] : m_roots)
        drop(root, path);
    QElapsedTimer waited;
    waited.start();
    for (auto& [mount, queue] : m_queues) {
        while (!queue->isIdle() && waited.elapsed() < hangMs)
            QThread::msleep(1);
        if (!queue->isIdle())
            (void)queue.release();
    }
}

void LinkSync::start()
{
    Q_ASSERT(onMainThread());
    if (m_started || !m_library.isOpen())
        return;
    m_started = true;
    m_mounts = readMounts();
    m_mountWatcher = std::make_unique<MountWatcher>();
    connect(m_mountWatcher.get(), &MountWatcher::changed, this,
        [this] { m_mountSoon.start(m_delays.mount); });
    m_shallow = std::make_shared<ShallowWatcher>(
        ShallowWatcher::Wishes{[this, guard = QPointer<QObject>(this)](QSet<QString> folders) {
                                   SerialQueue::onMain(guard, [this, folders] {
                                       for (const QString& folder : folders)
                                           schedule(folder, {}, m_delays.event);
                                   });
                               },
            [](const QString& name) { return isSkippedName(name); }});
    connect(&m_library, &Library::treeChanged, this, &LinkSync::take);
    TreeChange all;
    all.everything = true;
    take(all);
}

bool LinkSync::isIdle() const
{
    return m_catchingUp == 0 && !m_refreshSoon.isActive() && !m_mountSoon.isActive() &&
           m_found.empty() && m_apply.isIdle() &&
           std::all_of(m_roots.begin(), m_roots.end(), [](const auto& entry) {
               const Root& root = entry.second;
               return !root.isStarting && !root.isRunning && !root.changed;
           });
}

void LinkSync::catchUp()
{
    if (!m_started)
        return;
    const auto done = [this, guard = QPointer<QObject>(this)] {
        SerialQueue::onMain(guard, [this] { --m_catchingUp; });
    };
    ++m_catchingUp;
    m_shallow->flush(done);
    for (const auto& [path, root] : m_roots)
        if (root.watcher) {
            ++m_catchingUp;
            root.watcher->flush(done);
        }
}

// ---- roots ----

void LinkSync::take(const TreeChange& change)
{
    if (change.everything) {
        m_index.build(m_library, NameCase::Kept);
        m_candidates.clear();
        m_library.tree().eachNode(
            [this](const Node& node, const SeenFile&) { noteCandidate(node.id); });
    } else {
        m_index.update(m_library, change);
        for (const QString& id : change.nodes)
            noteCandidate(id);
    }
    // A folder of the library that goes to the Trash takes links along.
    if (!m_candidates.isEmpty() || !m_roots.empty())
        m_refreshSoon.start(refreshMs);
}

void LinkSync::noteCandidate(const QString& id)
{
    const Node* node = m_library.node(id);
    if (node && canBeLinked(*node) && m_library.tree().isLinkedItself(*node))
        m_candidates.insert(id);
    else
        m_candidates.remove(id);
}

std::map<QString, LinkSync::Root> LinkSync::wantedRoots() const
{
    std::map<QString, Root> wanted;
    for (const QString& id : m_candidates) {
        const Node* node = m_library.node(id);
        if (!node || m_library.isInTrash(id))
            continue;
        Root& root = wanted[rootOf(*node)];
        root.isFolder |= node->kind == NodeKind::Folder;
        root.ids.push_back(id);
    }
    return wanted;
}

void LinkSync::refresh()
{
    std::map<QString, Root> wanted = wantedRoots();
    for (auto root = m_roots.begin(); root != m_roots.end();) {
        const auto still = wanted.find(root->first);
        if (still != wanted.end() && still->second.isFolder == root->second.isFolder) {
            ++root;
            continue;
        }
        drop(root->second, root->first);
        root = m_roots.erase(root);
    }
    for (auto& [path, fresh] : wanted) {
        const auto known = m_roots.find(path);
        if (known == m_roots.end()) {
            Root& root = m_roots[path];
            root = std::move(fresh);
            watch(path, root);
            continue;
        }
        std::sort(fresh.ids.begin(), fresh.ids.end());
        const bool hasNew = !std::includes(
            known->second.ids.begin(), known->second.ids.end(), fresh.ids.begin(), fresh.ids.end());
        known->second.ids = std::move(fresh.ids);
        if (hasNew)
            schedule(path, {}, 0);
    }
}

SerialQueue& LinkSync::queueFor(const QString& path)
{
    auto& queue = m_queues[mountOf(path, m_mounts)];
    if (!queue)
        queue = std::make_unique<SerialQueue>(u"corvelle.links"_s);
    return *queue;
}

void LinkSync::watch(const QString& path, Root& root)
{
    std::sort(root.ids.begin(), root.ids.end());
    if (!root.isFolder || isUnmounted(path)) {
        schedule(path, everythingThere(), 0); // a look watches the folder of linked files first
        return;
    }
    // No look before the watcher stands: what happens in between would be missed by both.
    root.isStarting = true;
    queueFor(path).run(
        [this, path, library = m_library.root(), guard = QPointer<QObject>(this)] {
            FolderWatcher::Wishes wishes;
            wishes.handler = [this, path, guard](const FolderWatcher::Batch& batch) {
                SerialQueue::onMain(guard, [this, path, batch] { takeBatch(path, batch); });
            };
            wishes.isSkipped = [](const QString& name) { return isSkippedName(name); };
            wishes.isExcludedFolder = [library](const QString& name, const QString& folder) {
                return folder == library || DiskPlan::isGeneratedFolder(name, folder);
            };
            return std::make_shared<FolderWatcher>(path, std::move(wishes));
        },
        this,
        [this, path](std::shared_ptr<FolderWatcher> watcher) {
            const auto found = m_roots.find(path);
            const bool isWanted = found != m_roots.end() && found->second.isFolder;
            if (isWanted)
                std::swap(found->second.watcher, watcher); // the one asked for last
            queueFor(path).async([old = std::move(watcher)]() mutable { old.reset(); });
            if (!isWanted)
                return;
            found->second.isStarting = false;
            schedule(path, everythingThere(), 0);
        });
}

// Ending a watcher waits for its thread, and that one for its disk.
void LinkSync::drop(Root& root, const QString& path)
{
    if (root.watcher)
        queueFor(path).async(
            [watcher = std::exchange(root.watcher, {})]() mutable { watcher.reset(); });
    if (!root.isFolder && m_shallow)
        m_shallow->forget(path);
}

void LinkSync::mounted()
{
    const Mounts before = std::exchange(m_mounts, readMounts());
    const QSet<QString> differing = differingMounts(before, m_mounts);
    for (auto& [path, root] : m_roots) {
        const bool concerns =
            std::any_of(differing.begin(), differing.end(), [&](const QString& point) {
                return point == path || liesBelow(path, point) || liesBelow(point, path);
            });
        if (concerns)
            watchAnew(path, root);
    }
    if (!differing.isEmpty())
        emit mountsChanged(differing);
}

void LinkSync::lookForFolders()
{
    for (auto& [path, root] : m_roots)
        lookForFolder(path, root);
}

// Folders that are away are looked for every now and then: no event tells that one is back.
void LinkSync::lookForAway()
{
    bool isAnyAway = false;
    for (auto& [path, root] : m_roots) {
        if (!root.isAway || isUnmounted(path))
            continue; // a disk that comes is told of
        isAnyAway = true;
        lookForFolder(path, root);
    }
    if (isAnyAway)
        m_awaySoon.start(m_delays.away);
}

void LinkSync::lookForFolder(const QString& path, Root& root)
{
    if (root.isStarting || root.isRunning || root.isLookedFor || isUnmounted(path))
        return;
    root.isLookedFor = true;
    std::optional<quint64> identity;
    for (const QString& id : root.ids)
        if (const Node* node = m_library.node(id); node && node->path == path)
            identity = m_library.tree().seen(id).fileID;
    queueFor(path).run([path, identity] { return lookAtPlace(path, identity); }, this,
        [this, path](const FolderPlace& place) {
            const auto found = m_roots.find(path);
            if (found == m_roots.end())
                return;
            Root& there = found->second;
            there.isLookedFor = false;
            if (there.isAway != place.isAway)
                schedule(path, everythingThere(), 0);
            else if (!there.isAway && there.identity && there.identity != place.identity)
                watchAnew(path, there); // what is watched lies elsewhere now
        });
}

// It may watch what lies hidden under a disk now, or what was moved away with a folder above it.
void LinkSync::watchAnew(const QString& path, Root& root)
{
    drop(root, path);
    watch(path, root);
}

// The folder that is watched for the item's sake, or nothing.
QString LinkSync::rootAround(const Node& node) const
{
    QString path = rootOf(node);
    while (!path.isEmpty() && !m_roots.contains(path))
        path = parentPath(path);
    return path;
}

void LinkSync::visit(const QString& id)
{
    const Node* node = m_library.node(id);
    const QString root = node && node->isLinked() ? rootAround(*node) : QString();
    if (root.isEmpty())
        return;
    // Going in is what an automounter waits for; once there is a disk, the mount table tells.
    queueFor(root).run([root] { return QFileInfo::exists(root + u"/."_s); }, this,
        [this, root](bool isThere) {
            if (isThere)
                schedule(root, everythingThere(), 0);
        });
}

void LinkSync::findPlaceNear(const QString& id, std::function<void(const QString& folder)> then)
{
    const Node* node = m_library.node(id);
    if (!node)
        return;
    const auto answerOnce = [answered = std::make_shared<bool>(false), then = std::move(then)](
                                const QString& folder) {
        if (!std::exchange(*answered, true))
            then(folder);
    };
    const QString start = parentPath(m_library.filePath(*node));
    queueFor(start).run(
        [start] {
            QString folder = start;
            while (!folder.isEmpty() && !QFileInfo(folder).isDir())
                folder = parentPath(folder);
            return folder.isEmpty() ? u"/"_s : folder;
        },
        this, answerOnce);
    QTimer::singleShot(hangMs, this, [answerOnce] { answerOnce(QDir::homePath()); });
}

// ---- when to look ----

void LinkSync::takeBatch(const QString& path, const FolderWatcher::Batch& batch)
{
    LinkedRequest request;
    request.everything = batch.everything;
    for (const QString& relative : batch.paths) {
        const QString changed = relative.isEmpty() ? path : path + u'/' + relative;
        request.folders.insert(changed); // it may be a folder
        if (!relative.isEmpty())
            request.folders.insert(parentPath(changed));
    }
    schedule(path, request, m_delays.event);
}

// Later events put a look off, but not for ever.
void LinkSync::schedule(const QString& path, const LinkedRequest& request, int delay)
{
    const auto found = m_roots.find(path);
    if (found == m_roots.end())
        return;
    Root& root = found->second;
    if (root.changed)
        root.changed->unite(request);
    else
        root.changed = request;
    if (!root.since.isValid())
        root.since.start();
    if (!root.soon) {
        root.soon = std::make_unique<QTimer>();
        root.soon->setSingleShot(true);
        connect(root.soon.get(), &QTimer::timeout, this, [this, path] { run(path); });
    }
    const qint64 left = std::max<qint64>(0, m_delays.longest - root.since.elapsed());
    root.soon->start(static_cast<int>(std::min<qint64>(delay, left)));
}

void LinkSync::run(const QString& path)
{
    Root& root = m_roots.at(path);
    root.since.invalidate();
    const LinkedRequest request = *std::exchange(root.changed, std::nullopt);
    if (root.isRunning || root.isStarting) {
        if (root.again)
            root.again->unite(request);
        else
            root.again = request;
        return;
    }
    root.request = request;
    root.rounds = 0;
    root.isRunning = root.isCatchingUp = true;
    takeWhatWasTold(path);
}

// A watcher gathers for half a second: a look that knows only half of a move would see something
// come that it doesn't see go, or the other way round.
void LinkSync::takeWhatWasTold(const QString& path)
{
    const auto look = [this, path] {
        const auto found = m_roots.find(path);
        if (found == m_roots.end() || !std::exchange(found->second.isCatchingUp, false))
            return;
        Root& root = found->second;
        if (root.changed) {
            root.request.unite(*std::exchange(root.changed, std::nullopt));
            root.soon->stop();
            root.since.invalidate();
        }
        startPass(path, root);
    };
    const auto flushed = [guard = QPointer<QObject>(this), look] {
        SerialQueue::onMain(guard, look);
    };
    const Root& root = m_roots.at(path);
    if (root.watcher)
        root.watcher->flush(flushed);
    else if (!root.isFolder)
        m_shallow->flush(flushed);
    else
        look();
}

void LinkSync::startPass(const QString& path, Root& root)
{
    root.isRunning = true;
    // Marks are cleared by a look at everything.
    root.request.everything |= root.isAway || (root.isFolder && isAnyMissingIn(path));
    const Round round = root.rounds + 1 < mostRoundsOfLooks ? Round::Another : Round::Last;
    queueFor(path).run(
        [query = queryFor(path, root), round, shallow = root.isFolder ? nullptr : m_shallow,
            stop = m_stop.get_token()]() mutable {
            if (shallow && !query.isAway)
                shallow->watch(query.root);
            return lookAtLinked(std::move(query), round, stop);
        },
        this, [this, path](Result<LinkedFinding> found) { took(path, std::move(found)); });
}

// Whether the item came with this linked folder, of those around it the nearest.
bool LinkSync::cameWith(const QString& folder, const Node& node) const
{
    if (!liesBelow(node.path, folder) || m_candidates.contains(node.id))
        return false;
    for (auto below = m_roots.upper_bound(folder);
         below != m_roots.end() && below->first.startsWith(folder); ++below)
        if (below->second.isFolder && liesBelow(below->first, folder) &&
            liesBelow(node.path, below->first))
            return false;
    return true;
}

bool LinkSync::isAnyMissingIn(const QString& folder) const
{
    const QSet<QString>& missing = m_library.missingLinks();
    return std::any_of(missing.begin(), missing.end(), [&](const QString& id) {
        const Node* node = m_library.node(id);
        return node && (node->path == folder || cameWith(folder, *node)) &&
               !m_library.isInTrash(id);
    });
}

QSet<QString> LinkSync::missingIn(const QString& folder) const
{
    QSet<QString> found;
    for (const QString& id : m_library.missingLinks())
        if (const Node* node = m_library.node(id); node && cameWith(folder, *node))
            found.insert(id);
    return found;
}

DiskPlan::Known LinkSync::known(const QString& id) const
{
    const Node& node = *m_library.node(id);
    const SeenFile seen = m_library.tree().seen(id);
    return {
        id, node.path, node.kind == NodeKind::Folder, seen.fileID, node.byteSize, seen.modified};
}

LinkedQuery LinkSync::queryFor(const QString& path, const Root& root) const
{
    LinkedQuery query{
        m_library.root(), path, root.isFolder, isUnmounted(path), root.request, {}, {}, {}};
    if (root.isFolder) {
        DiskRequest wanted;
        if (!root.request.isEverywhere()) {
            wanted.folders = root.request.folders;
            wanted.trees = root.request.trees;
        }
        query.memory = memoryOf(m_library, m_index, wanted);
    }
    for (const QString& id : root.ids)
        if (m_library.node(id))
            query.tops.push_back(known(id));
    for (const QString& id : m_library.missingLinks())
        if (m_candidates.contains(id) && !m_library.isInTrash(id))
            query.sought.push_back(known(id));
    return query;
}

// ---- what was found ----

void LinkSync::took(const QString& path, Result<LinkedFinding> found)
{
    const auto root = m_roots.find(path);
    if (!found)
        logLine(u"linked items: "_s + found.failure().sentence());
    if (root == m_roots.end())
        return; // nobody wants it any more
    if (!found) {
        if (++root->second.failedPasses <= mostFailedPasses)
            lookOnceMore(path, root->second);
        else
            root->second.isRunning = false;
        return;
    }
    root->second.failedPasses = 0;
    m_found.push_back({path, std::move(*found)});
    applyNext();
}

// What was told of these folders isn't told again.
void LinkSync::lookOnceMore(const QString& path, Root& root)
{
    root.isRunning = false;
    LinkedRequest request = root.request;
    if (root.again)
        request.unite(*std::exchange(root.again, std::nullopt));
    schedule(path, request, m_delays.event);
}

void LinkSync::applyNext()
{
    if (m_isApplying)
        return;
    while (!m_found.empty() && !m_roots.contains(m_found.front().root))
        m_found.pop_front(); // nobody wants it any more
    if (m_found.empty())
        return;
    m_isApplying = true;
    m_apply.run(std::move(m_found.front().finding.pass), [this](const DiskApply::Done& done) {
        m_isApplying = false;
        applied(m_found.front(), done);
        m_found.pop_front();
        // Not from within: thousands of folders may have nothing to carry out.
        QMetaObject::invokeMethod(this, &LinkSync::applyNext, Qt::QueuedConnection);
    });
}

void LinkSync::applied(const Found& found, const DiskApply::Done& done)
{
    const auto entry = m_roots.find(found.root);
    if (entry == m_roots.end())
        return;
    Root& root = entry->second;
    markMissing(found, done);
    const bool wasAway = std::exchange(root.isAway, found.finding.isAway);
    root.identity = found.finding.identity;
    root.isRunning = false;
    if (wasAway && !root.isAway && root.isFolder) {
        root.again.reset();
        watchAnew(found.root, root); // it may not have seen the folder come back yet
        return;
    }
    if (root.isAway && !m_awaySoon.isActive())
        m_awaySoon.start(m_delays.away);
    if (done.movedFolder)
        root.rounds = 0;
    if ((done.lookAgain || done.overtaken) && ++root.rounds < mostRoundsOfLooks) {
        root.request.trees.unite(done.freshFolders);
        root.request.folders.unite(done.lookAlso);
        startPass(found.root, root);
    } else if (root.again) {
        schedule(found.root, *std::exchange(root.again, std::nullopt), 0);
    }
}

QSet<QString> LinkSync::idsBelow(const QString& folder) const
{
    QSet<QString> ids;
    QStringList waiting{folder};
    while (!waiting.isEmpty()) {
        const QString above = waiting.takeLast();
        const auto id = m_index.ids().constFind(pathKey(above, m_index.nameCase()));
        if (id == m_index.ids().cend())
            continue;
        for (const QString& child : m_library.children(*id)) {
            const Node* node = m_library.node(child);
            if (!node || !canBeLinked(*node) || node->deletedAt || !liesBelow(node->path, above) ||
                node->path.lastIndexOf(u'/') != above.size())
                continue;
            ids.insert(child);
            if (node->kind == NodeKind::Folder)
                waiting.append(node->path);
        }
    }
    return ids;
}

void LinkSync::markMissing(const Found& found, const DiskApply::Done& done)
{
    const LinkedFinding& finding = found.finding;
    const Root& root = m_roots.at(found.root);
    QSet<QString> gone = finding.gone, here = finding.here;
    gone.intersect(QSet<QString>(root.ids.begin(), root.ids.end())); // others have a new place
    if (root.isFolder && finding.isAway)
        gone.unite(idsBelow(found.root));
    else if (root.isFolder && root.request.everything)
        here.unite(missingIn(found.root));
    for (const QString& folder : finding.awayBelow)
        gone.unite(idsBelow(folder));
    gone.subtract(done.placed);
    here.unite(done.placed).subtract(gone);
    QSet<QString> fresh = gone;
    fresh.subtract(m_library.missingLinks());
    if (!fresh.isEmpty() && finding.isAway)
        logLine(u"%1 linked items are missing with their folder; leaving them in place"_s.arg(
            fresh.size()));
    m_library.tookMissing(gone, here);
    if (!fresh.intersects(m_candidates))
        return;
    // They may have gone to one of the other folders.
    LinkedRequest seek;
    seek.seeks = true;
    for (const auto& [path, other] : m_roots)
        if (path != found.root && !other.isAway)
            schedule(path, seek, 0);
}

// ---- the person's word ----

bool LinkSync::relink(const QString& id, const QString& chosen)
{
    const Node* old = m_library.freshNode(id);
    const QFileInfo info(chosen);
    const QString path = info.canonicalFilePath();
    if (!old || !canBeLinked(*old) || path.isEmpty() || path == u"/"_s)
        return false;
    const QString& root = m_library.root();
    const bool isFolder = old->kind == NodeKind::Folder;
    const bool isOurs = path == root || liesBelow(path, root) || liesBelow(root, path);
    const auto entry = DiskPlan::entry(path, path, DiskPlan::NameRules::Ignore);
    if (isOurs || !entry || entry->folder != isFolder)
        return false;

    // Two cards for one file couldn't both follow it.
    SQLite& connection = m_library.connection();
    bool hasCard = false;
    const auto looked =
        connection.each("SELECT id FROM nodes WHERE path = ?", {path}, [&](const SQLRow& row) {
            hasCard |= row.text(0) != id && !isRowInTrash(connection, row.text(0));
        });
    if (!looked || hasCard)
        return false;
    m_apply.leaveRest();
    const QString from = old->path;
    const auto written = connection.transaction([&]() -> Result<void> {
        if (auto done = putBookmark(connection, id, {path, entry->inode}); !done)
            return done;
        if (auto done = rewritePath(connection, id, old->kind, from, path); !done)
            return done;
        // Another identity would make an empty folder the place that a disk left behind.
        if (auto done = connection.run("UPDATE nodes SET file_id = ? WHERE id = ?",
                {static_cast<qint64>(entry->inode), id});
            !done)
            return done;
        if (auto done = connection.run("DELETE FROM forgotten_links WHERE path = ?", {path}); !done)
            return done;
        return connection.run("DELETE FROM went_away WHERE node_id = ?", {id});
    });
    if (!written) {
        logLine(u"relink: "_s + written.failure().sentence());
        return false;
    }
    std::vector<std::pair<QString, QString>> paths;
    (void)connection.each(
        "SELECT id, path FROM nodes WHERE id = ?1 OR (path >= ?2 || '/' AND path < ?2 || '0')",
        {id, path}, [&](const SQLRow& row) { paths.emplace_back(row.text(0), row.text(1)); });
    m_library.tookPaths(paths);
    m_library.tookSeen({{id, SeenFile{entry->inode, m_library.tree().seen(id).modified}}});
    m_library.tookMissing({}, {id});
    refresh();
    schedule(isFolder ? path : parentPath(path), everythingThere(), 0);
    return true;
}

} // namespace corvelle
