#include "library/LibraryOpening.h"

#include "library/DataSteps.h"
#include "library/Library.h"
#include "library/SnapshotReader.h"
#include "support/EventLoop.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace corvelle;

namespace {

LibraryOpening opened(const QString& root)
{
    return openLibrary({root, true}, OpenMode::Application);
}

qint64 number(SQLite& db, const QByteArray& sql)
{
    return db.query(sql, {}, [](const SQLRow& row) { return row.integer(0); })->front();
}

} // namespace

TEST(LibraryPlace, theEnvironmentWinsOverTheMemoryOverTheDefault)
{
    EXPECT_EQ(chooseLibrary("/a/b/", "/c").root, "/a/b");
    EXPECT_TRUE(chooseLibrary("/a/b", "").fromEnvironment);
    EXPECT_EQ(chooseLibrary("", "/c").root, "/c");
    EXPECT_EQ(chooseLibrary("", "").root, defaultLibrary());
    EXPECT_EQ(chooseLibrary("~/x", "").root, QDir::homePath() + "/x");
}

TEST(LibraryPlace, aLibraryIsAnEmptyFolderOneOfOursOrNothingYet)
{
    const TempFolder folder;
    folder.makeFolder("hidden/.git");
    folder.makeFile("hidden/.DS_Store");
    folder.makeFile("full/notes.txt");
    folder.makeFile("ours/.corvelle/library.sqlite");
    folder.makeFile("ours/notes.txt");
    folder.makeFile("file");
    ASSERT_EQ(::symlink("nowhere", folder.path("dangling").toUtf8().constData()), 0);
    EXPECT_TRUE(passesLibraryTest(folder.path("hidden")));
    EXPECT_TRUE(passesLibraryTest(folder.path("ours")));
    EXPECT_TRUE(passesLibraryTest(folder.path("not there")));
    EXPECT_FALSE(passesLibraryTest(folder.path("full")));
    EXPECT_FALSE(passesLibraryTest(folder.path("file")));
    EXPECT_FALSE(passesLibraryTest(folder.path("dangling")));

    EXPECT_TRUE(isMissing({folder.path("not there"), false}));
    EXPECT_TRUE(isMissing({folder.path("file"), false}));
    EXPECT_FALSE(isMissing({folder.path("not there"), true}))
        << "a path from the environment is made";
    EXPECT_FALSE(isMissing({folder.path("ours"), false}));
}

TEST(LibraryOpening, makesANewLibraryWithItsFirstSpace)
{
    const TempFolder folder;
    LibraryOpening opening = opened(folder.path("new"));
    ASSERT_TRUE(opening.connection) << opening.loadError.toStdString();
    EXPECT_TRUE(opening.isFirstRun);
    EXPECT_TRUE(QFileInfo(folder.path("new/My Space")).isDir());
    for (const char* name : {"thumbs", "shots", "Trash"})
        EXPECT_TRUE(QFileInfo(folder.path("new/.corvelle/") + name).isDir()) << name;
    struct stat hidden = {};
    ASSERT_EQ(::stat(folder.path("new/.corvelle").toUtf8().constData(), &hidden), 0);
    EXPECT_EQ(hidden.st_mode & 0777, 0700u) << "nobody else reads the library's own files";
    ASSERT_EQ(opening.tree.spaces().size(), 1u);
    EXPECT_EQ(opening.tree.spaces().front().folder, "My Space");
    EXPECT_EQ(opening.tree.spaces().front().slug, "personal");
}

TEST(LibraryOpening, aSecondCopyLearnsWhoHasIt)
{
    const TempFolder folder;
    const LibraryOpening first = opened(folder.path());
    ASSERT_TRUE(first.lock.isHeld());
    const LibraryOpening second = opened(folder.path());
    EXPECT_EQ(second.heldBy, static_cast<qint32>(::getpid()));
    EXPECT_FALSE(second.connection.has_value());
    EXPECT_EQ(second.loadError,
        "“" + QFileInfo(folder.path()).fileName() + "” is open in another copy of Corvelle.");
    EXPECT_TRUE(openLibrary({folder.path(), true}, OpenMode::ToolServer).connection.has_value())
        << "the tool server takes no lock";
}

TEST(LibraryOpening, theLockIsFreeAgainAfterItsHolder)
{
    const TempFolder folder;
    {
        const LibraryOpening first = opened(folder.path());
    }
    EXPECT_FALSE(opened(folder.path()).heldBy.has_value());
}

