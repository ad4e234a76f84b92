#include "library/NodePaths.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace corvelle {

QString placeInTrash(const QString& id, const QString& path)
{
    return u".corvelle/Trash/"_s + id + u'/' + lastComponent(path);
}

Result<void> rewritePath(
    SQLite& connection, const QString& id, NodeKind kind, const QString& from, const QString& to)
{
    if (kind != NodeKind::Folder)
        return connection.run("UPDATE nodes SET path = ? WHERE id = ?", {to, id});
    // A range of paths, so that the index serves: "0" is the character behind "/".
    return connection.run(
        "UPDATE nodes SET path = ?1 || substr(path, length(?2) + 1) WHERE id = ?3 OR "
        "(path >= ?2 || '/' AND path < ?2 || '0')",
        {to, from, id});
}

bool isRowInTrash(SQLite& connection, const QString& id)
{
    bool is = false;
    (void)connection.each(
        "WITH RECURSIVE up(id, parent, gone) AS (SELECT id, parent_id, deleted_at FROM nodes "
        "WHERE id = ? UNION SELECT n.id, n.parent_id, n.deleted_at FROM up u JOIN nodes n "
        "ON n.id = u.parent) SELECT 1 FROM up WHERE gone IS NOT NULL LIMIT 1",
        {id}, [&](const SQLRow&) { is = true; });
    return is;
}

} // namespace corvelle
