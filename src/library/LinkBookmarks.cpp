#include "library/LinkBookmarks.h"

namespace corvelle {

QByteArray storedBookmark(const LinkBookmark& bookmark)
{
    return QByteArray::number(bookmark.fileID, 16) + ' ' + bookmark.path.toUtf8();
}

std::optional<LinkBookmark> bookmarkFrom(const QByteArray& stored)
{
    const qsizetype space = stored.indexOf(' ');
    bool isNumber = false;
    const quint64 fileID = stored.left(std::max<qsizetype>(space, 0)).toULongLong(&isNumber, 16);
    const QString path = QString::fromUtf8(stored.sliced(space + 1));
    if (!isNumber || !path.startsWith(u'/'))
        return std::nullopt;
    return LinkBookmark{path, fileID};
}

Result<std::optional<LinkBookmark>> readBookmark(SQLite& connection, const QString& id)
{
    std::optional<LinkBookmark> bookmark;
    const auto read = connection.each("SELECT bookmark FROM link_bookmarks WHERE node_id = ?", {id},
        [&](const SQLRow& row) { bookmark = bookmarkFrom(row.bytes(0).value_or(QByteArray())); });
    if (!read)
        return read.failure();
    return bookmark;
}

Result<void> putBookmark(SQLite& connection, const QString& id, const LinkBookmark& bookmark)
{
    return connection.run("INSERT OR REPLACE INTO link_bookmarks (node_id, bookmark) VALUES (?, ?)",
        {id, storedBookmark(bookmark)});
}

Result<void> refreshBookmark(SQLite& connection, const QString& id, const LinkBookmark& bookmark)
{
    return connection.run(
        "UPDATE link_bookmarks SET bookmark = ? WHERE node_id = ?", {storedBookmark(bookmark), id});
}

} // namespace corvelle
