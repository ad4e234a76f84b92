#include "library/Duplicates.h"

#include "base/CardPlacement.h"
#include "base/Clock.h"
#include "base/Ids.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "base/Text.h"
#include "library/FileNames.h"
#include "library/Position.h"
#include "library/SnapshotReader.h"
#include "platform/FileFacts.h"
#include "platform/FileMoves.h"

#include <QDir>
#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString copyName(const QString& name, NodeKind kind)
{
    const QString extension = kind == NodeKind::File ? fileExtension(name) : QString();
    if (extension.isEmpty())
        return name + u" copy"_s;
    return name.left(name.size() - extension.size() - 1) + u" copy."_s + extension;
}

// Follows the name on disk where it was that name, with or without its ending.
QString copyTitle(const Node& from, const QString& oldName, const QString& newName)
{
    if (from.title == oldName)
        return newName;
    const qsizetype ending = fileExtension(oldName).size();
    if (from.kind == NodeKind::File && ending > 0 &&
        from.title == oldName.left(oldName.size() - ending - 1))
        return newName.left(newName.size() - ending - 1);
    return from.title + u" copy"_s;
}

SeenFile seenAt(const QString& path)
{
    SeenFile seen;
    if (const auto facts = fileFacts(QFile::encodeName(path))) {
        seen.fileID = facts->identity;
        if (facts->kind != FileFacts::Kind::Folder)
            seen.modified = facts->modified;
    }
    return seen;
}

QPointF placeBeside(const Library& library, const Node& from)
{
    std::vector<QRectF> taken;
    for (const QString& id : library.children(from.parentID))
        taken.push_back(cardRect(*library.node(id)));
    const QSizeF size = cardSize(from);
    return freeSpot(besideCard(QPointF(from.x, from.y), size),
        QSizeF(size.width() + freeSpotMargin, size.height() + freeSpotMargin), taken);
}

Duplicates::Copied copyFiles(
    const QString& id, const QString& source, const QString& staging, const WorkTick& tick)
{
    Duplicates::Copied copy{id, {}, 0, false};
    if (source.isNull())
        return copy;
    const QString folder = staging + u'/' + id;
    const QString target = folder + u'/' + lastComponent(source);
    auto done = makeFolder(folder);
    if (done)
        done = copyItem(source, target, tick, [&copy](const Failure& failure) {
            logLine(u"duplicate "_s + failure.sentence());
            ++copy.missed;
        });
    if (!done) {
        logLine(u"duplicate "_s + lastComponent(source) + u": "_s + done.failure().sentence());
        copy.failed = true;
        return copy;
    }
    copy.staged = target;
    return copy;
}

} // namespace

Duplicates::Duplicates(Edits& edits, QObject* parent)
    : QObject(parent)
    , m_edits(edits)
    , m_library(edits.library())
    , m_queue(u"corvelle.duplicates"_s)
{}

Duplicates::~Duplicates()
{
    m_stopping = true;
}

// None, and the person told, when its file isn't there.
std::optional<Duplicates::Original> Duplicates::originalOf(const QString& id)
{
    const Node* node = m_library.freshNode(id);
    if (!node || m_library.isInTrash(id))
        return std::nullopt;
    if (node->kind == NodeKind::Page || node->kind == NodeKind::Link)
        return Original{id, {}};
    const QString path = m_library.filePath(*node);
    if (!node->path.isNull() && isThere(path))
        return Original{id, path};
    const QString told =
        u"Couldn’t duplicate “%1”: it can’t be found on this Mac."_s.arg(node->title);
    m_library.fail(
        node->isLinked() ? told + u" Find it with Locate… in its menu, then try again."_s : told);
    return std::nullopt;
}

void Duplicates::duplicate(const std::vector<QString>& ids)
{
    Q_ASSERT(onMainThread());
    if (!m_library.isOpen())
        return;
    std::vector<Original> originals;
    for (const QString& id : ids)
        if (auto original = originalOf(id))
            originals.push_back(std::move(*original));
    if (originals.empty())
        return;
    if (std::all_of(originals.begin(), originals.end(),
            [](const Original& original) { return original.source.isNull(); })) {
        std::vector<Copied> copies;
        for (const Original& original : originals)
            copies.push_back({original.id, {}, 0, false});
        take(copies);
        return;
    }
    ++m_running;
    const QString staging = hiddenFolder(m_library.root()) + u"/staging/"_s + newID();
    m_queue.run(
        [this, originals = std::move(originals), staging] {
            std::vector<Copied> copies;
            for (const Original& original : originals)
                if (!m_stopping)
                    copies.push_back(copyFiles(original.id, original.source, staging, {}));
            return copies;
        },
        this,
        [this, staging](const std::vector<Copied>& copies) {
            m_edits.journal().closeGesture();
            take(copies);
            m_edits.journal().closeGesture();
            m_queue.async([staging] { (void)removeItem(staging); });
            --m_running;
        });
}

