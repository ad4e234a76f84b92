#include "library/Library.h"

#include "base/Log.h"
#include "base/MainThread.h"
#include "base/Text.h"
#include "library/SnapshotReader.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostOvertaken = 3;

} // namespace

struct Library::Reader
{
    std::optional<SQLite> connection;

    // Opens its connection on first use. None when the database can't be read now.
    std::optional<Snapshot> read(const QString& root)
    {
        if (!connection) {
            auto opened = SQLite::open(databasePath(root));
            if (!opened)
                return std::nullopt;
            connection = std::move(*opened);
        }
        auto snapshot = readSnapshot(*connection);
        if (!snapshot) {
            logLine(u"reload: "_s + snapshot.failure().sentence());
            return std::nullopt;
        }
        return std::move(*snapshot);
    }
};

Library::Library(LibraryPlace place, OpenMode mode, QObject* parent)
    : QObject(parent)
    , m_place(std::move(place))
    , m_mode(mode)
    , m_root(m_place.root)
    , m_reader(std::make_shared<Reader>())
    , m_reloads(u"corvelle.reload"_s)
{}

Library::~Library() = default;

bool Library::open(LibraryOpening opening)
{
    Q_ASSERT(onMainThread() && !isOpen());
    m_root = opening.root;
    m_missing = opening.missing;
    m_heldBy = opening.heldBy;
    m_firstRun = opening.isFirstRun;
    m_lock = std::move(opening.lock);
    m_loadError = opening.loadError;
    if (opening.connection) {
        m_connection = std::move(opening.connection);
        // Carrying the log over into the database takes long after a large change; the queues'
        // connections do it after their own, smaller ones.
        if (m_mode == OpenMode::Application)
            (void)m_connection->execute("PRAGMA wal_autocheckpoint = 0");
        m_tree = std::move(opening.tree);
        m_nativeShots = std::move(opening.nativeShots);
        TreeChange change;
        change.everything = true;
        change.spaces = true;
        tell(change);
    }
    emit loadErrorChanged();
    return isOpen();
}

// ---- reads ----

QString Library::folderPath(const QString& id) const
{
    const Node* folder = node(id);
    if (!folder || folder->path.isNull())
        return m_root + u'/' + m_tree.spaceFolder();
    if (folder->isLinked())
        return hiddenFolder(m_root) + u"/linked/"_s + id;
    return m_root + u'/' + folder->path;
}

QString Library::filePath(const Node& node) const
{
    return absolutePath(node.path);
}

QString Library::absolutePath(const QString& path) const
{
    return path.startsWith(u'/') ? path : m_root + u'/' + path;
}

QString Library::relativePath(const QString& absolutePath) const
{
    const QString clean = QDir::cleanPath(absolutePath);
    return clean.startsWith(m_root + u'/') ? clean.mid(m_root.size() + 1) : clean;
}

QString Library::thumbnailPath(const QString& id) const
{
    return hiddenFolder(m_root) + u"/thumbs/"_s + id + u".jpg"_s;
}

QString Library::shotPath(const QString& id) const
{
    return hiddenFolder(m_root) + u"/shots/"_s + id +
           (m_nativeShots.contains(id) ? u".jpg"_s : u".webp"_s);
}

// ---- changes ----

void Library::reload()
{
    Q_ASSERT(onMainThread());
    if (!isOpen())
        return;
    m_reloads.run([reader = m_reader, root = m_root] { return reader->read(root); }, this,
        [this, turn = ++m_reloadTurn, revision = m_revision](std::optional<Snapshot> snapshot) {
            if (turn != m_reloadTurn)
                return;
            m_reloadedTurn = turn;
            if (!snapshot)
                return;
            if (revision == m_revision) {
                m_overtaken = 0;
                apply(std::move(*snapshot));
            } else if (++m_overtaken < mostOvertaken) {
                reload(); // the memory moved on during the read
            } else {
                m_overtaken = 0;
                if (auto fresh = readSnapshot(*m_connection))
                    apply(std::move(*fresh));
            }
        });
}

void Library::apply(Snapshot snapshot)
{
    const TreeChange change = m_tree.apply(std::move(snapshot));
    if (!change.isEmpty())
        tell(change);
    if (!change.changedPages.isEmpty())
        emit pagesChangedElsewhere(change.changedPages);
}

void Library::refreshNode(const QString& id)
{
    auto row = readNode(*m_connection, id);
    if (!row)
        return;
    if (*row) {
        took({std::move(**row)});
        return;
    }
    const Node* gone = node(id);
    if (!gone)
        return;
    TreeChange change;
    change.nodes = {id};
    change.parents = {gone->parentID};
    m_tree.remove(id);
    tell(change);
}

const Node* Library::freshNode(const QString& id)
{
    if (!isOpen())
        return node(id);
    auto row = readNode(*m_connection, id);
    if (!row)
        return node(id);
    const Node* known = node(id);
    if (*row ? !known || *known != (*row)->first : known != nullptr)
        refreshNode(id);
    return node(id);
}

void Library::readAgainIfServing()
{
    if (m_mode != OpenMode::ToolServer || !isOpen())
        return;
    if (auto fresh = readSnapshot(*m_connection))
        apply(std::move(*fresh));
}

void Library::took(std::vector<std::pair<Node, SeenFile>> nodes)
{
    Q_ASSERT(onMainThread());
    TreeChange change;
    for (auto& [fresh, seen] : nodes) {
        if (const Node* old = node(fresh.id))
            change.parents.insert(old->parentID);
        change.nodes.insert(fresh.id);
        change.parents.insert(fresh.parentID);
        m_tree.put(std::move(fresh), seen);
    }
    tell(change);
}

void Library::tookPaths(const std::vector<std::pair<QString, QString>>& pathsByID)
{
    TreeChange change;
    for (const auto& [id, path] : pathsByID)
        if (m_tree.setPath(id, path))
            change.nodes.insert(id);
    if (!change.isEmpty())
        tell(change);
}

void Library::tookAway(const std::vector<QString>& ids)
{
    TreeChange change;
    for (const QString& id : ids)
        if (const Node* gone = node(id)) {
            change.nodes.insert(id);
            change.parents.insert(gone->parentID);
            change.linkedItems |= gone->isLinked();
            m_tree.remove(id);
        }
    if (!change.isEmpty())
        tell(change);
}

void Library::tookSeen(const std::vector<std::pair<QString, SeenFile>>& seen)
{
    for (const auto& [id, facts] : seen)
        m_tree.setSeen(id, facts);
}

void Library::tookMissing(const QSet<QString>& gone, const QSet<QString>& found)
{
    TreeChange change;
    for (const QString& id : gone)
        if (!m_missingLinks.contains(id)) {
            m_missingLinks.insert(id);
            change.nodes.insert(id);
        }
    for (const QString& id : found)
        if (m_missingLinks.remove(id))
            change.nodes.insert(id);
    if (!change.isEmpty())
        tell(change);
}

void Library::setImportProgress(std::optional<ImportProgress> progress)
{
    if (m_importProgress == progress)
        return;
    m_importProgress = progress;
    emit importProgressChanged();
}

void Library::fail(const QString& message)
{
    m_lastFailure = message;
    logLine(u"failed: "_s + message);
    if (m_mode == OpenMode::Application)
        emit failed(message);
}

void Library::tell(const TreeChange& change)
{
    ++m_revision;
    emit treeChanged(change);
}

} // namespace corvelle
