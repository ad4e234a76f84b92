// Where nodes lie on disk, as their rows tell it.
#pragma once

#include "library/Node.h"
#include "store/SQLite.h"

namespace corvelle {

// The place of a trashed item in the library's own Trash, relative to the root.
QString placeInTrash(const QString& id, const QString& path);

// Writes that the node lies at `to` in place of `from`; for a folder, all below it follows. A file
// takes nothing along that lies below its path: something else lies there by then. Joins an open
// transaction.
Result<void> rewritePath(
    SQLite& connection, const QString& id, NodeKind kind, const QString& from, const QString& to);

// Whether the row, or a folder that it lies in, is in the Trash.
bool isRowInTrash(SQLite& connection, const QString& id);

} // namespace corvelle
