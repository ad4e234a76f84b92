#include "library/Arrivals.h"

#include "base/Clock.h"
#include "base/Ids.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "library/NodePaths.h"
#include "library/Position.h"
#include "library/SnapshotReader.h"
#include "platform/FileFacts.h"
#include "platform/FileTypes.h"
#include "platform/PictureFacts.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// Small enough that the memory takes one in about a millisecond, large enough that the commit
// doesn't count.
constexpr size_t batchSize = 400;
constexpr int leastItemsForProgress = 200;
constexpr qint64 progressAfterMs = 1000;

// A folder that receives things: what its next child needs to know.
struct Receiver
{
    QString id; // empty at the top of the space
    NextFreePlace places;
    QString lastPosition;
    quint16 usedColors = 0; // a bit for each colour that a folder in it has
};

void useColor(Receiver& receiver, NodeColor color)
{
    receiver.usedColors |= static_cast<quint16>(1u << static_cast<unsigned>(color));
}

// A random colour among those that no sibling folder has, among all when every one is taken.
NodeColor colorOfNewFolder(Receiver& receiver)
{
    std::vector<NodeColor> open;
    for (const NodeColor color : allNodeColors)
        if (!(receiver.usedColors & (1u << static_cast<unsigned>(color))))
            open.push_back(color);
    if (open.empty())
        open.assign(allNodeColors.begin(), allNodeColors.end());
    const NodeColor chosen =
        open[QRandomGenerator::global()->bounded(static_cast<quint32>(open.size()))];
    useColor(receiver, chosen);
    return chosen;
}

// What the worker needs; values only.
struct Job
{
    QString root;
    QString spaceID;
    NameCase nameCase = NameCase::Kept;
    std::vector<ArrivingItem> items;
    QHash<QString, Receiver> receivers; // by the path key of the folder
    bool looksAgain = false;            // whether an item may have gone since it was found
};

class Worker
{
public:
    explicit Worker(Job job)
        : m_job(std::move(job))
    {}

    // The ids of all rows that were written, and of those whose items had a place.
    const std::vector<QString>& written() const { return m_written; }
    const std::vector<QString>& placed() const { return m_placed; }
    // Whether an item was no longer where it had been found.
    bool wasOvertaken() const { return m_overtaken; }

    Result<void> takeBack()
    {
        auto connection = SQLite::open(databasePath(m_job.root));
        if (!connection)
            return connection.failure();
        return connection->transaction([&]() -> Result<void> {
            auto gone = connection->prepare("DELETE FROM nodes WHERE id = ?");
            if (!gone)
                return gone.failure();
            for (const QString& id : m_written)
                if (auto done = gone->run({id}); !done)
                    return done;
            return {};
        });
    }

    // Calls `took` with each batch that stands in the table. Ends early when `stopping` turns true.
    template<class Took>
    Result<void> run(const std::atomic<bool>& stopping, std::atomic<bool>& pathsGivenUp, Took took)
    {
        auto connection = SQLite::open(databasePath(m_job.root));
        if (!connection)
            return connection.failure();
        for (size_t from = 0; from < m_job.items.size() && !stopping; from += batchSize) {
            const size_t to = std::min(from + batchSize, m_job.items.size());
            std::vector<std::pair<Node, SeenFile>> batch;
            for (size_t i = from; i < to; ++i)
                if (auto node = nodeFor(m_job.items[i]))
                    batch.push_back(std::move(*node));
            if (auto written = write(*connection, batch); !written)
                return written;
            if (m_gavePathUp)
                pathsGivenUp = true;
            for (const auto& [node, seen] : batch) {
                m_written.push_back(node.id);
                if (m_withPlace.contains(node.id))
                    m_placed.push_back(node.id);
            }
            took(std::move(batch));
        }
        return {};
    }

private:
    std::optional<std::pair<Node, SeenFile>> nodeFor(const ArrivingItem& item)
    {
        const auto found = m_job.receivers.find(pathKey(parentPath(item.path), m_job.nameCase));
        if (found == m_job.receivers.end())
            return std::nullopt;
        Receiver& receiver = *found;
        Node node;
        node.id = newID();
        node.spaceID = m_job.spaceID;
        node.parentID = receiver.id;
        node.kind = item.folder ? NodeKind::Folder : NodeKind::File;
        node.title = lastComponent(item.path);
        node.path = item.path;
        node.createdAt = now();
        const bool credible = item.modified != distantPast && item.modified <= node.createdAt;
        node.updatedAt = credible && !item.folder ? item.modified : node.createdAt;
        node.position = receiver.lastPosition = positionAfter(receiver.lastPosition);
        SeenFile seen{item.fileID, std::nullopt};
        if (item.folder) {
            node.color = colorOfNewFolder(receiver);
        } else {
            node.mime = m_types.mimeOf(node.title);
            node.byteSize = item.size;
            seen.modified = item.modified;
            if (node.isPicture())
                if (const auto size =
                        pictureSize(node.isLinked() ? item.path : m_job.root + u'/' + item.path)) {
                    node.width = size->width();
                    node.height = size->height();
                }
        }
        const QPointF place = item.place ? *item.place : receiver.places.next();
        if (item.place)
            m_withPlace.insert(node.id);
        node.x = place.x();
        node.y = place.y();
        if (item.folder)
            m_job.receivers.insert(
                pathKey(item.path, m_job.nameCase), Receiver{node.id, {}, {}, 0});
        return std::pair(std::move(node), seen);
    }

