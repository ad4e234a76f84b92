#pragma once

#include "library/NodeTree.h"
#include "store/SQLite.h"

namespace corvelle {

// Whether the texts of a snapshot may stay in memory to the end of the process, which makes reading
// them much cheaper. For the first read of a library.
enum class TextLife { Own, Process };

// Reads the whole tree. Texts that many rows repeat (parents, types, icons, spaces) are held once.
Result<Snapshot> readSnapshot(SQLite& connection, TextLife life = TextLife::Own);

// Reads one node's row; none when it is not there.
Result<std::optional<std::pair<Node, SeenFile>>> readNode(SQLite& connection, const QString& id);

// Inserts a row with all its columns, with a statement prepared by `insertNodeSQL` for many or for
// one.
inline constexpr char insertNodeSQL[] =
    "INSERT INTO nodes (id, space_id, parent_id, kind, title, icon, color, x, y, position, path, "
    "created_at, updated_at, deleted_at, mime, byte_size, width, height, url, file_id, "
    "file_modified) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
Result<void> insertNode(SQLStatement& insert, const Node& node, const SeenFile& seen);

} // namespace corvelle
