#include "disk/LinkedPass.h"

#include "base/Log.h"
#include "disk/DiskScan.h"
#include "disk/PassOutcome.h"
#include "library/LinkBookmarks.h"
#include "library/NodePaths.h"
#include "platform/Directory.h"
#include "platform/FileFacts.h"
#include "platform/Volume.h"
#include "store/Schema.h"

#include <QFile>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// What the sync itself took to the Trash, which comes back by itself when its file does. What the
// person put there doesn't.
struct WentAway
{
    QHash<quint64, QString> byIdentity;
    QHash<std::pair<QString, bool>, QString> byPath; // and whether it is a folder
};

Result<WentAway> readWentAway(SQLite& connection)
{
    WentAway wentAway;
    // Times that lie closer together are the same: a time that was written twice is one going away.
    const auto read = connection.each(
        "WITH RECURSIVE gone(id, space) AS (SELECT n.id, n.space_id FROM went_away w JOIN nodes n "
        "ON n.id = w.node_id WHERE n.deleted_at IS NOT NULL AND abs(n.deleted_at - w.at) < 0.001 "
        "UNION SELECT n.id, n.space_id FROM gone g JOIN nodes n ON n.space_id = g.space AND "
        "n.parent_id = g.id AND n.deleted_at IS NULL)\n"
        "SELECT n.id, n.file_id, n.path, n.kind FROM nodes n JOIN gone g ON g.id = n.id "
        "WHERE n.path LIKE '/%'",
        {}, [&](const SQLRow& row) {
            if (!row.isNull(1))
                wentAway.byIdentity.insert(static_cast<quint64>(row.integer(1)), row.text(0));
            wentAway.byPath.insert({row.text(2), row.utf8(3) == "folder"}, row.text(0));
        });
    if (!read)
        return read.failure();
    return wentAway;
}

bool hasRowsBelow(SQLite& connection, const QString& folder)
{
    bool has = false;
    (void)connection.each("SELECT 1 FROM nodes WHERE path >= ?1 || '/' AND path < ?1 || '0' AND "
                          "deleted_at IS NULL LIMIT 1",
        {folder}, [&](const SQLRow&) { has = true; });
    return has;
}

bool hasLiveRow(SQLite& connection, const QString& path)
{
    bool has = false;
    (void)connection.each("SELECT id FROM nodes WHERE path = ?", {path},
        [&](const SQLRow& row) { has |= !isRowInTrash(connection, row.text(0)); });
    return has;
}

// Renamed or not, what the person put there by itself doesn't come back as another card.
QSet<quint64> trashedByThePerson(SQLite& connection)
{
    QSet<quint64> identities;
    (void)connection.each(
        "SELECT n.file_id FROM nodes n LEFT JOIN went_away w ON w.node_id = n.id AND "
        "abs(n.deleted_at - w.at) < 0.001 WHERE n.deleted_at IS NOT NULL AND n.file_id IS NOT NULL "
        "AND n.path LIKE '/%' AND w.node_id IS NULL",
        {}, [&](const SQLRow& row) { identities.insert(static_cast<quint64>(row.integer(0))); });
    return identities;
}

// Whether the row came with the folder that it lies in, and wasn't linked by itself.
bool belongsToItsFolder(SQLite& connection, const QString& id, const QString& path)
{
    bool does = false;
    (void)connection.each(
        "SELECT 1 FROM nodes n JOIN nodes p ON p.id = n.parent_id WHERE n.id = ? AND p.path = ?",
        {id, parentPath(path)}, [&](const SQLRow&) { does = true; });
    return does;
}

// Whether a card keeps its place: a file at its path stays its own, whichever it is.
bool isOfKindAtPath(const QString& path, bool folder)
{
    const auto facts = fileFacts(QFile::encodeName(path));
    return facts && (facts->kind == FileFacts::Kind::Folder) == folder;
}

// One look, step by step.
class LinkedLook
{
public:
    LinkedLook(LinkedQuery query, SQLite& connection, Round round, std::stop_token stop)
        : m_query(std::move(query))
        , m_connection(connection)
        , m_round(round)
        , m_view(DiskView::ofLinked(m_query.root, m_query.library, std::move(stop)))
    {}

