#include "store/Schema.h"

#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

QStringList columns(SQLite& db, const QByteArray& table)
{
    QStringList names;
    EXPECT_TRUE(db.each("PRAGMA table_info(" + table + ")", {},
        [&](const SQLRow& row) { names.append(row.text(1)); }));
    return names;
}

} // namespace

TEST(Schema, bringsAnOldDatabaseUpToDateAndKeepsItsRows)
{
    const TempFolder folder;
    {
        auto old = SQLite::open(folder.path("library.sqlite"));
        ASSERT_TRUE(makeCoreTables(*old));
        ASSERT_TRUE(old->execute(
            "ALTER TABLE nodes DROP COLUMN file_id; ALTER TABLE nodes DROP COLUMN file_modified;"
            "ALTER TABLE links DROP COLUMN notes;"
            "INSERT INTO links (node_id, url) VALUES ('n', 'https://a.example')"));
    }
    auto db = SQLite::open(folder.path("library.sqlite"), checkIsOurs);
    ASSERT_TRUE(db);
    ASSERT_TRUE(makeCoreTables(*db));
    ASSERT_TRUE(makeCoreTables(*db)) << "a second time changes nothing";
    EXPECT_TRUE(columns(*db, "nodes").contains("file_id"));
    EXPECT_TRUE(columns(*db, "nodes").contains("file_modified"));
    EXPECT_TRUE(columns(*db, "links").contains("notes"));
    EXPECT_EQ(db->query("SELECT url FROM links", {}, [](const SQLRow& row) { return row.text(0); })
                  ->front(),
        "https://a.example");
}

TEST(Schema, refusesWhatIsNotOursAndLeavesItsBytesAlone)
{
    const TempFolder folder;
    const auto made = [&](const QString& name, const QByteArray& script) {
        auto db = SQLite::open(folder.path(name));
        EXPECT_TRUE(db->execute("PRAGMA journal_mode=DELETE;" + script));
    };
    made("foreign", "CREATE TABLE recipes (a)");
    made("later", "CREATE TABLE spaces (a); CREATE TABLE nodes (a); PRAGMA user_version = 3");
    folder.makeFile("noise", QByteArray(5000, '\xA7'));
    for (const QString name : {"foreign", "later", "noise"}) {
        SCOPED_TRACE(name.toStdString());
        const QByteArray before = folder.content(name);
        EXPECT_FALSE(SQLite::open(folder.path(name), checkIsOurs));
        EXPECT_EQ(folder.content(name), before);
    }

    folder.makeFile("empty", "");
    auto fresh = SQLite::open(folder.path("empty"), checkIsOurs);
    ASSERT_TRUE(fresh) << "a file without bytes is a new database";
    EXPECT_TRUE(makeCoreTables(*fresh));
}

TEST(Schema, settingsAreKeptReplacedAndRemoved)
{
    const TempFolder folder;
    auto db = SQLite::open(folder.path("library.sqlite"));
    ASSERT_TRUE(makeCoreTables(*db));
    EXPECT_EQ(setting(*db, "k"), std::nullopt);
    ASSERT_TRUE(setSetting(*db, "k", "one"));
    ASSERT_TRUE(setSetting(*db, "k", "two"));
    EXPECT_EQ(setting(*db, "k"), QString("two"));
    ASSERT_TRUE(setSetting(*db, "k", std::nullopt));
    EXPECT_EQ(setting(*db, "k"), std::nullopt);
}
