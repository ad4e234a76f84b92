// Moving into other folders, into the Trash and back.
#include "library/Edits.h"

#include "base/CardPlacement.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "base/Text.h"
#include "library/EditWords.h"
#include "library/FileNames.h"
#include "library/NodePaths.h"
#include "library/Position.h"
#include "library/RowRemoval.h"
#include "platform/FileMoves.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QStringView trashFolder = u".corvelle/Trash/";

Place placeOf(const Node& node)
{
    return {node.parentID, node.x, node.y, node.position};
}

} // namespace

// ---- move ----

std::vector<QString> Edits::move(const std::vector<Target>& items, const QString& parent)
{
    Q_ASSERT(onMainThread());
    std::vector<QString> went;
    if (!isReady())
        return went;
    m_library.readAgainIfServing();
    if (!checkParent(parent))
        return went;
    const std::vector<QString> above = m_library.tree().ancestors(parent);
    change::Moved step;
    FailureCount failures;
    LongWork work(m_library);
    QString position;
    for (const Target& item : items) {
        const Node* node = m_library.freshNode(item.id);
        if (!node || step.places.contains(item.id) || m_library.isInTrash(item.id) ||
            std::find(above.begin(), above.end(), item.id) != above.end())
            continue;
        const Place before = placeOf(*node);
        Place after{parent, item.point.x(), item.point.y(), before.position};
        if (node->parentID != parent)
            after.position = position = position.isEmpty() ? m_library.tree().nextPosition(parent)
                                                           : positionAfter(position);
        const QString title = node->title;
        if (auto moved = moveOne(*node, after, work); !moved) {
            logLine(u"move: "_s + moved.failure().sentence());
            failures.add(title, moved.failure());
            continue;
        }
        step.places[item.id] = {before, after};
        went.push_back(item.id);
    }
    if (failures.count() == 1)
        m_library.fail(u"Couldn’t move “%1”"_s.arg(failures.title()) + failures.reason());
    else if (failures.count() > 1)
        m_library.fail(u"Couldn’t move %1 items. Try again."_s.arg(failures.count()));
    if (!step.places.empty()) {
        m_journal.record(std::move(step));
        m_journal.setName(u"Move"_s);
    }
    return went;
}

std::vector<QString> Edits::moveTo(
    const std::vector<QString>& ids, const QString& parent, QPointF point)
{
    const QSet<QString> moving(ids.begin(), ids.end());
    std::vector<QRectF> taken;
    for (const QString& id : m_library.children(parent))
        if (!moving.contains(id))
            taken.push_back(cardRect(*m_library.node(id)));
    std::vector<Target> items;
    for (const QString& id : ids)
        if (const Node* node = m_library.node(id)) {
            const QSizeF size = cardSize(*node) + QSizeF(freeSpotMargin, freeSpotMargin);
            const QPointF centre = freeSpot(point, size, taken);
            taken.emplace_back(centre - QPointF(size.width() / 2, size.height() / 2), size);
            items.push_back({id, centre});
        }
    return move(items, parent);
}

Result<void> Edits::moveOne(const Node& from, const Place& place, LongWork& work)
{
    Node node = from;
    node.parentID = place.parent.isEmpty() ? QString() : place.parent;
    node.x = place.x;
    node.y = place.y;
    node.position = place.position;
    const auto step = [&] {
        return m_library.connection().run(
            "UPDATE nodes SET parent_id = ?, x = ?, y = ?, position = ? WHERE id = ?",
            {textOrNull(place.parent), place.x, place.y, place.position, node.id});
    };
    Result<void> done;
    if (from.parentID != place.parent && !node.path.isNull() && !node.isLinked()) {
        const auto folder = folderFor(place.parent);
        if (!folder)
            return folder.failure();
        const QString name =
            freeName(lastComponent(node.path), *folder, node.kind, m_library.filePath(node));
        done = relocate(node, *folder + u'/' + name, step, work);
    } else {
        done = write(step);
    }
    if (done)
        put(std::move(node));
    return done;
}

// For the undo of a move: false when one of them couldn't go.
bool Edits::applyPlaces(const std::map<QString, Place>& places)
{
    LongWork work(m_library);
    bool all = true;
    for (const auto& [id, place] : places) {
        const Node* node = m_library.freshNode(id);
        if (!node)
            continue;
        const QString title = node->title, problem = parentProblem(place.parent);
        auto moved =
            problem.isNull() ? moveOne(*node, place, work) : Result<void>(Failure(problem));
        if (moved)
            continue;
        logLine(u"move back: "_s + moved.failure().sentence());
        m_library.fail(problem.isNull()
                           ? u"Couldn’t move “%1”"_s.arg(title) + reasonText(moved.failure())
                           : problem);
        all = false;
    }
    return all;
}