    Result<LinkedFinding> run()
    {
        if (m_query.isAway)
            return allAway();
        scan();
        if (auto done = readKnown(); !done)
            return done.failure();
        findPlacesLeftBehind();
        if (auto done = leaveOutForgotten(); !done)
            return done.failure();
        if (m_query.isFolder && !m_found.isAway)
            if (auto done = compare(); !done)
                return done.failure();
        if (m_view.isStopped())
            return Failure(u"stopped"_s);
        lookAtTops();
        findSought();
        followOriginals();
        measurePictures(m_found.pass, m_view);
        return std::move(m_found);
    }

private:
    LinkedFinding allAway() const;
    void scan();
    Result<void> readKnown();
    void findPlacesLeftBehind();
    bool isLeftBehind(const DiskPlan::Known& folder, quint64 identity);
    Result<void> leaveOutForgotten();
    void leaveOut(const QString& path);
    Result<void> compare();
    void rekeyFolders();
    void putBack(const WentAway& wentAway);
    void leaveOutCardsElsewhere();
    bool hasCard(const DiskPlan::Entry& entry);
    Result<void> followFromElsewhere();
    void lookAtTops();
    void lookAtTop(const DiskPlan::Known& top);
    void findSought();
    void followOriginals();
    void noteKnownPlaces(std::span<const DiskPlan::Known> known);

    LinkedQuery m_query;
    SQLite& m_connection;
    const Round m_round;
    const DiskView m_view;
    DiskPlan::Scans m_scans;
    DiskPlan::Outcome m_outcome;
    QSet<QString> m_replaced; // folders in whose place others stand
    LinkedFinding m_found;
};

LinkedFinding LinkedLook::allAway() const
{
    LinkedFinding found;
    found.isAway = true;
    for (const DiskPlan::Known& top : m_query.tops)
        found.gone.insert(top.id);
    return found;
}

void LinkedLook::scan()
{
    const auto facts = fileFacts(QFile::encodeName(m_query.root));
    m_found.isAway = !facts || facts->kind != FileFacts::Kind::Folder;
    if (m_found.isAway)
        return;
    m_found.identity = facts->identity;
    const QSet<QString> root{m_query.root};
    const LinkedRequest& request = m_query.request;
    if (!m_query.isFolder) {
        m_scans = m_view.folders(root);
    } else if (request.isEverywhere()) {
        m_scans = m_view.trees(root);
    } else {
        m_scans = m_view.folders(request.folders);
        m_scans.merge(m_view.trees(request.trees));
    }
}

// What a whole linked folder holds is read here: to ask the memory would hold up the window.
Result<void> LinkedLook::readKnown()
{
    if (!m_query.isFolder || !m_query.request.isEverywhere() || m_found.isAway)
        return {};
    QSet<QString> ids;
    m_query.memory.known.clear();
    return addKnownBelow(
        m_connection, m_query.root, m_query.memory.known, ids, &m_query.memory.folders);
}

// An empty folder that isn't the one we knew is what a disk leaves behind. Another one that holds
// something is to be looked through.
bool LinkedLook::isLeftBehind(const DiskPlan::Known& folder, quint64 identity)
{
    if (!folder.inode || *folder.inode == identity)
        return false;
    const auto known = m_scans.find(folder.path);
    const DiskPlan::Scans inside =
        known == m_scans.end() ? m_view.folders({folder.path}) : DiskPlan::Scans();
    const auto contents = known == m_scans.end() ? inside.find(folder.path) : known;
    if (known == m_scans.end() && contents == inside.end())
        return false;
    if (contents->second.empty())
        return hasRowsBelow(m_connection, folder.path);
    if (known == m_scans.end())
        m_replaced.insert(folder.path);
    return false;
}

void LinkedLook::findPlacesLeftBehind()
{
    if (!m_query.isFolder || m_found.isAway)
        return;
    for (const DiskPlan::Known& top : m_query.tops) {
        if (top.path != m_query.root)
            continue;
        const auto facts = fileFacts(QFile::encodeName(top.path));
        if (!facts || isLeftBehind(top, facts->identity)) {
            m_found.isAway = true;
            m_scans.clear();
            return;
        }
    }
    QHash<QString, quint64> folders;
    for (const auto& [path, entries] : m_scans)
        for (const DiskPlan::Entry& entry : entries)
            if (entry.folder)
                folders.insert(entry.path, entry.inode);
    for (const DiskPlan::Known& known : m_query.memory.known)
        if (known.folder && folders.contains(known.path) &&
            isLeftBehind(known, folders.value(known.path)))
            m_found.awayBelow.append(known.path);
    // Neither what lay in it nor the folder itself is looked at: it keeps the identity that the
    // disk has when it comes back.
    const QSet<QString> away(m_found.awayBelow.begin(), m_found.awayBelow.end());
    for (const QString& path : away) {
        m_scans.erase(path);
        std::erase_if(m_query.memory.known,
            [&](const DiskPlan::Known& known) { return liesBelow(known.path, path); });
    }
    for (DiskPlan::Known& known : m_query.memory.known)
        if (away.contains(known.path))
            known.inode = folders.value(known.path);
}

