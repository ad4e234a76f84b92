// What a linked item is found again by when it isn't where it was: the table `link_bookmarks`.
//
// The connection's thread. Joins an open transaction.
#pragma once

#include "store/SQLite.h"

#include <QString>

#include <optional>

namespace corvelle {

struct LinkBookmark
{
    QString path;       // absolute, where it was last
    quint64 fileID = 0; // see FileFacts::identity

    bool operator==(const LinkBookmark&) const = default;
};

// As stored: the identifier in hexadecimal digits, a space, the path as UTF-8.
QByteArray storedBookmark(const LinkBookmark& bookmark);
std::optional<LinkBookmark> bookmarkFrom(const QByteArray& stored);

Result<std::optional<LinkBookmark>> readBookmark(SQLite& connection, const QString& id);
Result<void> putBookmark(SQLite& connection, const QString& id, const LinkBookmark& bookmark);
// Only where the item has one: what lies in a linked folder is found by that folder.
Result<void> refreshBookmark(SQLite& connection, const QString& id, const LinkBookmark& bookmark);

} // namespace corvelle
