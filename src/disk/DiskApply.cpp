#include "disk/DiskApply.h"

#include "base/Clock.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "base/Overloaded.h"
#include "library/LinkBookmarks.h"
#include "library/NodePaths.h"

#include <QElapsedTimer>
#include <QFile>

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qint64 sliceMs = 8; // half a frame: the other half is the window's

std::optional<FileFacts> factsAt(const QString& absolutePath)
{
    return fileFacts(QFile::encodeName(absolutePath));
}

// A folder in a file's place is another thing, and the other way round.
bool isOfKind(const FileFacts& facts, NodeKind kind)
{
    return (facts.kind == FileFacts::Kind::Folder) == (kind == NodeKind::Folder);
}

// The title of a node whose file has another name now. A title that is the old name without its
// ending follows without it; any other becomes the whole new name.
QString titleAfterMove(const QString& title, const QString& oldName, const QString& newName)
{
    if (oldName == newName)
        return title;
    const qsizetype oldDot = oldName.lastIndexOf(u'.'), newDot = newName.lastIndexOf(u'.');
    if (oldDot > 0 && title == oldName.left(oldDot))
        return newDot > 0 ? newName.left(newDot) : newName;
    return newName;
}

double credibleTime(double modified)
{
    const double today = now();
    return modified == distantPast || modified > today ? today : modified;
}

// Whether a file that moved has other contents as well.
bool wasWritten(const Node& node, const SeenFile& seen, const DiskPlan::Entry& entry)
{
    if (entry.folder)
        return false;
    const bool otherTime =
        seen.modified && std::abs(*seen.modified - entry.modified) > DiskPlan::timeTolerance;
    return node.byteSize != entry.size || otherTime;
}

} // namespace

struct DiskApply::Apply
{
    DiskPass pass;
    std::function<void(Done)> done;
    Done result;
    size_t next = 0;
    QHash<QString, NextFreePlace> places; // by folder, of the cards that moved there in this pass
    struct Identified
    {
        QString id;
        DiskPlan::Entry entry;
        bool isLinked = false, isLinkedItself = false;
    };
    std::vector<Identified> identities;
    std::map<QString, double> removed;
    QSet<QString> written; // files with other contents

    static Result<void> write(SQLite& connection, const std::vector<Identified>& identities);
};