void LinkedLook::leaveOut(const QString& path)
{
    if (const auto above = m_scans.find(parentPath(path)); above != m_scans.end())
        std::erase_if(
            above->second, [&](const DiskPlan::Entry& entry) { return entry.path == path; });
    m_scans.erase(path);
    for (auto below = m_scans.lower_bound(path + u'/');
         below != m_scans.end() && below->first.startsWith(path + u'/');)
        below = m_scans.erase(below);
}

// What was deleted for good doesn't come back by a look.
Result<void> LinkedLook::leaveOutForgotten()
{
    return m_connection.each(
        "SELECT path FROM forgotten_links WHERE path >= ?1 || '/' AND path < ?1 || '0'",
        {m_query.root}, [this](const SQLRow& row) { leaveOut(row.text(0)); });
}

// The index compares names exactly; this volume may not.
void LinkedLook::rekeyFolders()
{
    DiskPass& pass = m_found.pass;
    pass.nameCase = lookUpNameCase(m_query.root);
    if (pass.nameCase == NameCase::Kept) {
        pass.folders = std::move(m_query.memory.folders);
        return;
    }
    const auto& folders = m_query.memory.folders;
    for (auto folder = folders.cbegin(); folder != folders.cend(); ++folder)
        pass.folders.insert(pathKey(folder.key(), pass.nameCase), folder.value());
}

Result<void> LinkedLook::compare()
{
    rekeyFolders();
    DiskPass& pass = m_found.pass;
    KnownRows rows{m_query.memory.known, {}};
    m_outcome = DiskPlan::compare(m_scans, rows.live, rows.trashed,
        QSet<QString>(pass.folders.keyBegin(), pass.folders.keyEnd()), DiskPlan::Pass::Structural,
        pass.nameCase);
    if (auto followed = followFromElsewhere(); !followed)
        return followed;
    // Read after the other folders' items: a look at the folder that one left may have taken it to
    // the Trash by now.
    auto wentAway = readWentAway(m_connection);
    if (!wentAway)
        return wentAway.failure();
    putBack(*wentAway);
    rows.trashed = std::move(wentAway->byIdentity);
    leaveOutCardsElsewhere();
    auto judged =
        judgeStructure(pass, m_connection, m_view, std::move(m_outcome), m_scans, rows, m_round);
    noteKnownPlaces(rows.live);
    pass.freshFolders.unite(m_replaced);
    pass.lookAgain |= !m_replaced.isEmpty();
    return judged;
}

void LinkedLook::noteKnownPlaces(std::span<const DiskPlan::Known> known)
{
    DiskPass& pass = m_found.pass;
    QSet<QString> leaving;
    for (const DiskPlan::Action& action : pass.actions) {
        if (const auto* moved = std::get_if<DiskPlan::Moved>(&action))
            leaving.insert(moved->id);
        else if (const auto* removed = std::get_if<DiskPlan::Removed>(&action))
            leaving.insert(removed->id);
    }
    if (leaving.isEmpty())
        return;
    for (const DiskPlan::Known& each : known)
        if (leaving.contains(each.id))
            pass.knownAt.insert(each.id, each.path);
}

// By identity first; disks without lasting ones give a file back as another one.
void LinkedLook::putBack(const WentAway& wentAway)
{
    QSet<QString> back; // further links to the same file are new
    const auto putBackBy = [&](auto idOf) {
        for (DiskPlan::Action& action : m_outcome.actions) {
            const auto* added = std::get_if<DiskPlan::Added>(&action);
            const QString id = added ? idOf(added->entry) : QString();
            if (id.isEmpty() || back.contains(id))
                continue;
            back.insert(id);
            action = DiskPlan::Restored{id, DiskPlan::Entry(added->entry)};
        }
    };
    putBackBy([&](const DiskPlan::Entry& entry) { return wentAway.byIdentity.value(entry.inode); });
    putBackBy([&](const DiskPlan::Entry& entry) {
        return wentAway.byPath.value({entry.path, entry.folder});
    });
}

