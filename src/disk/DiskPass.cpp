#include "disk/DiskPass.h"

#include "disk/DiskScan.h"
#include "disk/DissolvedFolders.h"
#include "platform/FileFacts.h"
#include "platform/FileTypes.h"
#include "platform/PictureFacts.h"
#include "platform/Volume.h"
#include "store/Schema.h"

#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// A row as far as a pass needs it.
struct Row
{
    QString id, parentID, path;
    bool folder = false, file = false, deleted = false;
    std::optional<quint64> fileID;
    std::optional<qint64> size;
    std::optional<double> modified;
};

Result<std::vector<Row>> readRows(SQLite& connection)
{
    return connection.query("SELECT id, parent_id, kind, path, deleted_at, file_id, byte_size, "
                            "file_modified FROM nodes",
        {}, [](const SQLRow& row) {
            Row result;
            result.id = row.text(0);
            result.parentID = row.text(1);
            const QByteArrayView kind = row.utf8(2);
            result.folder = kind == "folder";
            result.file = !result.folder && kind != "page" && kind != "link";
            result.path = row.text(3);
            result.deleted = !row.isNull(4);
            if (const auto id = row.optionalInteger(5))
                result.fileID = static_cast<quint64>(*id);
            result.size = row.optionalInteger(6);
            result.modified = row.date(7);
            return result;
        });
}

// Which rows are in the Trash, themselves or by a folder above them.
class TrashTest
{
public:
    explicit TrashTest(const std::vector<Row>& rows)
        : m_rows(rows)
        , m_known(rows.size(), Unknown)
    {
        m_places.reserve(static_cast<qsizetype>(rows.size()));
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i].folder)
                m_places.insert(rows[i].id, i);
    }

    bool isInTrash(size_t row)
    {
        std::vector<size_t> chain;
        State state = Live;
        for (size_t at = row;;) {
            if (m_known[at] != Unknown) {
                state = m_known[at];
                break;
            }
            chain.push_back(at);
            if (m_rows[at].deleted) {
                state = Trashed;
                break;
            }
            m_known[at] = Live; // also ends a circle
            const auto parent = m_places.constFind(m_rows[at].parentID);
            if (parent == m_places.cend())
                break;
            at = *parent;
        }
        for (const size_t at : chain)
            m_known[at] = state;
        return state == Trashed;
    }

private:
    enum State : char { Unknown, Live, Trashed };
    const std::vector<Row>& m_rows;
    std::vector<State> m_known;
    QHash<QString, size_t> m_places;
};

bool liesIn(const QString& path, const QString& folder)
{
    return path.size() > folder.size() && path[folder.size()] == u'/' && path.startsWith(folder);
}

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

Result<std::vector<std::pair<QString, QString>>> readSpaces(SQLite& connection)
{
    return connection.query("SELECT id, folder FROM spaces ORDER BY created_at", {},
        [](const SQLRow& row) { return std::pair(row.text(0), row.text(1)); });
}

// Whether the space's folder is another one than the one we knew and has nothing in it: then a disk
// went away and left an empty place behind, which says nothing about the files.
bool isLeftBehind(SQLite& connection, const QString& spaceID, quint64 identity, bool isEmpty)
{
    const QString key = u"spaceFolder."_s + spaceID;
    const QString seen = QString::number(identity);
    const auto known = setting(connection, key);
    if (known && *known != seen && isEmpty)
        return true;
    if (known != seen)
        (void)setSetting(connection, key, seen);
    return false;
}

// Whether nothing may be concluded from what a space's folder holds now.
bool mayNotBeJudged(
    SQLite& connection, const QString& root, const QString& spaceID, const QString& folder)
{
    const auto facts = fileFacts(QFile::encodeName(root + u'/' + folder));
    if (!facts || facts->kind != FileFacts::Kind::Folder)
        return true;
    const auto scan = DiskPlan::scanFolders(root, std::span(&folder, 1));
    const auto top = scan.find(folder);
    return top == scan.end() ||
           isLeftBehind(connection, spaceID, facts->identity, top->second.empty());
}