// Whatever stands in the way, the opening says so and leaves it as it is.
TEST(LibraryOpening, refusesWhatItCannotUseAndChangesNothing)
{
    const TempFolder folder;
    folder.makeFile("file", "kept");
    ASSERT_EQ(::symlink("gone", folder.path("dangling").toUtf8().constData()), 0);
    ASSERT_EQ(::symlink("loop", folder.path("loop").toUtf8().constData()), 0);
    folder.makeFile("noise/.corvelle/library.sqlite", QByteArray(9000, '\x5A'));
    folder.makeFile("blocked/.corvelle", "a file where the folder belongs");
    for (const QString name : {"file", "dangling", "loop", "noise", "blocked"}) {
        SCOPED_TRACE(name.toStdString());
        const LibraryOpening opening = opened(folder.path(name));
        EXPECT_FALSE(opening.connection.has_value());
        EXPECT_EQ(opening.loadError, "Couldn’t open the library “" + name + "”.");
    }
    EXPECT_EQ(folder.content("file"), "kept");
    EXPECT_EQ(folder.content("noise/.corvelle/library.sqlite"), QByteArray(9000, '\x5A'));
    EXPECT_FALSE(QFileInfo::exists(folder.path("gone")));
    EXPECT_FALSE(QFileInfo::exists(folder.path("noise/My Space")));
    const LibraryOpening missing =
        openLibrary({folder.path("nothing here"), false}, OpenMode::Application);
    EXPECT_TRUE(missing.missing);
    EXPECT_EQ(missing.loadError, "Can’t find the library “nothing here”.");
    EXPECT_FALSE(QFileInfo::exists(folder.path("nothing here")));
}

TEST(DataSteps, repairOldRowsOnceAndKeepTheRest)
{
    const TempFolder folder;
    LibraryOpening opening = opened(folder.path());
    SQLite& db = *opening.connection;
    ASSERT_TRUE(db.execute(R"sql(
        CREATE TABLE search_body (x);
        INSERT INTO nodes (id, space_id, kind, title, position, path, created_at, updated_at, mime) VALUES
            ('pic', 's', 'file', 'p', 'a0', 'My Space/p.png', 0, 0, 'image/png'),
            ('lib', 's', 'file', 'l', 'a0', 'My Space/node_modules/l.js', 0, 0, 'text/javascript'),
            ('doc', 's', 'file', 'd', 'a0', 'My Space/d.pdf', 0, 0, 'application/pdf'),
            ('old', 's', 'file', 'o', 'a0', 'My Space/o.pdf', 0, 0, 'application/pdf'),
            ('zip', 's', 'file', 'z', 'a0', 'My Space/z.txt', 0, 0, 'text/plain'),
            ('web', 's', 'link', 'w', 'a0', NULL, 0, 0, NULL);
        INSERT INTO node_text VALUES ('pic', 'ocr', 'words'), ('lib', 'text', 'code'), ('doc', 'pdf', '[page 1] words'),
            ('old', 'pdf', '[page 1]' || char(10) || ' [page 20]'), ('zip', 'text', 'PK' || char(3) || char(4) || 'x');
        INSERT INTO links (node_id, url) VALUES ('web', 'https://a.example');
        INSERT INTO pages VALUES ('web', '{"type":"doc","content":[{"type":"paragraph","content":[{"type":"text",
            "text":"kept "},{"type":"text","text":"note"}]},{"type":"paragraph"}]}', 1);
    )sql"));
    runDataSteps(db);
    runDataSteps(db);
    EXPECT_EQ(number(db, "PRAGMA user_version"), 2);
    EXPECT_FALSE(db.hasTable("search_body"));
    const auto left = db.query("SELECT node_id || ':' || source FROM node_text ORDER BY node_id",
        {}, [](const SQLRow& row) { return row.text(0); });
    EXPECT_EQ(*left, (std::vector<QString>{"doc:pdf", "lib:none"}));
    EXPECT_EQ(db.query("SELECT notes FROM links", {}, [](const SQLRow& row) { return row.text(0); })
                  ->front(),
        "kept note\n");
    EXPECT_EQ(number(db, "SELECT count(*) FROM nodes"), 6);
}

TEST(Library, reloadTakesInWhatAnotherProcessWroteAndNothingOlder)
{
    const TempFolder folder;
    Library library({folder.path(), true}, OpenMode::Application);
    ASSERT_TRUE(library.open(opened(folder.path())));
    auto other = SQLite::open(databasePath(library.root()));
    ASSERT_TRUE(other->execute(
        "INSERT INTO nodes (id, space_id, kind, title, position, created_at, updated_at) "
        "VALUES ('n', 's', 'whale', 'New', 'a0', 0, 0)"));
    library.reload();
    ASSERT_TRUE(turnUntil([&] { return library.node("n") && !library.isReloading(); }));
    EXPECT_EQ(library.node("n")->kind, NodeKind::File) << "an unknown word reads as a file";

    // The memory moves on while a read is under way: the read must not win.
    library.reload();
    Node local = *library.node("n");
    local.title = "Local";
    ASSERT_TRUE(library.connection().run("UPDATE nodes SET title = 'Local' WHERE id = 'n'"));
    library.took({{local, {}}});
    ASSERT_TRUE(turnUntil([&] { return !library.isReloading(); }));
    EXPECT_EQ(library.node("n")->title, "Local");
}