// A file that was linked by itself keeps its own card; the nearer of two linked folders keeps what
// lies in both. What the person put into the Trash is not brought back as another card, unless the
// folder around it was, and then linked anew.
void LinkedLook::leaveOutCardsElsewhere()
{
    std::optional<QSet<quint64>> trashed;
    std::erase_if(m_outcome.actions, [&](const DiskPlan::Action& action) {
        const auto* added = std::get_if<DiskPlan::Added>(&action);
        if (!added)
            return false;
        if (!trashed)
            trashed = trashedByThePerson(m_connection);
        return trashed->contains(added->entry.inode) || hasCard(added->entry);
    });
}

bool LinkedLook::hasCard(const DiskPlan::Entry& entry)
{
    struct Row
    {
        QString id, parentID;
        bool isTrashed = false;
    };
    const auto rows = m_connection.query(
        "SELECT id, parent_id, deleted_at FROM nodes WHERE path = ?1 AND (kind = 'folder') = ?2",
        {entry.path, entry.folder ? 1 : 0}, [](const SQLRow& row) {
            return Row{row.text(0), row.text(1), !row.isNull(2)};
        });
    const DiskPass& pass = m_found.pass;
    const QString folder = pass.folders.value(pathKey(parentPath(entry.path), pass.nameCase));
    return !rows || std::any_of(rows->begin(), rows->end(), [&](const Row& row) {
        return row.isTrashed || row.parentID == folder || !isRowInTrash(m_connection, row.id);
    });
}

// What came in may be an item of another linked folder, or one that was linked by itself from
// within this one.
Result<void> LinkedLook::followFromElsewhere()
{
    QHash<quint64, DiskPlan::Action*> added;
    for (DiskPlan::Action& action : m_outcome.actions)
        if (const auto* addition = std::get_if<DiskPlan::Added>(&action)) {
            const quint64 identity = addition->entry.inode;
            added.insert(identity, added.contains(identity) ? nullptr : &action);
        }
    if (added.isEmpty())
        return {};
    return m_connection.each(
        "SELECT id, path, kind, file_id FROM nodes WHERE path >= '/' AND path < '0' AND "
        "deleted_at IS NULL AND file_id IS NOT NULL AND kind IN ('folder', 'file')",
        {}, [&](const SQLRow& row) {
            const auto identity = static_cast<quint64>(row.integer(3));
            DiskPlan::Action* action = added.value(identity);
            const auto* addition = action ? std::get_if<DiskPlan::Added>(action) : nullptr;
            const QString path = row.text(1);
            if (!addition || addition->entry.folder != (row.utf8(2) == "folder") ||
                isOfKindAtPath(path, addition->entry.folder) ||
                isRowInTrash(m_connection, row.text(0)))
                return;
            if (liesBelow(path, m_query.root) &&
                belongsToItsFolder(m_connection, row.text(0), path))
                return; // what this look didn't cover, a wider one follows
            *action = DiskPlan::Moved{row.text(0), DiskPlan::Entry(addition->entry)};
            m_found.pass.knownAt.insert(row.text(0), path);
        });
}

// ---- items that were linked by themselves ----

void LinkedLook::lookAtTops()
{
    for (const DiskPlan::Known& top : m_query.tops)
        lookAtTop(top);
}

void LinkedLook::lookAtTop(const DiskPlan::Known& top)
{
    const auto entry = DiskPlan::entry(top.path, top.path, DiskPlan::NameRules::Ignore);
    const bool isAway = m_found.isAway && top.path == m_query.root;
    if (isAway || !entry || entry->folder != top.folder) {
        m_found.gone.insert(top.id);
        return;
    }
    m_found.here.insert(top.id);
    const bool hasOtherSize = top.size && *top.size != entry->size;
    const bool hasOtherTime =
        top.modified && std::abs(*top.modified - entry->modified) > DiskPlan::timeTolerance;
    if (!top.folder && top.modified && (hasOtherSize || hasOtherTime)) {
        m_found.pass.actions.push_back(DiskPlan::Changed{top.id, *entry});
        return;
    }
    const auto bookmark = readBookmark(m_connection, top.id);
    const bool isNoted = bookmark && *bookmark && (*bookmark)->fileID == entry->inode &&
                         (*bookmark)->path == top.path;
    if (top.inode != entry->inode || !isNoted || (!top.folder && !top.modified))
        m_found.pass.actions.push_back(DiskPlan::Identity{top.id, *entry});
}

