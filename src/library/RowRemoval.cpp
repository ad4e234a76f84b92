#include "library/RowRemoval.h"

#include <QSet>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// Of paths in code point order, those that lie below none of the others.
std::vector<QString> topmost(std::vector<QString> paths)
{
    std::sort(paths.begin(), paths.end());
    std::vector<QString> tops;
    const QSet<QString> all(paths.begin(), paths.end());
    for (const QString& path : paths) {
        bool covered = false;
        for (qsizetype slash = path.lastIndexOf(u'/'); slash > 0 && !covered;
             slash = path.lastIndexOf(u'/', slash - 1))
            covered = all.contains(path.left(slash));
        if (!covered)
            tops.push_back(path);
    }
    return tops;
}

} // namespace

Result<void> collectBelow(
    SQLite& connection, const std::vector<QString>& ids, std::vector<QString>& found)
{
    auto below = connection.prepare(
        "WITH RECURSIVE below(id, space) AS (SELECT id, space_id FROM nodes WHERE id = ? UNION "
        "SELECT n.id, n.space_id FROM below JOIN nodes n ON n.space_id = below.space AND "
        "n.parent_id = below.id) SELECT id FROM below");
    if (!below)
        return below.failure();
    QSet<QString> seen;
    for (const QString& id : ids) {
        below->bind({id});
        while (true) {
            const auto row = below->step();
            if (!row)
                return row.failure();
            if (!*row)
                break;
            const QString each = below->row().text(0);
            if (!seen.contains(each)) {
                seen.insert(each);
                found.push_back(each);
            }
        }
    }
    return {};
}

Result<void> deleteRows(SQLite& connection, const std::vector<QString>& ids,
    std::vector<QString>& cleared, const std::function<void()>& tick)
{
    std::vector<QString> linked;
    auto path = connection.prepare("SELECT path FROM nodes WHERE id = ?");
    if (!path)
        return path.failure();
    for (const QString& id : ids) {
        path->bind({id});
        const auto row = path->step();
        if (!row)
            return row.failure();
        if (*row)
            if (const QString at = path->row().text(0); at.startsWith(u'/'))
                linked.push_back(at);
    }
    const auto deleteAll = [&](const QByteArray& sql, bool mayMiss) -> Result<void> {
        auto statement = connection.prepare(sql);
        if (!statement)
            return mayMiss ? Result<void>() : statement.failure();
        for (const QString& id : ids) {
            if (auto done = statement->run({id}); !done)
                return done;
            if (tick)
                tick();
        }
        return {};
    };
    if (auto done = deleteAll("DELETE FROM nodes WHERE id = ?", false); !done)
        return done;
    for (const char* table : {"pages", "node_text", "links", "link_bookmarks", "went_away",
             "edit_originals", "page_history"})
        if (auto done = deleteAll(QByteArray("DELETE FROM ") + table + " WHERE node_id = ?", false);
            !done)
            return done;
    if (auto done = deleteAll("DELETE FROM file_notes WHERE node_id = ?", true); !done)
        return done;
    for (const QString& top : topmost(std::move(linked)))
        if (auto done =
                connection.run("INSERT OR IGNORE INTO forgotten_links (path) VALUES (?)", {top});
            !done)
            return done;
    // What somebody has meanwhile moved out of a trashed folder without moving its file still
    // needs that file.
    auto needed =
        connection.prepare("SELECT 1 FROM nodes WHERE path >= '.corvelle/Trash/' || ?1 || "
                           "'/' AND path < '.corvelle/Trash/' || ?1 || '0' LIMIT 1");
    if (!needed)
        return needed.failure();
    for (const QString& id : ids) {
        needed->bind({id});
        const auto row = needed->step();
        if (!row)
            return row.failure();
        if (!*row)
            cleared.push_back(id);
    }
    return {};
}

std::vector<QString> ownFiles(const QString& id)
{
    return {u"Trash/"_s + id, u"versions/"_s + id, u"shots/"_s + id + u".jpg"_s,
        u"shots/"_s + id + u".webp"_s, u"linked/"_s + id, u"edits/"_s + id,
        u"drafts/"_s + id + u".json"_s, u"thumbs/"_s + id + u".jpg"_s, u"pages/"_s + id};
}

} // namespace corvelle