// ---- trash ----

std::vector<QString> Edits::trash(const std::vector<QString>& ids)
{
    Q_ASSERT(onMainThread());
    if (!isReady())
        return {};
    const double at = now();
    std::map<QString, double> times;
    for (const QString& id : ids)
        times[id] = at;
    const auto trashed = trashAt(times, false);
    if (!trashed.empty()) {
        m_journal.record(change::Trashed{trashed});
        m_journal.setName(u"Move to Trash"_s);
    }
    std::vector<QString> went;
    for (const QString& id : ids)
        if (trashed.contains(id) && std::find(went.begin(), went.end(), id) == went.end())
            went.push_back(id);
    return went;
}

// Each of them with a time of its own, what lies deeper first: as they had been in the Trash before
// they were put back. Without `apart` what lies in another of them goes along with it.
std::map<QString, double> Edits::trashAt(const std::map<QString, double>& times, bool apart)
{
    std::map<QString, double> went;
    FailureCount failures;
    LongWork work(m_library);
    const auto goesWithAFolder = [&](const QString& id) {
        const auto chain = m_library.tree().ancestors(id);
        return std::any_of(chain.begin(), chain.end(), [&](const QString& above) {
            return above != id && times.contains(above) && m_library.node(above)->isLive();
        });
    };
    for (const auto& [id, at] : times)
        (void)m_library.freshNode(id);
    std::vector<std::pair<QString, double>> tops;
    for (const auto& [id, at] : times)
        if (m_library.node(id) && !m_library.isInTrash(id) && (apart || !goesWithAFolder(id)))
            tops.emplace_back(id, at);
    const auto depth = [this](const auto& top) {
        return m_library.tree().ancestors(top.first).size();
    };
    std::stable_sort(tops.begin(), tops.end(),
        [&](const auto& left, const auto& right) { return depth(left) > depth(right); });
    for (const auto& [id, at] : tops) {
        const Node node = *m_library.node(id);
        if (auto done = trashOne(node, at, work)) {
            went[id] = at;
        } else {
            logLine(u"trash: "_s + done.failure().sentence());
            failures.add(node.title, done.failure());
        }
    }
    if (failures.count() == 1)
        m_library.fail(u"Couldn’t move “%1” to the Trash. Try again."_s.arg(failures.title()));
    else if (failures.count() > 1)
        m_library.fail(u"Couldn’t move %1 items to the Trash. Try again."_s.arg(failures.count()));
    return went;
}

Result<void> Edits::trashOne(Node node, double at, LongWork& work)
{
    node.deletedAt = at;
    const auto step = [&] {
        return m_library.connection().run(
            "UPDATE nodes SET deleted_at = ? WHERE id = ?", {at, node.id});
    };
    Result<void> done;
    if (hasFile(node)) {
        const QString folder = m_library.root() + u"/.corvelle/Trash/"_s + node.id;
        const QString name = freeName(lastComponent(node.path), folder, node.kind);
        done = relocate(node, folder + u'/' + name, step, work);
        if (!done)
            QDir().rmdir(folder);
    } else {
        done = write(step);
    }
    if (done)
        put(std::move(node));
    return done;
}

// ---- put back ----

std::vector<QString> Edits::restore(const std::vector<QString>& ids)
{
    Q_ASSERT(onMainThread());
    if (!isReady())
        return {};
    m_library.readAgainIfServing();
    change::Restored restored = restoreAll(ids);
    std::vector<QString> came;
    for (const auto& [id, at] : restored.times)
        came.push_back(id);
    if (!came.empty()) {
        m_journal.record(std::move(restored));
        m_journal.setName(u"Put Back"_s);
    }
    return came;
}

change::Restored Edits::restoreAll(const std::vector<QString>& ids)
{
    change::Restored came;
    QSet<QString> linked;
    FailureCount failures;
    LongWork work(m_library);
    for (const QString& id : ids) {
        const Node* node = m_library.freshNode(id);
        if (!node || node->isLive())
            continue;
        const double at = *node->deletedAt;
        const QString title = node->title, parent = node->parentID;
        if (node->isLinked())
            linked.insert(id);
        if (auto done = restoreOne(*node, work)) {
            came.times[id] = at;
            if (m_library.node(id)->parentID != parent)
                came.parents[id] = parent;
        } else {
            logLine(u"restore: "_s + done.failure().sentence());
            failures.add(title, done.failure());
        }
    }
    if (failures.count() == 1)
        m_library.fail(u"Couldn’t put back “%1”"_s.arg(failures.title()) + failures.reason());
    else if (failures.count() > 1)
        m_library.fail(u"Couldn’t put back %1 items. Try again."_s.arg(failures.count()));
    if (!linked.isEmpty())
        emit linkedRestored(linked);
    return came;
}

