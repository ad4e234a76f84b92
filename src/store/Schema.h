// The tables that the library store owns, and how an older database is brought up to date.
#pragma once

#include "base/Result.h"
#include "store/SQLite.h"

namespace corvelle {

// The data steps that this program knows. A database of a later count was written by a later
// program.
inline constexpr int latestDataVersion = 2;

// Whether the database is new or one of ours: reads only, so a foreign file stays as it was. For
// SQLite::open.
Result<void> checkIsOurs(SQLite& connection);

// Makes what is missing. Safe on every opening; rows are never touched.
Result<void> makeCoreTables(SQLite& connection);

// One text value of the library's `settings` table. A failing read counts as no value.
std::optional<QString> setting(SQLite& connection, const QString& key);
Result<void> setSetting(
    SQLite& connection, const QString& key, const std::optional<QString>& value);

} // namespace corvelle
