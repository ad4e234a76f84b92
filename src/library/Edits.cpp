#include "library/Edits.h"

#include "base/Clock.h"
#include "base/Ids.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "base/Text.h"
#include "library/EditAppliers.h"
#include "library/EditWords.h"
#include "library/FileNames.h"
#include "library/NodePaths.h"
#include "library/SnapshotReader.h"
#include "platform/FileFacts.h"
#include "platform/FileMoves.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// A page without words: one empty paragraph.
const QString emptyPage = u"{\"content\":[{\"type\":\"paragraph\"}],\"type\":\"doc\"}"_s;

QString titleOf(const Edits::Wish& wish)
{
    QString title = storableTitle(wish.title);
    if (!title.trimmed().isEmpty())
        return title;
    return wish.kind == NodeKind::Folder ? u"New folder"_s : u"Corvelle"_s;
}

QString makeProblem(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Folder:
        return u"Couldn’t make the folder. Try again."_s;
    case NodeKind::Link:
        return u"Couldn’t make the link. Try again."_s;
    default:
        return u"Couldn’t make the page. Try again."_s;
    }
}

QString stepName(NodeKind kind)
{
    switch (kind) {
    case NodeKind::Folder:
        return u"New Folder"_s;
    case NodeKind::Link:
        return u"Add Link"_s;
    default:
        return u"New Page"_s;
    }
}

} // namespace

