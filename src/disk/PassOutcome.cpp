#include "disk/PassOutcome.h"

#include "disk/DissolvedFolders.h"
#include "library/NodePaths.h"
#include "platform/FileFacts.h"
#include "platform/FileTypes.h"
#include "platform/PictureFacts.h"

#include <QFile>

#include <algorithm>

namespace corvelle {

namespace {

ArrivingItem arriving(const DiskPlan::Entry& entry)
{
    return {entry.path, entry.folder, entry.size, entry.modified, entry.inode, {}};
}

// Adds the entry and, below a folder, all that was found there. What lies in a folder comes by
// name. What `isLeftOut` is left out with all below it.
template<class Test>
void addWithContents(const DiskPlan::Scans& scans, const DiskPlan::Entry& top,
    std::vector<ArrivingItem>& items, Test isLeftOut)
{
    std::vector<const DiskPlan::Entry*> waiting = {&top};
    while (!waiting.empty()) {
        const DiskPlan::Entry* entry = waiting.back();
        waiting.pop_back();
        items.push_back(arriving(*entry));
        if (!entry->folder)
            continue;
        const auto list = scans.find(entry->path);
        if (list == scans.end())
            continue;
        const size_t first = waiting.size();
        for (const DiskPlan::Entry& child : list->second)
            if (!child.generated && !isLeftOut(child))
                waiting.push_back(&child);
        // The stack gives the last one first.
        std::sort(waiting.begin() + static_cast<std::ptrdiff_t>(first), waiting.end(),
            [](const auto* left, const auto* right) {
                return compareNaturally(left->path, right->path) > 0;
            });
    }
}

// Whether one of the rows may come to lie inside a folder that is new, or lies in one that has
// another place: the plan tells that apart from things that came and went only once these folders
// have their rows.
bool needsFoldersFirst(
    const DiskPlan::Outcome& outcome, const DiskPlan::Scans& scans, const KnownRows& rows)
{
    bool anyRemoved = false, anyNewFolder = false, anyReturns = false;
    for (const DiskPlan::Action& action : outcome.actions) {
        if (const auto* added = std::get_if<DiskPlan::Added>(&action)) {
            anyNewFolder |= added->entry.folder;
            std::vector<ArrivingItem> items;
            if (added->entry.folder && !rows.trashed.isEmpty())
                addWithContents(scans, added->entry, items, [](const auto&) { return false; });
            anyReturns |= std::any_of(items.begin(), items.end(),
                [&](const ArrivingItem& item) { return rows.trashed.contains(item.fileID); });
        } else if (const auto* move = std::get_if<DiskPlan::Moved>(&action)) {
            if (move->to.folder)
                return true;
        } else if (const auto* back = std::get_if<DiskPlan::Restored>(&action)) {
            if (back->to.folder)
                return true;
        } else {
            anyRemoved |= std::holds_alternative<DiskPlan::Removed>(action);
        }
    }
    return anyReturns || (anyRemoved && anyNewFolder);
}

// New folders come in, but for those that a row may stand for. Nothing else comes, not even out of
// the Trash, since it may be what lies in such a folder that moved; and nothing is taken for gone
// before the next look, unless something of another kind lies in its place.
void takeFoldersFirst(
    DiskPass& pass, DiskPlan::Outcome outcome, const DiskPlan::Scans& scans, const KnownRows& rows)
{
    QSet<quint64> identities(rows.trashed.keyBegin(), rows.trashed.keyEnd());
    QHash<QString, QString> paths;
    for (const DiskPlan::Known& known : rows.live) {
        paths.insert(known.id, known.path);
        if (known.inode)
            identities.insert(*known.inode);
    }
    QSet<QString> taken;
    for (const DiskPlan::Action& action : outcome.actions)
        if (const auto* added = std::get_if<DiskPlan::Added>(&action))
            taken.insert(added->entry.path);
    const auto isLeftOut = [&](const DiskPlan::Entry& entry) {
        return !entry.folder || identities.contains(entry.inode);
    };
    for (DiskPlan::Action& action : outcome.actions) {
        const auto* added = std::get_if<DiskPlan::Added>(&action);
        const auto* removed = std::get_if<DiskPlan::Removed>(&action);
        const auto* back = std::get_if<DiskPlan::Restored>(&action);
        const bool waits = added || (removed && !taken.contains(paths.value(removed->id))) ||
                           (back && !back->to.folder);
        if (added && !isLeftOut(added->entry))
            addWithContents(scans, added->entry, pass.arriving, isLeftOut);
        else if (!waits)
            pass.actions.push_back(std::move(action));
    }
    pass.lookAgain = true;
}

// Folders that came or have another place.
QSet<QString> freshFoldersOf(const DiskPlan::Outcome& outcome)
{
    QSet<QString> fresh;
    const auto take = [&](const DiskPlan::Entry& entry) {
        if (entry.folder)
            fresh.insert(entry.path);
    };
    for (const DiskPlan::Action& action : outcome.actions) {
        if (const auto* added = std::get_if<DiskPlan::Added>(&action))
            take(added->entry);
        else if (const auto* moved = std::get_if<DiskPlan::Moved>(&action))
            take(moved->to);
        else if (const auto* restored = std::get_if<DiskPlan::Restored>(&action))
            take(restored->to);
    }
    return fresh;
}

// Paths of what is taken for gone.
QSet<QString> pathsTakenForGone(const DiskPass& pass, const KnownRows& rows)
{
    QSet<QString> ids, paths;
    for (const DiskPlan::Action& action : pass.actions)
        if (const auto* removed = std::get_if<DiskPlan::Removed>(&action))
            ids.insert(removed->id);
    if (!ids.isEmpty())
        for (const DiskPlan::Known& known : rows.live)
            if (ids.contains(known.id))
                paths.insert(known.path);
    return paths;
}

// The folder of what isn't there any more; where that has gone too, also those above it, up to one
// that shows where it went.
QSet<QString> foldersThatItLeft(const DiskView& view, const QString& path)
{
    QSet<QString> folders;
    QString folder = path;
    do {
        folder = parentPath(folder);
        folders.insert(folder);
    } while (view.covers(folder) && !fileFacts(QFile::encodeName(view.absolute(folder))));
    return folders;
}

// What came in may be what a row stands for: its folder wasn't looked at, or was before it moved,
// and the row isn't known to be missing yet. Inside a new folder, it may also be an item of another
// linked folder, which the next look follows.
Result<void> leaveOutMoving(
    DiskPass& pass, SQLite& connection, const DiskView& view, const KnownRows& rows)
{
    QSet<quint64> identities;
    for (const ArrivingItem& item : pass.arriving)
        identities.insert(item.fileID);
    if (identities.isEmpty())
        return {};
    const QSet<QString> gone = pathsTakenForGone(pass, rows);
    const auto isTakenForGone = [&](QString path) {
        while (!path.isEmpty() && !gone.contains(path))
            path = parentPath(path);
        return !path.isEmpty();
    };
    QSet<quint64> moving;
    const auto read = connection.each("SELECT id, path, file_id, kind FROM nodes WHERE "
                                      "file_id IS NOT NULL AND kind IN ('folder', 'file')",
        {}, [&](const SQLRow& row) {
            const auto identity = static_cast<quint64>(row.integer(2));
            if (!identities.contains(identity))
                return;
            const QString path = row.text(1);
            const bool isHere = view.covers(path);
            const bool isElsewhere = view.isLinked() && !isHere && path.startsWith(u'/');
            if ((!isHere && !isElsewhere) || isTakenForGone(path))
                return;
            // A look at another linked folder may just have taken it there.
            const bool isTrashed = isRowInTrash(connection, row.text(0));
            if (isTrashed && (!view.isLinked() || rows.trashed.contains(identity)))
                return;
            const auto facts = fileFacts(QFile::encodeName(view.absolute(path)));
            if (facts && (facts->kind == FileFacts::Kind::Folder) == (row.utf8(3) == "folder"))
                return; // another link to it, or the card stays with its name
            moving.insert(identity);
            if (isHere && !isTrashed)
                pass.lookAlso.unite(foldersThatItLeft(view, path));
        });
    if (!read)
        return read;
    QString leftOut; // a folder; it comes before its contents
    std::erase_if(pass.arriving, [&](const ArrivingItem& item) {
        if (!leftOut.isEmpty() && liesBelow(item.path, leftOut))
            return true;
        const bool isMoving = moving.contains(item.fileID);
        if (isMoving && item.folder)
            leftOut = item.path;
        return isMoving;
    });
    pass.lookAgain |= !moving.isEmpty();
    return {};
}

} // namespace

Result<void> addKnownBelow(SQLite& connection, const QString& folder,
    std::vector<DiskPlan::Known>& known, QSet<QString>& ids, const QHash<QString, QString>* folders)
{
    return connection.each(
        "SELECT id, kind, path, file_id, byte_size, file_modified, parent_id FROM nodes WHERE "
        "path >= ?1 || '/' AND path < ?1 || '0' AND deleted_at IS NULL AND kind IN ('folder', "
        "'file')",
        {folder}, [&](const SQLRow& row) {
            DiskPlan::Known each;
            each.id = row.text(0);
            if (ids.contains(each.id))
                return;
            each.folder = row.utf8(1) == "folder";
            each.path = row.text(2);
            if (folders) {
                const auto parent = folders->constFind(parentPath(each.path));
                if (parent == folders->cend() || *parent != row.text(6))
                    return;
            }
            if (const auto id = row.optionalInteger(3))
                each.inode = static_cast<quint64>(*id);
            each.size = row.optionalInteger(4);
            each.modified = row.date(5);
            ids.insert(each.id);
            known.push_back(std::move(each));
        });
}

Result<void> takeOutcome(DiskPass& pass, SQLite& connection, const DiskView& view,
    DiskPlan::Outcome outcome, const DiskPlan::Scans& scans, const KnownRows& rows, Round round)
{
    if (round == Round::Another && needsFoldersFirst(outcome, scans, rows)) {
        takeFoldersFirst(pass, std::move(outcome), scans, rows);
        return leaveOutMoving(pass, connection, view, rows);
    }
    std::vector<DiskPlan::Entry>
        added; // none lies in another: what lies in a new folder comes with it
    for (DiskPlan::Action& action : outcome.actions) {
        if (auto* addition = std::get_if<DiskPlan::Added>(&action))
            added.push_back(std::move(addition->entry));
        else
            pass.actions.push_back(std::move(action));
    }
    std::sort(added.begin(), added.end(), [](const auto& left, const auto& right) {
        return compareNaturally(left.path, right.path) < 0;
    });
    for (const DiskPlan::Entry& entry : added)
        addWithContents(scans, entry, pass.arriving, [](const auto&) { return false; });
    return round == Round::Another ? leaveOutMoving(pass, connection, view, rows) : Result<void>();
}

void measurePictures(DiskPass& pass, const DiskView& view)
{
    FileTypes types;
    const auto measure = [&](const QString& id, const DiskPlan::Entry& entry) {
        if (!entry.folder && types.mimeOf(lastComponent(entry.path)).startsWith(u"image/"))
            if (const auto size = pictureSize(view.absolute(entry.path)))
                pass.pictureSizes.insert(id, *size);
    };
    for (const DiskPlan::Action& action : pass.actions) {
        if (const auto* change = std::get_if<DiskPlan::Changed>(&action))
            measure(change->id, change->entry);
        else if (const auto* move = std::get_if<DiskPlan::Moved>(&action))
            measure(move->id, move->to);
        else if (const auto* back = std::get_if<DiskPlan::Restored>(&action))
            measure(back->id, back->to);
    }
}

Result<void> judgeStructure(DiskPass& pass, SQLite& connection, const DiskView& view,
    DiskPlan::Outcome outcome, DiskPlan::Scans& scans, KnownRows& rows, Round round)
{
    QHash<QString, QString> paths;
    QSet<QString> ids;
    for (const DiskPlan::Known& known : rows.live) {
        ids.insert(known.id);
        if (known.folder)
            paths.insert(known.id, known.path);
    }
    // What lay in a folder that is gone or moved may have gone elsewhere before.
    for (const DiskPlan::Action& action : outcome.actions) {
        const auto* removed = std::get_if<DiskPlan::Removed>(&action);
        const auto* moved = std::get_if<DiskPlan::Moved>(&action);
        const auto left = paths.constFind(removed ? removed->id : moved ? moved->id : QString());
        if (left == paths.cend())
            continue;
        if (auto read = addKnownBelow(connection, *left, rows.live, ids); !read)
            return read;
    }
    pass.freshFolders = freshFoldersOf(outcome);
    scans.merge(view.trees(pass.freshFolders));
    DiskPlan::followOutOfRemovedFolders(outcome, scans, rows.live, pass.nameCase);
    return takeOutcome(pass, connection, view, std::move(outcome), scans, rows, round);
}

} // namespace corvelle
