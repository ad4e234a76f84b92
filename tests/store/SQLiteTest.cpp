#include "store/SQLite.h"

#include "base/Text.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sqlite3.h>

using namespace corvelle;

namespace {

class SQLiteTest : public testing::Test
{
protected:
    SQLiteTest()
        : m_db(std::move(*SQLite::open(m_folder.path("test.sqlite"))))
    {
        EXPECT_TRUE(m_db.execute("CREATE TABLE t (a, b)"));
    }

    qint64 count()
    {
        return m_db
            .query("SELECT count(*) FROM t", {}, [](const SQLRow& row) { return row.integer(0); })
            ->front();
    }

    QString asText(const QByteArray& expression)
    {
        return m_db
            .query("SELECT " + expression, {}, [](const SQLRow& row) { return row.text(0); })
            ->front();
    }

    TempFolder m_folder;
    SQLite m_db;
};

} // namespace

TEST_F(SQLiteTest, bindsEachValueAsItsTypeAndReadsItBack)
{
    ASSERT_TRUE(m_db.run("INSERT INTO t VALUES (?, ?)", {QString("žluť 😀"), QByteArray("")}));
    ASSERT_TRUE(m_db.run("INSERT INTO t VALUES (?, ?)", {nullptr, std::optional<int>()}));
    ASSERT_TRUE(m_db.run("INSERT INTO t VALUES (?, ?)", {true, 1.5}));
    EXPECT_EQ(asText("group_concat(typeof(a) || '/' || typeof(b)) FROM t"),
        "text/blob,null/null,integer/real");

    const auto blobs = m_db.query("SELECT b, a FROM t ORDER BY rowid", {},
        [](const SQLRow& row) { return std::pair(row.bytes(0), row.optionalText(1)); });
    EXPECT_TRUE(blobs->at(0).first.has_value()) << "an empty blob is not NULL";
    EXPECT_EQ(blobs->at(0).first->size(), 0);
    EXPECT_EQ(blobs->at(0).second, QString("žluť 😀"));
    EXPECT_FALSE(blobs->at(1).first.has_value());
    EXPECT_FALSE(blobs->at(1).second.has_value());
}

TEST_F(SQLiteTest, repairsBadUtf8OnReadingAndInUlower)
{
    EXPECT_EQ(asText("CAST(x'41ff42' AS TEXT)"), QString("A\uFFFD"
                                                         "B"));
    EXPECT_EQ(asText("ulower(CAST(x'41ff42' AS TEXT))"), QString("a\uFFFD"
                                                                 "b"));
    EXPECT_EQ(asText("ulower(NULL) IS NULL"), "1");
    const QByteArray decomposed = (QString("A") + QChar(0x0308)).toUtf8();
    EXPECT_EQ(asText("ulower('" + decomposed + "') = ulower('ä')"), "1");
}

TEST_F(SQLiteTest, tellsWhichStepFailedAndOfWhat)
{
    EXPECT_TRUE(m_db.run("SELEC 1").failure().sentence().startsWith("prepare: "));
    EXPECT_TRUE(m_db.run("SELEC 1").failure().sentence().endsWith(QString::fromUtf8(" — SELEC 1")));
    EXPECT_TRUE(m_db.execute("nonsense").failure().sentence().startsWith("step: "));
    ASSERT_TRUE(m_db.execute("CREATE TABLE u (a UNIQUE); INSERT INTO u VALUES (1)"));
    EXPECT_TRUE(m_db.run("INSERT INTO u VALUES (1)").failure().sentence().startsWith("step: "));
    EXPECT_TRUE(SQLite::open(m_folder.path("no/such/folder.sqlite"))
                    .failure()
                    .sentence()
                    .startsWith("open: "));
}

TEST_F(SQLiteTest, aTransactionInsideAnotherJoinsIt)
{
    const auto outer = m_db.transaction([&]() -> Result<void> {
        const auto inner =
            m_db.transaction([&] { return m_db.run("INSERT INTO t VALUES (1, 1)"); });
        EXPECT_TRUE(inner);
        EXPECT_FALSE(sqlite3_get_autocommit(m_db.handle())) << "the inner end must commit nothing";
        return Failure("enough");
    });
    EXPECT_EQ(outer.failure().sentence(), "enough");
    EXPECT_EQ(count(), 0) << "the outer failure takes the inner work back";

    ASSERT_TRUE(m_db.transaction([&] { return m_db.run("INSERT INTO t VALUES (1, 1)"); }));
    EXPECT_EQ(count(), 1);
}

TEST_F(SQLiteTest, aFailingCommitIsRolledBackAndTold)
{
    ASSERT_TRUE(
        m_db.execute("CREATE TABLE parent (id PRIMARY KEY);"
                     "CREATE TABLE child (p REFERENCES parent DEFERRABLE INITIALLY DEFERRED)"));
    const auto done = m_db.transaction([&] { return m_db.run("INSERT INTO child VALUES (7)"); });
    ASSERT_FALSE(done);
    EXPECT_TRUE(done.failure().sentence().contains("FOREIGN KEY"));
    EXPECT_TRUE(sqlite3_get_autocommit(m_db.handle()));
    EXPECT_TRUE(m_db.transaction([&] { return m_db.run("INSERT INTO t VALUES (1, 1)"); }));
}

TEST_F(SQLiteTest, connectionsAreSetUpAlike)
{
    EXPECT_EQ(asText("* FROM pragma_journal_mode"), "wal");
    EXPECT_EQ(asText("* FROM pragma_synchronous"), "1");
    EXPECT_EQ(asText("* FROM pragma_foreign_keys"), "1");
    EXPECT_EQ(asText("* FROM pragma_journal_size_limit"), "4194304");
    EXPECT_EQ(asText("* FROM pragma_busy_timeout"), "3000");
}