    // Whether the node's folder is still there. Its path follows the folder, which may have been
    // renamed or moved since the item was found; what is linked from outside keeps its own.
    Result<bool> followFolder(
        SQLStatement& folder, QHash<QString, std::optional<QString>>& folders, Node& node)
    {
        node.parentID = m_others.value(node.parentID, node.parentID);
        if (node.parentID.isEmpty())
            return true;
        auto known = folders.constFind(node.parentID);
        if (known == folders.cend()) {
            folder.bind({node.parentID});
            const auto row = folder.step();
            if (!row)
                return row.failure();
            known = folders.insert(
                node.parentID, *row ? std::optional(folder.row().text(0)) : std::nullopt);
        }
        if (node.isLinked() && *known)
            return true;
        if (!*known || (*known)->isEmpty())
            return false;
        node.path = **known + u'/' + lastComponent(node.path);
        return true;
    }

    // Leaves out of the batch what has a live row by now: another process made it. A trashed row
    // that still names one of the paths gives it up for its own place in our Trash.
    Result<void> write(SQLite& connection, std::vector<std::pair<Node, SeenFile>>& batch)
    {
        return connection.transaction([&]() -> Result<void> {
            auto folder = connection.prepare("SELECT path FROM nodes WHERE id = ?");
            auto taken =
                connection.prepare("SELECT id, deleted_at, kind FROM nodes WHERE path = ?");
            auto insert = connection.prepare(insertNodeSQL);
            if (!folder)
                return folder.failure();
            if (!taken)
                return taken.failure();
            if (!insert)
                return insert.failure();
            // The paths of those that received something, none for one that is gone.
            QHash<QString, std::optional<QString>> folders;
            for (auto& [node, seen] : batch) {
                const auto comes = followFolder(*folder, folders, node);
                if (!comes)
                    return comes.failure();
                if (!*comes || (m_job.looksAgain && !isThere(node))) {
                    m_overtaken = true;
                    node.id.clear();
                    continue;
                }
                taken->bind({node.path});
                QString live;
                std::vector<std::pair<QString, NodeKind>> trashed;
                while (true) {
                    const auto row = taken->step();
                    if (!row)
                        return row.failure();
                    if (!*row)
                        break;
                    const bool isLive = taken->row().isNull(1);
                    // Outside, a folder in the Trash leaves what lies in it where it is.
                    if (isLive &&
                        !(node.isLinked() && isRowInTrash(connection, taken->row().text(0))))
                        live = taken->row().text(0);
                    else if (!node.isLinked()) // outside, both may name the same file
                        trashed.emplace_back(taken->row().text(0), nodeKind(taken->row().text(2)));
                }
                m_gavePathUp |= !trashed.empty();
                for (const auto& [id, kind] : trashed)
                    if (auto moved = rewritePath(
                            connection, id, kind, node.path, placeInTrash(id, node.path));
                        !moved)
                        return moved;
                if (!live.isEmpty()) {
                    m_others.insert(std::exchange(node.id, QString()), live);
                    continue;
                }
                if (auto inserted = insertNode(*insert, node, seen); !inserted)
                    return inserted;
            }
            std::erase_if(batch, [](const auto& entry) { return entry.first.id.isEmpty(); });
            return {};
        });
    }

    bool isThere(const Node& node) const
    {
        const QString path = node.isLinked() ? node.path : m_job.root + u'/' + node.path;
        return fileFacts(QFile::encodeName(path)).has_value();
    }

