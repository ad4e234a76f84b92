#include "store/Schema.h"

#include "base/Log.h"

#include <sqlite3.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// No table declares a foreign key: the rows of the side tables go with their node by explicit
// statements.
constexpr char coreTables[] = R"sql(
CREATE TABLE IF NOT EXISTS spaces (
    id TEXT PRIMARY KEY,
    slug TEXT NOT NULL,
    name TEXT NOT NULL,
    mode TEXT NOT NULL DEFAULT 'local',
    folder TEXT NOT NULL,
    created_at REAL NOT NULL
);
CREATE TABLE IF NOT EXISTS nodes (
    id TEXT PRIMARY KEY,
    space_id TEXT NOT NULL,
    parent_id TEXT,
    kind TEXT NOT NULL,
    title TEXT NOT NULL,
    icon TEXT,
    color TEXT NOT NULL DEFAULT 'gray',
    x REAL NOT NULL DEFAULT 0,
    y REAL NOT NULL DEFAULT 0,
    position TEXT NOT NULL,
    path TEXT,
    created_at REAL NOT NULL,
    updated_at REAL NOT NULL,
    deleted_at REAL,
    mime TEXT,
    byte_size INTEGER,
    width INTEGER,
    height INTEGER,
    url TEXT
);
CREATE INDEX IF NOT EXISTS nodes_parent ON nodes (space_id, parent_id);
CREATE INDEX IF NOT EXISTS nodes_path ON nodes (path);
CREATE TABLE IF NOT EXISTS pages (
    node_id TEXT PRIMARY KEY,
    doc TEXT NOT NULL,
    updated_at REAL NOT NULL
);
CREATE TABLE IF NOT EXISTS links (
    node_id TEXT PRIMARY KEY,
    url TEXT NOT NULL,
    final_url TEXT,
    excerpt TEXT,
    readable TEXT
);
CREATE TABLE IF NOT EXISTS node_text (node_id TEXT PRIMARY KEY, source TEXT, text TEXT);
CREATE TABLE IF NOT EXISTS link_bookmarks (node_id TEXT PRIMARY KEY, bookmark BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS forgotten_links (path TEXT PRIMARY KEY);
CREATE TABLE IF NOT EXISTS went_away (node_id TEXT PRIMARY KEY, at REAL NOT NULL);
CREATE TABLE IF NOT EXISTS edit_originals (
    node_id TEXT PRIMARY KEY,
    path TEXT NOT NULL,
    bookmark BLOB,
    file_id INTEGER
);
CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT);
CREATE TABLE IF NOT EXISTS undo_journal (
    seq INTEGER PRIMARY KEY,
    name TEXT NOT NULL,
    at REAL NOT NULL,
    undone INTEGER NOT NULL DEFAULT 0,
    step TEXT NOT NULL
);
CREATE TABLE IF NOT EXISTS page_history (
    node_id TEXT NOT NULL,
    seq INTEGER NOT NULL,
    doc TEXT NOT NULL,
    icon TEXT,
    bytes INTEGER NOT NULL,
    at REAL NOT NULL,
    PRIMARY KEY (node_id, seq)
);
)sql";

constexpr char fanTables[] = R"sql(
CREATE TABLE IF NOT EXISTS fans (
    id TEXT PRIMARY KEY,
    space_id TEXT NOT NULL,
    parent_id TEXT,
    x REAL NOT NULL,
    y REAL NOT NULL,
    title TEXT,
    created_at REAL
);
CREATE TABLE IF NOT EXISTS fan_members (
    node_id TEXT PRIMARY KEY,
    fan_id TEXT NOT NULL,
    position INTEGER NOT NULL
);
)sql";

// Adds a column that came after the table. Only a failing probe is a failure: a failing ALTER is
// tried again at the next opening.
Result<void> addColumn(
    SQLite& connection, const QByteArray& table, const QByteArray& column, const QByteArray& type)
{
    const auto names = connection.query(
        "PRAGMA table_info(" + table + ")", {}, [](const SQLRow& row) { return row.text(1); });
    if (!names)
        return names.failure();
    if (std::find(names->begin(), names->end(), QString::fromLatin1(column)) != names->end())
        return {};
    const auto added =
        connection.execute("ALTER TABLE " + table + " ADD COLUMN " + column + " " + type);
    if (!added)
        logLine(u"schema: "_s + added.failure().sentence());
    return {};
}

} // namespace

Result<void> checkIsOurs(SQLite& connection)
{
    if (sqlite3_db_readonly(connection.handle(), "main") == 1)
        return Failure(u"open: the database can only be read"_s);
    qint64 version = 0;
    bool anyTable = false, spaces = false, nodes = false;
    auto asked = connection.each(
        "PRAGMA user_version", {}, [&](const SQLRow& row) { version = row.integer(0); });
    if (asked)
        asked = connection.each(
            "SELECT name FROM sqlite_master WHERE type = 'table'", {}, [&](const SQLRow& row) {
                anyTable = true;
                spaces |= row.utf8(0) == "spaces";
                nodes |= row.utf8(0) == "nodes";
            });
    if (!asked)
        return asked;
    if (version > latestDataVersion)
        return Failure(u"open: the database was written by a later version (%1)"_s.arg(version));
    if (anyTable && !(spaces && nodes))
        return Failure(u"open: the database is not one of ours"_s);
    return {};
}

Result<void> makeCoreTables(SQLite& connection)
{
    // One transaction, so that a program that dies here leaves either none of the tables or all of
    // them: half of them would look like somebody else's database. A deferred one, so that nothing
    // waits where all of them stand already.
    auto made = connection.execute(QByteArray("BEGIN;") + coreTables + "COMMIT;");
    if (!made) {
        (void)connection.execute("ROLLBACK");
        return made;
    }
    if (const auto fans = connection.execute(fanTables); !fans)
        logLine(u"schema: "_s + fans.failure().sentence());
    if (auto added = addColumn(connection, "links", "notes", "TEXT"); !added)
        return added;
    if (auto added = addColumn(connection, "nodes", "file_id", "INTEGER"); !added)
        return added;
    return addColumn(connection, "nodes", "file_modified", "REAL");
}

std::optional<QString> setting(SQLite& connection, const QString& key)
{
    std::optional<QString> value;
    (void)connection.each("SELECT value FROM settings WHERE key = ?", {key},
        [&](const SQLRow& row) { value = row.optionalText(0); });
    return value;
}

Result<void> setSetting(SQLite& connection, const QString& key, const std::optional<QString>& value)
{
    if (!value)
        return connection.run("DELETE FROM settings WHERE key = ?", {key});
    return connection.run("INSERT INTO settings (key, value) VALUES (?, ?) "
                          "ON CONFLICT(key) DO UPDATE SET value = excluded.value",
        {key, *value});
}

} // namespace corvelle