// The top folders that a pass may judge, scanned.
Result<DiskPlan::Scans> scanSpaces(SQLite& connection, const QString& root,
    QHash<QString, QString>& folders, NameCase nameCase, std::stop_token stop)
{
    const auto spaces = readSpaces(connection);
    if (!spaces)
        return spaces.failure();
    DiskPlan::Scans scans;
    for (const auto& [id, folder] : *spaces) {
        const auto facts = fileFacts(QFile::encodeName(root + u'/' + folder));
        if (!facts || facts->kind != FileFacts::Kind::Folder)
            continue;
        auto found = DiskPlan::scanTree(root, std::span(&folder, 1), stop);
        const auto top = found.find(folder);
        if (top == found.end() ||
            isLeftBehind(connection, id, facts->identity, top->second.empty()))
            continue;
        folders.insert(pathKey(folder, nameCase), QString());
        scans.merge(found);
    }
    return scans;
}

void measurePictures(DiskPass& pass, const QString& root)
{
    FileTypes types;
    const auto measure = [&](const QString& id, const DiskPlan::Entry& entry) {
        if (!entry.folder && types.mimeOf(lastComponent(entry.path)).startsWith(u"image/"))
            if (const auto size = pictureSize(root + u'/' + entry.path))
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

// The rows that a pass compares with the disk.
struct KnownRows
{
    std::vector<DiskPlan::Known> live;
    QHash<quint64, QString> trashed; // by identity
};

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

// New folders come in, but for those that a row may stand for. Nothing else comes, and nothing is
// taken for gone before the next look, unless something of another kind lies in its place.
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
        if (added && !isLeftOut(added->entry))
            addWithContents(scans, added->entry, pass.arriving, isLeftOut);
        else if (!added && (!removed || taken.contains(paths.value(removed->id))))
            pass.actions.push_back(std::move(action));
    }
    pass.lookAgain = true;
}

void takeOutcome(DiskPass& pass, DiskPlan::Outcome outcome, const DiskPlan::Scans& scans,
    const KnownRows& rows, Round round)
{
    if (round == Round::Another && needsFoldersFirst(outcome, scans, rows)) {
        takeFoldersFirst(pass, std::move(outcome), scans, rows);
        return;
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
}

// What lies in the Trash, by identity; what lies in a folder there as well.
Result<QHash<quint64, QString>> readTrashed(SQLite& connection)
{
    QHash<quint64, QString> trashed;
    const auto read =
        connection.each("WITH RECURSIVE trashed(id, space) AS (SELECT id, space_id FROM nodes "
                        "WHERE deleted_at IS NOT NULL UNION SELECT n.id, n.space_id FROM trashed t "
                        "JOIN nodes n ON n.space_id = t.space AND n.parent_id = t.id)\n"
                        "SELECT n.id, n.file_id FROM nodes n JOIN trashed t ON t.id = n.id "
                        "WHERE n.file_id IS NOT NULL AND n.path NOT LIKE '/%'",
            {}, [&](const SQLRow& row) {
                trashed.insert(static_cast<quint64>(row.integer(1)), row.text(0));
            });
    if (!read)
        return read.failure();
    return trashed;
}

// All that lay below a folder.
Result<void> addKnownBelow(SQLite& connection, const QString& folder,
    std::vector<DiskPlan::Known>& known, QSet<QString>& ids)
{
    return connection.each(
        "SELECT id, kind, path, file_id, byte_size, file_modified FROM nodes WHERE "
        "path >= ?1 || '/' AND path < ?1 || '0' AND deleted_at IS NULL AND kind IN ('folder', "
        "'file')",
        {folder}, [&](const SQLRow& row) {
            DiskPlan::Known each;
            each.id = row.text(0);
            if (ids.contains(each.id))
                return;
            ids.insert(each.id);
            each.folder = row.utf8(1) == "folder";
            each.path = row.text(2);
            if (const auto id = row.optionalInteger(3))
                each.inode = static_cast<quint64>(*id);
            each.size = row.optionalInteger(4);
            each.modified = row.date(5);
            known.push_back(std::move(each));
        });
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

std::vector<QString> listOf(const QSet<QString>& set)
{
    std::vector<QString> list(set.begin(), set.end());
    std::sort(list.begin(), list.end());
    return list;
}

Result<void> judgeStructure(DiskPass& pass, SQLite& connection, const QString& root,
    DiskPlan::Outcome outcome, DiskPlan::Scans& scans, KnownRows& rows, Round round,
    std::stop_token stop)
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
    DiskPlan::followOutOfRemovedFolders(outcome, rows.live, pass.nameCase);
    pass.freshFolders = freshFoldersOf(outcome);
    scans.merge(DiskPlan::scanTree(root, listOf(pass.freshFolders), stop));
    takeOutcome(pass, std::move(outcome), scans, rows, round);
    return {};
}

} // namespace