DiskApply::DiskApply(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_arrivals(library)
    , m_seenQueue(u"corvelle.seen"_s)
{
    m_slice.setSingleShot(true);
    m_slice.setInterval(0);
    connect(&m_slice, &QTimer::timeout, this, &DiskApply::slice);
    connect(&m_arrivals, &Arrivals::finished, this, &DiskApply::end);
}

DiskApply::~DiskApply() = default;

void DiskApply::run(DiskPass pass, std::function<void(Done)> done)
{
    Q_ASSERT(onMainThread() && !m_apply);
    m_apply = std::make_unique<Apply>();
    m_apply->pass = std::move(pass);
    m_apply->done = std::move(done);
    leaveOvertaken();
    slice();
}

// Another look may have moved a linked item since, or the person.
void DiskApply::leaveOvertaken()
{
    const auto& knownAt = m_apply->pass.knownAt;
    if (knownAt.isEmpty())
        return;
    const auto left = std::erase_if(m_apply->pass.actions, [&](const DiskPlan::Action& action) {
        const auto* moved = std::get_if<DiskPlan::Moved>(&action);
        const auto* removed = std::get_if<DiskPlan::Removed>(&action);
        const QString id = moved ? moved->id : removed ? removed->id : QString();
        const auto known = knownAt.constFind(id);
        const Node* node = known == knownAt.cend() ? nullptr : m_library.node(id);
        return node && node->path != *known;
    });
    m_apply->result.overtaken |= left > 0;
}

void DiskApply::leaveRest()
{
    if (!m_apply || m_apply->next >= m_apply->pass.actions.size())
        return;
    m_apply->next = m_apply->pass.actions.size();
    m_apply->pass.arriving.clear();
    m_apply->result.overtaken = true;
}

void DiskApply::slice()
{
    QElapsedTimer time;
    time.start();
    const auto& actions = m_apply->pass.actions;
    while (m_apply->next < actions.size()) {
        std::visit(Overloaded{
                       [&](const DiskPlan::Changed& a) { changed(a.id, a.entry); },
                       [&](const DiskPlan::Identity& a) { identified(a.id, a.entry); },
                       [&](const DiskPlan::Moved& a) { moved(a.id, a.to); },
                       [&](const DiskPlan::Restored& a) { restored(a.id, a.to); },
                       [&](const DiskPlan::Added&) {}, // come in by the arrivals
                       [&](const DiskPlan::Removed& a) { removed(a.id); },
                   },
            actions[m_apply->next]);
        ++m_apply->next;
        if (time.elapsed() >= sliceMs) {
            m_slice.start();
            return;
        }
    }
    writeIdentities();
    if (!m_apply->removed.empty())
        emit removedOnDisk(m_apply->removed);
    if (!m_apply->written.isEmpty())
        emit filesChanged(m_apply->written);
    if (m_apply->pass.arriving.empty())
        end();
    else
        m_arrivals.bringIn(
            std::move(m_apply->pass.arriving), m_apply->pass.folders, m_apply->pass.nameCase);
}

void DiskApply::end()
{
    if (!m_apply)
        return;
    const std::unique_ptr<Apply> ended = std::move(m_apply);
    Done& result = ended->result;
    result.overtaken |= m_arrivals.takeOvertaken();
    result.freshFolders = std::move(ended->pass.freshFolders);
    result.away = std::move(ended->pass.away);
    result.lookAlso = std::move(ended->pass.lookAlso);
    result.again = std::move(ended->pass.again);
    result.lookAgain = ended->pass.lookAgain;
    result.nameCase = ended->pass.nameCase;
    ended->done(std::move(result));
}

// ---- the actions ----

void DiskApply::changed(const QString& id, const DiskPlan::Entry& entry)
{
    const Node* old = m_library.node(id);
    if (!old)
        return;
    Node node = *old;
    node.byteSize = entry.size;
    node.updatedAt = credibleTime(entry.modified);
    if (const auto size = m_apply->pass.pictureSizes.constFind(id);
        size != m_apply->pass.pictureSizes.cend()) {
        node.width = size->width();
        node.height = size->height();
    }
    SQLite& connection = m_library.connection();
    const auto written = connection.transaction([&]() -> Result<void> {
        if (auto noted = noteLink(node, entry.inode, {}); !noted)
            return noted;
        return connection.run(
            "UPDATE nodes SET byte_size = ?, updated_at = ?, file_id = ?, file_modified = ?, "
            "width = coalesce(?, width), height = coalesce(?, height) WHERE id = ?",
            {entry.size, node.updatedAt, static_cast<qint64>(entry.inode), entry.modified,
                node.width, node.height, id});
    });
    if (!written) {
        logLine(u"file changed: "_s + written.failure().sentence());
        return;
    }
    m_library.took({{std::move(node), SeenFile{entry.inode, entry.modified}}});
    m_apply->written.insert(id);
}

void DiskApply::identified(const QString& id, const DiskPlan::Entry& entry)
{
    const Node* node = m_library.node(id);
    if (!node)
        return;
    SeenFile seen{entry.inode, std::nullopt};
    if (!entry.folder)
        seen.modified = entry.modified;
    m_library.tookSeen({{id, seen}});
    m_apply->identities.push_back(
        {id, entry, node->isLinked(), m_library.tree().isLinkedItself(*node)});
}

Result<void> DiskApply::Apply::write(SQLite& connection, const std::vector<Identified>& identities)
{
    auto seen =
        connection.prepare("UPDATE nodes SET file_id = ?, file_modified = CASE WHEN kind = 'file' "
                           "THEN ? ELSE file_modified END WHERE id = ?");
    auto size = connection.prepare(
        "UPDATE nodes SET byte_size = ? WHERE id = ? AND byte_size IS NULL AND kind = 'file'");
    if (!seen)
        return seen.failure();
    if (!size)
        return size.failure();
    for (const auto& [id, entry, isLinked, isLinkedItself] : identities) {
        if (auto done = seen->run({static_cast<qint64>(entry.inode), entry.modified, id}); !done)
            return done;
        if (auto done = size->run({entry.size, id}); !done)
            return done;
        const LinkBookmark bookmark{entry.path, entry.inode};
        auto noted = isLinkedItself ? putBookmark(connection, id, bookmark)
                     : isLinked     ? refreshBookmark(connection, id, bookmark)
                                    : Result<void>();
        if (!noted)
            return noted;
    }
    return {};
}

void DiskApply::writeIdentities()
{
    if (m_apply->identities.empty())
        return;
    m_seenQueue.async([root = m_library.root(), identities = std::move(m_apply->identities)] {
        auto connection = SQLite::open(databasePath(root));
        const auto written =
            !connection
                ? Result<void>(connection.failure())
                : connection->transaction([&] { return Apply::write(*connection, identities); });
        if (!written)
            logLine(u"note files: "_s + written.failure().sentence());
    });
}

void DiskApply::moved(const QString& id, const DiskPlan::Entry& to)
{
    const Node* node = m_library.node(id);
    if (!node || node->path.isNull())
        return;
    const auto rows = m_library.connection().query(
        "SELECT path FROM nodes WHERE id = ?", {id}, [](const SQLRow& row) { return row.text(0); });
    if (!rows || rows->empty() || rows->front() != node->path) {
        m_library.refreshNode(id); // another process moved it
        return;
    }
    // Since the look, one at the folder that it left may have taken it to the Trash, or the person.
    if (node->deletedAt) {
        if (wentAwayByItself(*node))
            restored(id, to);
        return;
    }
    if (node->path == to.path) {
        m_apply->result.placed.insert(id);
        return;
    }
    // What still lies at the old path is either the same file under another case of its name, or
    // the move isn't one.
    const auto old = factsNow(*node);
    if (old && isOfKind(*old, node->kind) &&
        (old->identity != to.inode || pathKey(node->path, m_apply->pass.nameCase) !=
                                          pathKey(to.path, m_apply->pass.nameCase)))
        return;
    if (!isStillThere(to) || hasOtherCard(*node, to.path))
        return;
    const bool written = wasWritten(*node, m_library.tree().seen(id), to);
    if (!follow(*node, to, {}))
        return;
    m_apply->result.placed.insert(id);
    if (written)
        changed(id, to);
}

// Whether a linked item is in the Trash because its file went, and not by the person's hand.
bool DiskApply::wentAwayByItself(const Node& node) const
{
    bool is = false;
    (void)m_library.connection().each(
        "SELECT 1 FROM went_away WHERE node_id = ? AND abs(at - ?) < 0.001",
        {node.id, node.deletedAt.value_or(0)}, [&](const SQLRow&) { is = true; });
    return is;
}

void DiskApply::restored(const QString& id, const DiskPlan::Entry& to)
{
    const Node* node = m_library.node(id);
    if (!node || node->path.isNull() || !m_library.isInTrash(id) || !isStillThere(to) ||
        hasOtherCard(*node, to.path))
        return;
    const bool written = wasWritten(*node, m_library.tree().seen(id), to);
    if (!follow(*node, to, "deleted_at = NULL, "))
        return;
    m_apply->result.placed.insert(id);
    if (written)
        changed(id, to);
}

// Of what lies in the library's own folder, what is at the node's path.
std::optional<FileFacts> DiskApply::factsNow(const Node& node) const
{
    return node.isLinked() ? std::nullopt : factsAt(m_library.filePath(node));
}

// A rename or a move of our own may have come between the look at the disk and its use.
bool DiskApply::isStillThere(const DiskPlan::Entry& entry)
{
    if (entry.path.startsWith(u'/'))
        return true;
    const auto facts = factsAt(m_library.absolutePath(entry.path));
    if (facts && facts->identity == entry.inode)
        return true;
    m_apply->result.overtaken = true;
    return false;
}

// A look at another folder may have given the place to what was another link to the same file.
bool DiskApply::hasOtherCard(const Node& node, const QString& path)
{
    bool has = false;
    (void)m_library.connection().each(
        "SELECT id FROM nodes WHERE path = ?", {path}, [&](const SQLRow& row) {
            const Node* other = m_library.node(row.text(0));
            has |= other && other->id != node.id && !m_library.isInTrash(other->id) &&
                   (other->kind == NodeKind::Folder) == (node.kind == NodeKind::Folder);
        });
    m_apply->result.overtaken |= has;
    return has;
}

// What is linked by itself stays on the canvas that it was put on, wherever its file goes.
std::optional<QString> DiskApply::newParent(const Node& from, const QString& path) const
{
    if (m_library.tree().isLinkedItself(from))
        return from.parentID;
    const DiskPass& pass = m_apply->pass;
    const auto parent = pass.folders.constFind(pathKey(parentPath(path), pass.nameCase));
    return parent == pass.folders.cend() ? std::nullopt : std::optional(*parent);
}

// The next free place in another folder.
void DiskApply::place(Node& node, const QString& parent)
{
    node.parentID = parent;
    node.position = m_library.tree().nextPosition(parent);
    auto places = m_apply->places.find(parent);
    if (places == m_apply->places.end()) {
        places = m_apply->places.insert(parent, {});
        for (const QString& child : m_library.children(parent)) {
            const Node& card = *m_library.node(child);
            places->include(QPointF(card.x, card.y), cardSize(card));
        }
    }
    const QPointF point = places->next();
    node.x = point.x();
    node.y = point.y();
}

// What else knows where a linked item lies. Part of the transaction that writes its row.
Result<void> DiskApply::noteLink(const Node& node, quint64 fileID, const QString& from)
{
    if (!node.isLinked())
        return {};
    SQLite& connection = m_library.connection();
    const LinkBookmark bookmark{node.path, fileID};
    if (auto noted = m_library.tree().isLinkedItself(node)
                         ? putBookmark(connection, node.id, bookmark)
                         : refreshBookmark(connection, node.id, bookmark);
        !noted || from.isEmpty())
        return noted;
    if (auto gone = connection.run("DELETE FROM went_away WHERE node_id = ?", {node.id}); !gone)
        return gone;
    return connection.run("UPDATE edit_originals SET path = ?1 || substr(path, length(?2) + 1) "
                          "WHERE path = ?2 OR (path >= ?2 || '/' AND path < ?2 || '0')",
        {node.path, from});
}

// Puts the node where its file is now: path, title, parent and place, for a folder with all paths
// below it.
bool DiskApply::follow(const Node& from, const DiskPlan::Entry& to, const QByteArray& alsoSet)
{
    const auto parent = newParent(from, to.path);
    if (!parent)
        return false;
    Node node = from;
    const bool fromTrash = !alsoSet.isEmpty();
    node.title = titleAfterMove(from.title, lastComponent(from.path), lastComponent(to.path));
    if (node.title != from.title)
        node.updatedAt = now();
    if (node.parentID != *parent)
        place(node, *parent);
    node.path = to.path;
    node.deletedAt.reset();
    SeenFile seen{to.inode, std::nullopt};
    if (!to.folder)
        seen.modified = to.modified;

    SQLite& connection = m_library.connection();
    const auto written = connection.transaction([&]() -> Result<void> {
        if (auto path = rewritePath(connection, node.id, node.kind, from.path, to.path); !path)
            return path;
        if (auto noted = noteLink(node, to.inode, from.path); !noted)
            return noted;
        return connection.run("UPDATE nodes SET " + alsoSet +
                                  "title = ?, parent_id = ?, x = ?, y = ?, position = ?, "
                                  "updated_at = ?, file_id = ?, "
                                  "file_modified = ? WHERE id = ?",
            {node.title, textOrNull(node.parentID), node.x, node.y, node.position, node.updatedAt,
                static_cast<qint64>(to.inode), seen.modified, node.id});
    });
    if (!written) {
        const QString what = fromTrash         ? u"follow put back: "_s
                             : node.isLinked() ? u"follow linked move: "_s
                                               : u"follow move: "_s;
        logLine(what + written.failure().sentence());
        return false;
    }
    std::vector<std::pair<Node, SeenFile>> changedNodes;
    if (node.kind == NodeKind::Folder) {
        takePathsBelow(to.path, changedNodes);
        DiskPass& pass = m_apply->pass;
        pass.folders.insert(pathKey(to.path, pass.nameCase), node.id);
        m_apply->result.movedFolder = true;
    }
    changedNodes.emplace_back(std::move(node), seen);
    m_library.took(std::move(changedNodes));
    return true;
}

// The nodes below a folder that moved, as their rows tell them now.
void DiskApply::takePathsBelow(const QString& folder, std::vector<std::pair<Node, SeenFile>>& nodes)
{
    DiskPass& pass = m_apply->pass;
    (void)m_library.connection().each(
        "SELECT id, path FROM nodes WHERE path >= ?1 || '/' AND path < ?1 || '0'", {folder},
        [&](const SQLRow& row) {
            const Node* below = m_library.node(row.text(0));
            if (!below)
                return;
            Node copy = *below;
            copy.path = row.text(1);
            if (copy.kind == NodeKind::Folder && !m_library.isInTrash(copy.id))
                pass.folders.insert(pathKey(copy.path, pass.nameCase), copy.id);
            nodes.emplace_back(std::move(copy), m_library.tree().seen(below->id));
        });
}

void DiskApply::removed(const QString& id)
{
    const Node* old = m_library.node(id);
    if (!old || old->path.isNull() || m_library.isInTrash(id))
        return;
    SQLite& connection = m_library.connection();
    const auto rows = connection.query("SELECT path, deleted_at FROM nodes WHERE id = ?", {id},
        [](const SQLRow& row) { return std::pair(row.text(0), row.isNull(1)); });
    if (!rows || rows->empty() || rows->front().first != old->path || !rows->front().second) {
        m_library.refreshNode(id);
        return;
    }
    if (const auto facts = factsNow(*old); facts && isOfKind(*facts, old->kind))
        return;
    Node node = *old;
    node.deletedAt = now();
    // A trashing that was cut short has its file in our Trash already.
    const QString ours = placeInTrash(id, old->path);
    const bool wasCutShort =
        !node.isLinked() && factsAt(m_library.root() + u'/' + ours).has_value();
    const auto written = connection.transaction([&]() -> Result<void> {
        if (wasCutShort)
            if (auto done = rewritePath(connection, id, node.kind, old->path, ours); !done)
                return done;
        if (node.isLinked())
            if (auto done =
                    connection.run("INSERT OR REPLACE INTO went_away (node_id, at) VALUES (?, ?)",
                        {id, *node.deletedAt});
                !done)
                return done;
        return connection.run(
            "UPDATE nodes SET deleted_at = ? WHERE id = ?", {*node.deletedAt, id});
    });
    if (!written) {
        logLine(u"trash: "_s + written.failure().sentence());
        return;
    }
    if (wasCutShort) {
        node.path = ours;
        if (node.kind == NodeKind::Folder)
            m_library.reload(); // the paths below it
    }
    m_apply->removed[id] = *node.deletedAt;
    const SeenFile seen = m_library.tree().seen(id);
    m_library.took({{std::move(node), seen}});
}

} // namespace corvelle
