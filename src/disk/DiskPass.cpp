#include "disk/DiskPass.h"

#include "disk/DiskScan.h"
#include "disk/DissolvedFolders.h"
#include "disk/PassOutcome.h"
#include "platform/FileFacts.h"
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
Result<DiskPlan::Scans> scanSpaces(
    SQLite& connection, const QString& root, DiskPass& pass, std::stop_token stop)
{
    const auto spaces = readSpaces(connection);
    if (!spaces)
        return spaces.failure();
    DiskPlan::Scans scans;
    for (const auto& [id, folder] : *spaces) {
        const auto facts = fileFacts(QFile::encodeName(root + u'/' + folder));
        const bool isFolder = facts && facts->kind == FileFacts::Kind::Folder;
        auto found =
            isFolder ? DiskPlan::scanTree(root, std::span(&folder, 1), stop) : DiskPlan::Scans();
        const auto top = found.find(folder);
        if (!isFolder || (top != found.end() &&
                             isLeftBehind(connection, id, facts->identity, top->second.empty()))) {
            pass.away.insert(folder);
            continue;
        }
        if (top == found.end())
            continue; // it can't be read
        pass.folders.insert(pathKey(folder, pass.nameCase), QString());
        scans.merge(found);
    }
    return scans;
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
    DiskPass pass;
    for (const auto& [id, folder] : *spaces)
        if (request.folders.contains(folder) && mayNotBeJudged(*connection, root, id, folder))
            pass.away.insert(folder);
    request.folders.subtract(pass.away);
    pass.nameCase = memory.nameCase;
    pass.folders = std::move(memory.folders);
    const DiskView view = DiskView::ofLibrary(root, stop);
    auto scans = view.folders(request.folders);
    scans.merge(view.trees(request.trees));

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
    else if (auto judged =
                 judgeStructure(pass, *connection, view, std::move(outcome), scans, rows, round);
             !judged)
        return judged.failure();
    measurePictures(pass, view);
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
    auto scans = scanSpaces(*connection, root, pass, stop);
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
                [&](const QString& top) { return liesBelow(row.path, top); }))
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
    DiskPlan::followOutOfRemovedFolders(outcome, *scans, known.live, pass.nameCase);
    const DiskView view = DiskView::ofLibrary(root, stop);
    if (auto taken = takeOutcome(pass, *connection, view, std::move(outcome), *scans, known, round);
        !taken)
        return taken.failure();
    measurePictures(pass, view);
    return pass;
}

} // namespace corvelle
