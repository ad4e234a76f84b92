#include "library/SnapshotReader.h"

#include "library/TextArena.h"

#include <QHash>

namespace corvelle {

namespace {

constexpr char nodeColumns[] =
    "SELECT id, space_id, parent_id, kind, title, icon, color, x, y, position, path, created_at, "
    "updated_at, deleted_at, mime, byte_size, width, height, url, file_id, file_modified FROM "
    "nodes";

// Hands out one shared copy of each distinct text. Rows come grouped, so the last answer often
// serves again.
class SharedTexts
{
public:
    QString shared(QByteArrayView utf8)
    {
        if (utf8.isNull())
            return {};
        if (utf8 == m_lastKey)
            return m_last;
        const auto key = QByteArray::fromRawData(utf8.data(), utf8.size());
        auto found = m_texts.constFind(key);
        if (found == m_texts.cend())
            found = m_texts.insert(QByteArray(utf8.data(), utf8.size()), QString::fromUtf8(utf8));
        m_lastKey = found.key();
        m_last = found.value();
        return m_last;
    }

private:
    QHash<QByteArray, QString> m_texts;
    QByteArray m_lastKey;
    QString m_last;
};

struct Texts
{
    TextLife life = TextLife::Own;
    SharedTexts ids, mimes, icons, spaces, positions;
    TextArena arena;

    // A text that only one row tells.
    QString own(QByteArrayView utf8)
    {
        if (life == TextLife::Process)
            return arena.text(utf8);
        return utf8.isNull() ? QString() : QString::fromUtf8(utf8);
    }
};

std::optional<int> optionalInt(const SQLRow& row, int column)
{
    const auto value = row.optionalInteger(column);
    return value ? std::optional(static_cast<int>(*value)) : std::nullopt;
}

QUtf8StringView asText(QByteArrayView utf8)
{
    return QUtf8StringView(utf8.data(), utf8.size());
}

Node nodeFrom(const SQLRow& row, Texts& texts)
{
    Node node;
    node.kind = nodeKind(asText(row.utf8(3)));
    // Folders' ids are told again by every child.
    node.id =
        node.kind == NodeKind::Folder ? texts.ids.shared(row.utf8(0)) : texts.own(row.utf8(0));
    node.spaceID = texts.spaces.shared(row.utf8(1));
    node.parentID = texts.ids.shared(row.utf8(2));
    node.title = texts.own(row.utf8(4));
    node.icon = texts.icons.shared(row.utf8(5));
    node.color = nodeColor(asText(row.utf8(6)));
    node.x = row.real(7);
    node.y = row.real(8);
    node.position = texts.positions.shared(row.utf8(9));
    node.path = texts.own(row.utf8(10));
    node.createdAt = row.date(11).value_or(distantPast);
    node.updatedAt = row.date(12).value_or(distantPast);
    node.deletedAt = row.date(13);
    node.mime = texts.mimes.shared(row.utf8(14));
    node.byteSize = row.optionalInteger(15);
    node.width = optionalInt(row, 16);
    node.height = optionalInt(row, 17);
    node.url = texts.own(row.utf8(18));
    return node;
}

SeenFile seenFrom(const SQLRow& row)
{
    SeenFile seen;
    if (const auto id = row.optionalInteger(19))
        seen.fileID = static_cast<quint64>(*id);
    seen.modified = row.date(20);
    return seen;
}

} // namespace

Result<Snapshot> readSnapshot(SQLite& connection, TextLife life)
{
    Snapshot snapshot;
    auto spaces =
        connection.query("SELECT id, slug, name, mode, folder FROM spaces ORDER BY created_at", {},
            [](const SQLRow& row) {
                Space space{row.text(0), row.text(1), row.text(2), Space::Mode::Local, row.text(4)};
                const QString mode = row.text(3);
                space.mode = mode == u"synced"   ? Space::Mode::Synced
                             : mode == u"shared" ? Space::Mode::Shared
                                                 : Space::Mode::Local;
                return space;
            });
    if (!spaces)
        return spaces.failure();
    snapshot.spaces = std::move(*spaces);

    Texts texts;
    texts.life = life;
    auto read = connection.each(nodeColumns, {}, [&](const SQLRow& row) {
        NodeRecord* record = snapshot.pool.add();
        record->node = nodeFrom(row, texts);
        record->seen = seenFrom(row);
        snapshot.nodes.push_back(record);
    });
    if (!read)
        return read.failure();

    read = connection.each("SELECT node_id, updated_at FROM pages", {},
        [&](const SQLRow& row) { snapshot.pageStamps.insert(row.text(0), row.real(1)); });
    if (!read)
        return read.failure();
    return snapshot;
}

Result<std::optional<std::pair<Node, SeenFile>>> readNode(SQLite& connection, const QString& id)
{
    std::optional<std::pair<Node, SeenFile>> found;
    Texts texts;
    const auto read = connection.each(QByteArray(nodeColumns) + " WHERE id = ?", {id},
        [&](const SQLRow& row) { found.emplace(nodeFrom(row, texts), seenFrom(row)); });
    if (!read)
        return read.failure();
    return found;
}

Result<void> insertNode(SQLStatement& insert, const Node& node, const SeenFile& seen)
{
    // Bit for bit into the signed column.
    const SQLValue fileID =
        seen.fileID ? SQLValue(static_cast<qint64>(*seen.fileID)) : SQLValue(nullptr);
    return insert.run({node.id, node.spaceID, textOrNull(node.parentID), word(node.kind),
        node.title, textOrNull(node.icon), word(node.color), node.x, node.y, node.position,
        textOrNull(node.path), node.createdAt, node.updatedAt, node.deletedAt,
        textOrNull(node.mime), node.byteSize, node.width, node.height, textOrNull(node.url), fileID,
        seen.modified});
}

} // namespace corvelle
