// Taking nodes out of all tables of the library.
#pragma once

#include "store/SQLite.h"

#include <functional>
#include <vector>

namespace corvelle {

// The ids that have a row, each with everything below it.
Result<void> collectBelow(
    SQLite& connection, const std::vector<QString>& ids, std::vector<QString>& found);

// Deletes the rows of the nodes everywhere and notes the topmost paths of items linked from
// outside, so that no look at the disk brings them back. `cleared` gets the ids whose own files
// nothing needs any more. Joins an open transaction.
Result<void> deleteRows(SQLite& connection, const std::vector<QString>& ids,
    std::vector<QString>& cleared, const std::function<void()>& tick);

// The files that the library itself keeps for a node, relative to its hidden folder: its place in
// the Trash, versions, pictures, edited copies and drafts.
std::vector<QString> ownFiles(const QString& id);

} // namespace corvelle