// Something that is missing, under a new name or in a new place.
void LinkedLook::findSought()
{
    struct Sought
    {
        QString id, path;
        bool folder = false;
    };
    QHash<quint64, Sought> sought;
    const auto seek = [&](const DiskPlan::Known& known) {
        const auto bookmark = readBookmark(m_connection, known.id);
        if (bookmark && *bookmark)
            sought.insert((*bookmark)->fileID, {known.id, known.path, known.folder});
    };
    for (const DiskPlan::Known& top : m_query.tops)
        if (m_found.gone.contains(top.id))
            seek(top);
    for (const DiskPlan::Known& known : m_query.sought)
        seek(known);
    if (sought.isEmpty())
        return;
    QHash<quint64, const DiskPlan::Entry*> seen; // null for one that several names have
    for (const auto& [folder, entries] : m_scans)
        for (const DiskPlan::Entry& entry : entries)
            if (sought.contains(entry.inode))
                seen.insert(entry.inode, seen.contains(entry.inode) ? nullptr : &entry);
    for (auto found = seen.cbegin(); found != seen.cend(); ++found) {
        const DiskPlan::Entry* entry = found.value();
        const Sought& item = sought[found.key()];
        if (!entry || entry->folder != item.folder || hasLiveRow(m_connection, entry->path))
            continue;
        std::erase_if(m_found.pass.actions, [&](const DiskPlan::Action& action) {
            const auto* moved = std::get_if<DiskPlan::Moved>(&action);
            return moved && moved->id == item.id;
        });
        std::erase_if(m_found.pass.arriving, [&](const ArrivingItem& arriving) {
            return arriving.path == entry->path || liesBelow(arriving.path, entry->path);
        });
        m_found.pass.actions.insert(m_found.pass.actions.begin(), DiskPlan::Moved{item.id, *entry});
        m_found.pass.knownAt.insert(item.id, item.path);
    }
}

// An edited copy knows the file outside that it was made from.
void LinkedLook::followOriginals()
{
    struct Original
    {
        QString id, path;
        std::optional<quint64> fileID;
    };
    const auto originals = m_connection.query(
        "SELECT node_id, path, file_id FROM edit_originals", {}, [](const SQLRow& row) {
            Original original{row.text(0), row.text(1), std::nullopt};
            if (const auto fileID = row.optionalInteger(2))
                original.fileID = static_cast<quint64>(*fileID);
            return original;
        });
    if (!originals || originals->empty())
        return;
    QHash<quint64, QString> seen;
    for (const auto& [folder, entries] : m_scans)
        for (const DiskPlan::Entry& entry : entries)
            if (!entry.folder)
                seen.insert(entry.inode, entry.path);
    for (const Original& original : *originals) {
        Result<void> noted;
        if (!original.fileID) {
            if (const auto facts = fileFacts(QFile::encodeName(original.path)))
                noted = m_connection.run("UPDATE edit_originals SET file_id = ? WHERE node_id = ?",
                    {static_cast<qint64>(facts->identity), original.id});
        } else if (const QString path = seen.value(*original.fileID);
                   !path.isEmpty() && path != original.path &&
                   !fileFacts(QFile::encodeName(original.path))) {
            noted = m_connection.run(
                "UPDATE edit_originals SET path = ? WHERE node_id = ?", {path, original.id});
        }
        if (!noted)
            logLine(u"edited file's original moved: "_s + noted.failure().sentence());
    }
}

} // namespace

void LinkedRequest::unite(const LinkedRequest& other)
{
    everything |= other.everything;
    seeks |= other.seeks;
    folders.unite(other.folders);
    trees.unite(other.trees);
}

FolderPlace lookAtPlace(const QString& folder, std::optional<quint64> known)
{
    const QByteArray path = QFile::encodeName(folder);
    const auto facts = fileFacts(path);
    if (!facts || facts->kind != FileFacts::Kind::Folder)
        return {true, std::nullopt};
    FolderPlace place{false, facts->identity};
    if (!known || *known == facts->identity)
        return place;
    auto directory = Directory::open(path);
    if (!directory)
        return place;
    while (const auto name = directory->nextName())
        if (const auto text = nameText(*name); text && !isSkippedName(*text))
            return place;
    place.isAway = !directory->isBroken();
    return place;
}

Result<LinkedFinding> lookAtLinked(LinkedQuery query, Round round, std::stop_token stop)
{
    auto connection = SQLite::open(databasePath(query.library));
    if (!connection)
        return connection.failure();
    return LinkedLook(std::move(query), *connection, round, std::move(stop)).run();
}

} // namespace corvelle