void DiskRequest::unite(const DiskRequest& other)
{
    everything |= other.everything;
    structural |= other.structural;
    folders.unite(other.folders);
    trees.unite(other.trees);
}

Result<DiskPass> lookAtFolders(
    const QString& root, DiskRequest request, DiskMemory memory, Round round, std::stop_token stop)
{
    auto connection = SQLite::open(databasePath(root));
    if (!connection)
        return connection.failure();
    const auto spaces = readSpaces(*connection);
    if (!spaces)
        return spaces.failure();
    for (const auto& [id, folder] : *spaces)
        if (request.folders.contains(folder) && mayNotBeJudged(*connection, root, id, folder))
            request.folders.remove(folder);
    DiskPass pass;
    pass.nameCase = memory.nameCase;
    pass.folders = std::move(memory.folders);
    auto scans = DiskPlan::scanFolders(root, listOf(request.folders), stop);
    scans.merge(DiskPlan::scanTree(root, listOf(request.trees), stop));

    KnownRows rows{std::move(memory.known), {}};
    if (request.structural) {
        auto trashed = readTrashed(*connection);
        if (!trashed)
            return trashed.failure();
        rows.trashed = std::move(*trashed);
    }
    if (stop.stop_requested())
        return Failure(u"stopped"_s);
    auto outcome = DiskPlan::compare(scans, rows.live, rows.trashed,
        QSet<QString>(pass.folders.keyBegin(), pass.folders.keyEnd()),
        request.structural ? DiskPlan::Pass::Structural : DiskPlan::Pass::Incremental,
        pass.nameCase);
    pass.again = std::move(outcome.again);
    if (!request.structural)
        pass.actions = std::move(outcome.actions);
    else if (auto judged = judgeStructure(
                 pass, *connection, root, std::move(outcome), scans, rows, round, stop);
             !judged)
        return judged.failure();
    measurePictures(pass, root);
    return pass;
}

Result<DiskPass> lookAtDisk(const QString& root, Round round, std::stop_token stop)
{
    auto connection = SQLite::open(databasePath(root));
    if (!connection)
        return connection.failure();
    DiskPass pass;
    pass.nameCase = probeNameCase(hiddenFolder(root));

    // The disk first: what is made between the two reads is then rather looked for again than taken
    // for gone.
    auto scans = scanSpaces(*connection, root, pass.folders, pass.nameCase, stop);
    if (!scans)
        return scans.failure();
    const auto rows = readRows(*connection);
    if (!rows)
        return rows.failure();
    const QStringList tops = [&] {
        QStringList names;
        for (const auto& [path, entries] : *scans)
            if (!path.contains(u'/'))
                names.append(path);
        return names;
    }();

    TrashTest trash(*rows);
    KnownRows known;
    known.live.reserve(rows->size());
    for (size_t i = 0; i < rows->size(); ++i) {
        const Row& row = (*rows)[i];
        if ((!row.folder && !row.file) || row.path.isEmpty() || row.path.startsWith(u'/'))
            continue;
        if (trash.isInTrash(i)) {
            if (row.fileID)
                known.trashed.insert(*row.fileID, row.id);
            continue;
        }
        if (std::none_of(tops.begin(), tops.end(),
                [&](const QString& top) { return liesIn(row.path, top); }))
            continue;
        known.live.push_back({row.id, row.path, row.folder, row.fileID, row.size, row.modified});
        if (row.folder)
            pass.folders.insert(pathKey(row.path, pass.nameCase), row.id);
    }
    if (stop.stop_requested())
        return Failure(u"stopped"_s);

    const QSet<QString> folderKeys(pass.folders.keyBegin(), pass.folders.keyEnd());
    auto outcome = DiskPlan::compare(
        *scans, known.live, known.trashed, folderKeys, DiskPlan::Pass::Structural, pass.nameCase);
    DiskPlan::followOutOfRemovedFolders(outcome, known.live, pass.nameCase);
    takeOutcome(pass, std::move(outcome), *scans, known, round);
    measurePictures(pass, root);
    return pass;
}

} // namespace corvelle