Result<void> Edits::restoreOne(Node node, LongWork& work)
{
    const QString parent = node.parentID;
    const bool parentLives = m_library.node(parent) && !m_library.isInTrash(parent);
    if (!parentLives)
        node.parentID = QString();
    const bool reparented = !parent.isEmpty() && !parentLives;
    const auto step = [&]() -> Result<void> {
        SQLite& connection = m_library.connection();
        if (node.isLinked())
            if (auto done = connection.run("DELETE FROM went_away WHERE node_id = ?", {node.id});
                !done)
                return done;
        if (reparented)
            return connection.run(
                "UPDATE nodes SET deleted_at = NULL, parent_id = NULL WHERE id = ?", {node.id});
        return connection.run("UPDATE nodes SET deleted_at = NULL WHERE id = ?", {node.id});
    };
    node.deletedAt.reset();
    Result<void> done;
    const bool isOnDisk = !node.path.isNull() && !node.isLinked();
    if (isOnDisk && !hasFile(node))
        return Failure(u"its file isn’t there: "_s + node.path, ENOENT);
    if (isOnDisk && !node.path.startsWith(trashFolder) && hasCard(m_library.filePath(node)))
        return Failure(u"another card has its file: "_s + node.path, EEXIST);
    if (isOnDisk && node.path.startsWith(trashFolder)) {
        if (const QString problem = parentProblem(node.parentID); !problem.isNull())
            return Failure(problem);
        const auto folder = folderFor(node.parentID);
        if (!folder)
            return folder.failure();
        const QString name = freeName(lastComponent(node.path), *folder, node.kind);
        const QString emptied = parentPath(m_library.filePath(node));
        done = relocate(node, *folder + u'/' + name, step, work);
        if (done)
            QDir().rmdir(emptied);
    } else {
        done = write(step);
    }
    if (done)
        put(std::move(node));
    return done;
}

// For the undo of putting back: what is in the Trash belongs to its folder again.
bool Edits::storeParents(const std::map<QString, QString>& parents)
{
    const auto written = write([&]() -> Result<void> {
        for (const auto& [id, parent] : parents)
            if (auto done = m_library.connection().run(
                    "UPDATE nodes SET parent_id = ? WHERE id = ?", {textOrNull(parent), id});
                !done)
                return done;
        return {};
    });
    if (!written) {
        logLine(u"put back: "_s + written.failure().sentence());
        return false;
    }
    for (const auto& [id, parent] : parents)
        if (const Node* node = m_library.node(id)) {
            Node copy = *node;
            copy.parentID = parent;
            put(std::move(copy));
        }
    return true;
}

// ---- for good ----

bool Edits::deleteForGood(const std::vector<QString>& ids)
{
    Q_ASSERT(onMainThread());
    if (!isReady() || ids.empty())
        return false;
    LongWork work(m_library);
    SQLite& connection = m_library.connection();
    std::vector<QString> gone, files;
    const auto written = write([&]() -> Result<void> {
        // As the rows stand now: what another process has moved out of a folder doesn't go with it.
        if (auto found = collectBelow(connection, ids, gone); !found)
            return found;
        return deleteRows(connection, gone, files, work.ticks());
    });
    if (!written) {
        logLine(u"delete: "_s + written.failure().sentence());
        m_library.fail(u"Couldn’t delete these items. Try again."_s);
        return false;
    }
    m_library.tookAway(gone);
    removeFiles(files);
    return true;
}

// The ids name folders: nothing but a well-formed one may reach the disk.
void Edits::removeFiles(const std::vector<QString>& ids)
{
    std::vector<QString> paths;
    for (const QString& id : ids)
        if (!id.isEmpty() && !id.contains(u'/') && !id.startsWith(u'.'))
            for (const QString& file : ownFiles(id))
                paths.push_back(hiddenFolder(m_library.root()) + u'/' + file);
    m_removals.async([paths = std::move(paths)] {
        for (const QString& path : paths)
            (void)removeItem(path);
    });
}

} // namespace corvelle