Edits::Edits(Library& library, UndoManager& manager, UndoJournal& journal, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_manager(manager)
    , m_journal(journal)
    , m_appliers(std::make_unique<EditAppliers>(*this))
    , m_removals(u"corvelle.removals"_s)
{
    m_appliers->registerAt(journal);
}

Edits::~Edits() = default;

// ---- what the operations share ----

QString Edits::parentProblem(const QString& parent) const
{
    if (!parent.isEmpty()) {
        const Node* folder = m_library.node(parent);
        if (!folder || folder->kind != NodeKind::Folder)
            return u"That folder no longer exists. Choose another folder."_s;
        if (m_library.isInTrash(parent))
            return u"That folder is in the Trash. Put it back first, or choose another folder."_s;
        if (folder->isLinked())
            return {};
    }
    const QString path = m_library.folderPath(parent);
    if (QFileInfo(path).isDir())
        return {};
    return u"Can’t find “%1” in the library folder. If it was renamed or moved in Finder, put it back as it was."_s
        .arg(lastComponent(path));
}

bool Edits::checkParent(const QString& parent)
{
    if (!parent.isEmpty())
        (void)m_library.freshNode(parent);
    const QString problem = parentProblem(parent);
    if (!problem.isNull())
        m_library.fail(problem);
    return problem.isNull();
}

Result<QString> Edits::folderFor(const QString& parent) const
{
    const QString path = m_library.folderPath(parent);
    const Node* folder = m_library.node(parent);
    // What is added here to a folder outside lies with us.
    if (folder && folder->isLinked())
        if (auto made = makeFolder(path); !made)
            return made.failure();
    return path;
}

bool Edits::hasFile(const Node& node) const
{
    return !node.path.isNull() && !node.isLinked() && isThere(m_library.filePath(node));
}

bool Edits::hasCard(const QString& absolutePath) const
{
    bool found = false;
    (void)m_library.connection().each(
        "SELECT 1 FROM nodes WHERE path = ? AND deleted_at IS NULL LIMIT 1",
        {m_library.relativePath(absolutePath)}, [&](const SQLRow&) { found = true; });
    return found;
}

QString Edits::freeName(
    const QString& name, const QString& folder, NodeKind kind, const QString& self) const
{
    return uniqueName(name, folder, kind == NodeKind::Folder ? NameOf::Folder : NameOf::File, self,
        [this](const QString& path) { return hasCard(path); });
}

Result<void> Edits::write(const DatabaseStep& step)
{
    return m_library.connection().transaction(step);
}

void Edits::put(Node node)
{
    const SeenFile seen = m_library.tree().seen(node.id);
    m_library.took({{std::move(node), seen}});
}

// Moves the node's file to `target`, an absolute path, together with the database: its path, for a
// folder all paths below it, and `step`. `node` is as it will stand, but for its path, which is
// still the old one and is the new one afterwards.
Result<void> Edits::relocate(
    Node& node, const QString& target, const DatabaseStep& step, LongWork& work)
{
    if (node.isLinked())
        return Failure(u"what is linked from outside is never moved: "_s + node.path, EPERM);
    const QString source = m_library.filePath(node);
    SQLite& connection = m_library.connection();
    const bool moves = QDir::cleanPath(source) != QDir::cleanPath(target);
    // Of a file that isn't there only the row goes, to where a look at the disk will miss it.
    const bool onDisk = moves && isThere(source);
    const bool onlyCase = onDisk && isSameItem(source, target);
    if (onDisk) {
        if (auto made = makeFolder(QFileInfo(target).path()); !made)
            return made;
        if (auto moved =
                onlyCase ? renameCase(source, target) : moveItem(source, target, work.ticks());
            !moved)
            return moved;
    }
    const QString from = node.path, to = m_library.relativePath(target);
    auto written = write([&]() -> Result<void> {
        if (moves)
            if (auto path = rewritePath(connection, node.id, node.kind, from, to); !path)
                return path;
        return step();
    });
    if (!written) {
        if (onDisk)
            if (auto back =
                    onlyCase ? renameCase(target, source) : moveItem(target, source, work.ticks());
                !back)
                logLine(u"move back: "_s + back.failure().sentence());
        return written;
    }
    node.path = to;
    if (moves && node.kind == NodeKind::Folder) {
        std::vector<std::pair<QString, QString>> below;
        (void)connection.each(
            "SELECT id, path FROM nodes WHERE path >= ?1 || '/' AND path < ?1 || '0'", {to},
            [&](const SQLRow& row) { below.emplace_back(row.text(0), row.text(1)); });
        work.tick();
        m_library.tookPaths(below);
    }
    return {};
}

// ---- make ----

NodeColor Edits::colorOfNewFolder(const QString& parent) const
{
    std::vector<NodeColor> open(allNodeColors.begin(), allNodeColors.end());
    for (const QString& id : m_library.children(parent))
        if (const Node* child = m_library.node(id); child->kind == NodeKind::Folder)
            std::erase(open, child->color);
    if (open.empty())
        open.assign(allNodeColors.begin(), allNodeColors.end());
    return open[QRandomGenerator::global()->bounded(static_cast<quint32>(open.size()))];
}

QString Edits::make(const Wish& wish)
{
    Q_ASSERT(onMainThread());
    if (!isReady() || m_library.tree().spaces().empty())
        return {};
    m_library.readAgainIfServing();
    if (!checkParent(wish.parent))
        return {};
    Node node;
    node.id = newID();
    node.spaceID = m_library.tree().spaces().front().id;
    if (!wish.parent.isEmpty())
        node.parentID = wish.parent;
    node.kind = wish.kind;
    node.title = titleOf(wish);
    node.createdAt = node.updatedAt = now();
    node.x = wish.point.x();
    node.y = wish.point.y();
    node.color = wish.color.value_or(
        wish.kind == NodeKind::Folder ? colorOfNewFolder(wish.parent) : NodeColor::Gray);
    node.position = m_library.tree().nextPosition(wish.parent);
    if (wish.kind == NodeKind::Link)
        node.url = wish.url;
    QString made;
    SeenFile seen;
    if (wish.kind == NodeKind::Folder) {
        const auto folder = folderFor(wish.parent);
        auto done = folder ? Result<void>() : Result<void>(folder.failure());
        if (done) {
            made = *folder + u'/' + freeName(safeFileName(node.title), *folder, NodeKind::Folder);
            done = makeFolder(made);
        }
        if (!done) {
            logLine(u"mkdir: "_s + done.failure().sentence());
            m_library.fail(makeProblem(wish.kind));
            return {};
        }
        node.path = m_library.relativePath(made);
        if (const auto facts = fileFacts(QFile::encodeName(made)))
            seen.fileID = facts->identity;
    }
    if (auto written = write([&] { return writeNode(node, seen, wish.url); }); !written) {
        logLine(u"make: "_s + written.failure().sentence());
        if (!made.isEmpty())
            QDir().rmdir(made);
        m_library.fail(makeProblem(wish.kind));
        return {};
    }
    const QString id = node.id;
    if (node.kind == NodeKind::Page)
        m_library.tookPageStamp(id, node.createdAt);
    m_library.took({{std::move(node), seen}});
    recordMade({id}, stepName(wish.kind));
    return id;
}

Result<void> Edits::writeNode(const Node& node, const SeenFile& seen, const QString& url)
{
    SQLite& connection = m_library.connection();
    auto insert = connection.prepare(insertNodeSQL);
    if (!insert)
        return insert.failure();
    if (auto inserted = insertNode(*insert, node, seen); !inserted)
        return inserted;
    if (node.kind == NodeKind::Page)
        return connection.run(
            "INSERT OR REPLACE INTO pages (node_id, doc, updated_at) VALUES (?, ?, ?)",
            {node.id, emptyPage, node.createdAt});
    if (node.kind == NodeKind::Link)
        return connection.run(
            "INSERT OR REPLACE INTO links (node_id, url) VALUES (?, ?)", {node.id, url});
    return {};
}

void Edits::recordMade(const std::vector<QString>& ids, const QString& stepName)
{
    if (ids.empty())
        return;
    m_journal.record(change::Made{ids});
    m_journal.setName(stepName);
}

// ---- rename ----

bool Edits::rename(const QString& id, const QString& typed)
{
    Q_ASSERT(onMainThread());
    if (!isReady())
        return false;
    m_library.readAgainIfServing();
    QString title = storableTitle(typed);
    for (const ushort newline : {0x0a, 0x0d, 0x85, 0x2028, 0x2029})
        title.replace(QChar(newline), u' ');
    title = title.trimmed();
    const Node* node = m_library.freshNode(id);
    if (!node || title.isEmpty() || title == node->title)
        return false;
    const QString before = node->title;
    if (!storeTitle(id, title))
        return false;
    m_journal.record(change::Renamed{id, {before, title}});
    m_journal.setName(u"Rename"_s);
    return true;
}

bool Edits::storeTitle(const QString& id, const QString& title)
{
    const Node* known = m_library.node(id);
    if (!known)
        return false;
    Node node = *known;
    const QString before = node.title;
    node.title = title;
    node.updatedAt = now();
    const auto step = [&] {
        return m_library.connection().run("UPDATE nodes SET title = ?, updated_at = ? WHERE id = ?",
            {node.title, node.updatedAt, node.id});
    };
    LongWork work(m_library);
    Result<void> done;
    if (!m_library.isInTrash(id) && hasFile(node)) {
        const QString path = m_library.filePath(node), folder = parentPath(path);
        const QString extension = fileExtension(lastComponent(path));
        QString name = safeFileName(title);
        if (node.kind == NodeKind::File && !extension.isEmpty() &&
            fileExtension(name).compare(extension, Qt::CaseInsensitive) != 0)
            name = safeFileName(name + u'.' + extension);
        name = freeName(name, folder, node.kind, path);
        done = relocate(node, folder + u'/' + name, step, work);
    } else {
        done = write(step);
    }
    if (!done) {
        logLine(u"rename: "_s + done.failure().sentence());
        m_library.fail(u"Couldn’t rename “%1”"_s.arg(before) + reasonText(done.failure()));
        return false;
    }
    put(std::move(node));
    return true;
}

// ---- colour, icon, places ----

void Edits::setColor(const std::vector<QString>& ids, NodeColor color)
{
    Q_ASSERT(onMainThread());
    if (!isReady())
        return;
    change::Colored step;
    std::map<QString, QString> wanted;
    for (const QString& id : ids)
        if (const Node* node = m_library.node(id); node && node->color != color) {
            step.colors[id] = {word(node->color), word(color)};
            wanted[id] = word(color);
        }
    if (wanted.empty() || !storeColors(wanted))
        return;
    m_journal.record(step);
    m_journal.setName(u"Change Colour"_s);
}

bool Edits::storeColors(const std::map<QString, QString>& colors)
{
    const auto written = write([&]() -> Result<void> {
        for (const auto& [id, word] : colors)
            if (auto done = m_library.connection().run(
                    "UPDATE nodes SET color = ? WHERE id = ?", {word, id});
                !done)
                return done;
        return {};
    });
    if (!written) {
        logLine(u"colour: "_s + written.failure().sentence());
        m_library.fail(u"Couldn’t change the colour. Try again."_s);
        return false;
    }
    for (const auto& [id, word] : colors)
        if (const Node* node = m_library.node(id)) {
            Node copy = *node;
            copy.color = nodeColor(word);
            put(std::move(copy));
        }
    return true;
}

void Edits::setIcon(const QString& id, const QString& icon)
{
    Q_ASSERT(onMainThread());
    const Node* node = isReady() ? m_library.node(id) : nullptr;
    if (!node || node->icon == icon)
        return;
    const QString before = node->icon;
    if (storeIcon(id, icon))
        registerIcon(id, before);
}

// The icon's undo isn't kept beyond the quit: it goes to the manager alone.
void Edits::registerIcon(const QString& id, const QString& icon)
{
    m_manager.registerUndo(this, [this, id, icon] {
        const Node* node = m_library.node(id);
        if (!node)
            return;
        const QString before = node->icon;
        if (storeIcon(id, icon))
            registerIcon(id, before);
    });
}

bool Edits::storeIcon(const QString& id, const QString& icon)
{
    const auto written = m_library.connection().run("UPDATE nodes SET icon = ? WHERE id = ?",
        {icon.isEmpty() ? SQLValue(nullptr) : SQLValue(icon), id});
    if (!written) {
        logLine(u"icon: "_s + written.failure().sentence());
        m_library.fail(u"Couldn’t change the icon. Try again."_s);
        return false;
    }
    if (const Node* node = m_library.node(id)) {
        Node copy = *node;
        copy.icon = icon.isEmpty() ? QString() : icon;
        put(std::move(copy));
    }
    return true;
}

bool Edits::savePositions(const std::map<QString, QPointF>& points, const QString& stepName)
{
    Q_ASSERT(onMainThread());
    if (!isReady())
        return false;
    change::Placed step;
    std::map<QString, QPointF> wanted;
    for (const auto& [id, point] : points)
        if (const Node* node = m_library.node(id); node && std::isfinite(point.x()) &&
                                                   std::isfinite(point.y()) &&
                                                   (node->x != point.x() || node->y != point.y())) {
            step.points[id] = {QPointF(node->x, node->y), point};
            wanted[id] = point;
        }
    if (wanted.empty())
        return true;
    if (!storePoints(wanted))
        return false;
    m_journal.record(step);
    m_journal.setName(stepName);
    return true;
}

bool Edits::storePoints(const std::map<QString, QPointF>& points)
{
    LongWork work(m_library);
    const auto written = write([&]() -> Result<void> {
        auto update = m_library.connection().prepare("UPDATE nodes SET x = ?, y = ? WHERE id = ?");
        if (!update)
            return update.failure();
        for (const auto& [id, point] : points) {
            if (auto done = update->run({point.x(), point.y(), id}); !done)
                return done;
            work.tick();
        }
        return {};
    });
    if (!written) {
        logLine(u"Couldn't save positions: "_s + written.failure().sentence());
        m_library.fail(u"Couldn’t save where the cards are. Try again."_s);
        return false;
    }
    std::vector<std::pair<Node, SeenFile>> moved;
    for (const auto& [id, point] : points)
        if (const Node* node = m_library.node(id)) {
            Node copy = *node;
            copy.x = point.x();
            copy.y = point.y();
            moved.emplace_back(std::move(copy), m_library.tree().seen(id));
        }
    m_library.took(std::move(moved));
    return true;
}

} // namespace corvelle