void Duplicates::take(const std::vector<Copied>& copies)
{
    std::vector<QString> made;
    int failed = 0, missed = 0;
    for (const Copied& copy : copies) {
        std::vector<std::pair<Node, SeenFile>> nodes;
        auto done = copy.failed ? Result<QString>(Failure({})) : bringIn(copy, nodes);
        if (!done) {
            if (!copy.failed)
                logLine(u"duplicate: "_s + done.failure().sentence());
            ++failed;
            continue;
        }
        missed += copy.missed;
        for (const auto& [node, seen] : nodes)
            if (node.kind == NodeKind::Page)
                m_library.tookPageStamp(node.id, node.updatedAt);
        m_library.took(std::move(nodes));
        made.push_back(*done);
    }
    m_edits.recordMade(made, u"Duplicate"_s);
    if (failed > 0)
        m_library.fail(u"Couldn’t duplicate %1 of these items. Try again."_s.arg(failed));
    else if (missed > 0)
        m_library.fail(
            u"%1 files couldn’t be copied into the folder’s copy. Try duplicating the folder again."_s
                .arg(missed));
    if (!made.empty())
        emit duplicated(made);
}

// Makes the rows of the copy, with all below a folder, and moves its file in. Gives the copy's id.
Result<QString> Duplicates::bringIn(
    const Copied& copy, std::vector<std::pair<Node, SeenFile>>& made)
{
    const Node* source = m_library.node(copy.id);
    if (!source)
        return Failure(u"it is gone"_s);
    if (const QString problem = m_edits.parentProblem(source->parentID); !problem.isNull())
        return Failure(problem);
    LongWork work(m_library);
    const Node from = *source;
    Node top = from;
    top.id = newID();
    top.createdAt = top.updatedAt = now();
    top.position = m_library.tree().nextPosition(from.parentID);
    const QPointF point = placeBeside(m_library, from);
    top.x = point.x();
    top.y = point.y();
    QString target;
    if (copy.staged.isNull()) {
        top.title = from.title + u" copy"_s;
    } else {
        const auto folder = m_edits.folderFor(from.parentID);
        if (!folder)
            return folder.failure();
        const QString oldName = lastComponent(from.path);
        const QString name = m_edits.freeName(copyName(oldName, from.kind), *folder, from.kind);
        target = *folder + u'/' + name;
        top.title = copyTitle(from, oldName, name);
        top.path = m_library.relativePath(target);
        if (auto moved = moveItem(copy.staged, target, work.ticks()); !moved)
            return moved.failure();
    }
    made.emplace_back(top, target.isNull() ? SeenFile{} : seenAt(target));

    // All live items below a folder, parents first. What couldn't be copied has no card.
    std::vector<std::pair<Node, Node>> pairs{{from, top}};
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (pairs[i].first.kind != NodeKind::Folder)
            continue;
        const QString parent = pairs[i].second.id, path = pairs[i].second.path;
        const Node above = pairs[i].first;
        for (const QString& id : m_library.children(above.id)) {
            Node below = *m_library.node(id);
            const Node original = below;
            below.id = newID();
            below.parentID = parent;
            below.createdAt = below.updatedAt = top.createdAt;
            SeenFile seen;
            if (!below.path.isNull() && !below.isLinked()) {
                below.path = path + u'/' + lastComponent(original.path);
                if (!isThere(m_library.filePath(below)))
                    continue;
                seen = seenAt(m_library.filePath(below));
            }
            made.emplace_back(below, seen);
            pairs.emplace_back(original, std::move(below));
            work.tick();
        }
    }
    const auto written = m_library.connection().transaction([&]() -> Result<void> {
        auto insert = m_library.connection().prepare(insertNodeSQL);
        if (!insert)
            return insert.failure();
        for (size_t i = 0; i < made.size(); ++i) {
            if (auto done = insertNode(*insert, made[i].first, made[i].second); !done)
                return done;
            if (auto done = writeCopy(pairs[i].first, pairs[i].second); !done)
                return done;
            work.tick();
        }
        return {};
    });
    if (written)
        return top.id;
    made.clear();
    if (!target.isNull())
        if (auto back = moveItem(target, copy.staged, work.ticks()); !back)
            logLine(u"duplicate, taking back: "_s + back.failure().sentence());
    return written.failure();
}

// What a page or a website has in tables of its own. Joins the transaction.
Result<void> Duplicates::writeCopy(const Node& from, const Node& copy)
{
    SQLite& connection = m_library.connection();
    if (from.kind == NodeKind::Page) {
        if (auto done = connection.run(
                "INSERT OR REPLACE INTO pages (node_id, doc, updated_at) SELECT ?, doc, ? FROM "
                "pages WHERE node_id = ?",
                {copy.id, copy.updatedAt, from.id});
            !done)
            return done;
    } else if (from.kind == NodeKind::Link) {
        if (auto done = connection.run(
                "INSERT OR REPLACE INTO links (node_id, url, final_url, excerpt, readable, "
                "notes)\nSELECT ?, url, final_url, excerpt, readable, notes FROM links WHERE "
                "node_id = ?",
                {copy.id, from.id});
            !done)
            return done;
        const QString shot = m_library.shotPath(from.id);
        QFile::copy(shot, hiddenFolder(m_library.root()) + u"/shots/"_s + copy.id +
                              shot.mid(shot.lastIndexOf(u'.')));
    } else {
        return {};
    }
    return connection.run("INSERT OR REPLACE INTO node_text (node_id, source, text) SELECT ?, "
                          "source, text FROM node_text WHERE node_id = ?",
        {copy.id, from.id});
}

} // namespace corvelle