    Job m_job;
    FileTypes m_types;
    bool m_gavePathUp = false, m_overtaken = false;
    std::vector<QString> m_written, m_placed;
    QSet<QString> m_withPlace;
    QHash<QString, QString>
        m_others; // ids that we would have given, to those that another process gave
};

} // namespace

Arrivals::Arrivals(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_queue(u"corvelle.arrivals"_s)
{}

Arrivals::~Arrivals()
{
    m_stopping = true;
}

void Arrivals::bringIn(std::vector<ArrivingItem> items, const QHash<QString, QString>& folders,
    NameCase nameCase, std::function<void(const Arrived&)> done)
{
    Q_ASSERT(onMainThread());
    if (items.empty() || m_library.tree().spaces().empty()) {
        if (done)
            done({});
        return;
    }
    Job job;
    job.root = m_library.root();
    job.spaceID = m_library.tree().spaces().front().id;
    job.nameCase = nameCase;
    for (const ArrivingItem& item : items) {
        const QString key = pathKey(parentPath(item.path), nameCase);
        const auto folder = folders.constFind(key);
        if (folder == folders.cend() || job.receivers.contains(key))
            continue;
        Receiver receiver;
        receiver.id = *folder;
        for (const QString& id : m_library.children(receiver.id)) {
            const Node& child = *m_library.node(id);
            receiver.places.include(QPointF(child.x, child.y), cardSize(child));
            receiver.lastPosition = child.position;
            if (child.kind == NodeKind::Folder)
                useColor(receiver, child.color);
        }
        job.receivers.insert(key, receiver);
    }
    if (m_running++ == 0) {
        m_done = m_total = 0;
        m_since.start();
    }
    m_total += static_cast<int>(items.size());
    job.items = std::move(items);
    job.looksAgain = !done; // else they were brought to their place just now

    m_queue.async([this, job = std::move(job), done = std::move(done),
                      guard = QPointer<QObject>(this)]() mutable {
        Worker worker(std::move(job));
        const auto written = worker.run(m_stopping, m_pathsGivenUp, [&](auto batch) {
            SerialQueue::onMain(
                guard, [this, batch = std::move(batch)]() mutable { took(std::move(batch)); });
        });
        if (!written)
            logLine(u"import: "_s + written.failure().sentence());
        const bool takesBack = done && !written;
        if (takesBack)
            if (const auto back = worker.takeBack(); !back)
                logLine(u"import, taking back what was written: "_s + back.failure().sentence());
        SerialQueue::onMain(
            guard, [this, done = std::move(done), takesBack, overtaken = worker.wasOvertaken(),
                       ids = worker.written(), placed = worker.placed()] {
                m_overtaken |= overtaken;
                if (takesBack)
                    m_library.tookAway(ids);
                ended();
                if (done)
                    done({takesBack ? std::vector<QString>() : placed, takesBack});
            });
    });
}

void Arrivals::took(std::vector<std::pair<Node, SeenFile>> batch)
{
    m_done += static_cast<int>(batch.size());
    catchUp(batch);
    if (!batch.empty())
        m_library.took(std::move(batch));
    if (m_total >= leastItemsForProgress && m_since.elapsed() >= progressAfterMs)
        m_library.setImportProgress(ImportProgress{m_done, m_total});
}

// Since the batch was written its folders may have been moved, which took the rows along, or been
// deleted with all in them; and a reading of the whole tree may have brought the nodes already.
void Arrivals::catchUp(std::vector<std::pair<Node, SeenFile>>& batch) const
{
    QHash<QString, QString> folders; // of this batch, their paths
    std::erase_if(batch, [&](auto& entry) {
        Node& node = entry.first;
        if (const Node* already = m_library.node(node.id)) {
            if (already->kind == NodeKind::Folder)
                folders.insert(node.id, already->path);
            return true;
        }
        if (!node.parentID.isEmpty()) {
            const Node* parent = m_library.node(node.parentID);
            const QString folder = parent ? parent->path : folders.value(node.parentID);
            if (node.isLinked() ? !parent && folder.isEmpty() : folder.isEmpty())
                return true;
            if (!node.isLinked())
                node.path = folder + u'/' + lastComponent(node.path);
        }
        if (node.kind == NodeKind::Folder)
            folders.insert(node.id, node.path);
        return false;
    });
}

void Arrivals::ended()
{
    if (--m_running > 0)
        return;
    m_library.setImportProgress(std::nullopt);
    if (m_pathsGivenUp.exchange(false))
        m_library.reload();
    emit finished();
}

} // namespace corvelle
