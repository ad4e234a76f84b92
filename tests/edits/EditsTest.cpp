#include "edits/EditedLibrary.h"
#include "library/FileNames.h"
#include "platform/FileMoves.h"

#include <sqlite3.h>

#include <cerrno>
#include <unistd.h>

using namespace corvelle;

namespace {

class EditsTest : public testing::Test
{
protected:
    ~EditsTest() override { injectDiskFault(nullptr); }

    QString space(const QString& below = {}) const
    {
        return folder.path("My Space") + (below.isEmpty() ? QString() : "/" + below);
    }
    void givenFile(const QString& below, const QByteArray& words = "words")
    {
        folder.makeFile("My Space/" + below, words);
        ASSERT_TRUE(lib.look());
    }
    QByteArray words(const QString& path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
    }
    // Another process changes a row.
    void elsewhere(const QByteArray& sql)
    {
        auto other = SQLite::open(databasePath(lib.library.root()));
        ASSERT_TRUE(other && other->run(sql));
    }

    TempFolder folder;
    EditedLibrary lib{folder.path()};
};

int fullDisk(const char*, const QByteArray&)
{
    return ENOSPC;
}
int otherDevice(const char* step, const QByteArray& path)
{
    return qstrcmp(step, "rename") == 0 && !path.contains(".part") ? EXDEV : 0;
}
int failCommit(void*)
{
    return 1;
}

} // namespace

TEST(FileNames, titlesOfAnyShapeGiveASafeName)
{
    const struct
    {
        QString title, name;
    } cases[] = {{"../x", "-x"}, {"..", "Corvelle"}, {"/", "-"}, {" \n\t ", "Corvelle"},
        {QString("a") + QChar(u'\0') + "b", "ab"}, {"report.", "report."}, {".hidden", "hidden"},
        {u"שלום"_qs, u"שלום"_qs}, {" two\nlines ", "two\nlines"},
        {QString(QChar(0xD83D)) + "x", "?x"}, {"old~", "old~-"}, {"~$draft", "draft"},
        {"Pods", "Pods-"}, {"build.tmp", "build.tmp-"}, {"#x#", "#x#-"}, {"4913", "4913-"}};
    for (const auto& each : cases)
        EXPECT_EQ(safeFileName(each.title), each.name) << each.title.toStdString();
    const QString longName = safeFileName(QString(300, 'a') + ".pdf");
    EXPECT_TRUE(longName.endsWith("a.pdf"));
    EXPECT_LT(longName.toUtf8().size(), 241);
    EXPECT_GE(longName.toUtf8().size(), 241 - 8);
    const QString family = QString::fromUtf8("👨‍👩‍👧");
    const QString emoji = safeFileName(family.repeated(100));
    EXPECT_LT(emoji.toUtf8().size(), 241);
    EXPECT_EQ(emoji.size() % family.size(), 0) << "only whole characters are cut";
    EXPECT_EQ(safeFileName("a" + QString(QChar(0x301)).repeated(500)), "Corvelle")
        << "nothing is left of one endless character";
}

TEST_F(EditsTest, whatIsTypedStandsOnTheCardAndASafeNameOnDisk)
{
    for (const QString& title : {QString("../../escape"), QString("/etc/passwd"), QString(300, 'x'),
             QString::fromUtf8("Ω🎉 straße"), QString("tail...")}) {
        const QString id = lib.folder(title);
        ASSERT_FALSE(id.isEmpty()) << title.toStdString();
        EXPECT_EQ(lib.node(id).title, title);
        EXPECT_EQ(QFileInfo(lib.path(id)).absolutePath(), space()) << title.toStdString();
        EXPECT_TRUE(QFileInfo(lib.path(id)).isDir());
        const QString page = lib.make(NodeKind::Page, "p");
        EXPECT_TRUE(lib.edits.rename(page, title + "\nnext"));
        EXPECT_EQ(lib.node(page).title, title + " next");
    }
    EXPECT_EQ(lib.node(lib.folder("  ")).title, "New folder");
    EXPECT_EQ(lib.node(lib.make(NodeKind::Page, QString(QChar(u'\0')))).title, "Corvelle");
}

TEST_F(EditsTest, renamingKeepsTheExtensionAndTheTypedTitle)
{
    givenFile("report.pdf");
    const QString id = lib.find("report.pdf");
    EXPECT_TRUE(lib.edits.rename(id, "summary"));
    EXPECT_EQ(lib.node(id).title, "summary");
    EXPECT_EQ(lib.path(id), space("summary.pdf"));
    EXPECT_TRUE(lib.edits.rename(id, "Summary"));
    EXPECT_EQ(lib.path(id), space("Summary.pdf")) << "a change of case needs no number";
    EXPECT_FALSE(lib.edits.rename(id, "Summary"));
    EXPECT_FALSE(lib.edits.rename(id, "  \n"));
    folder.makeFile("My Space/taken.pdf", "other");
    EXPECT_TRUE(lib.edits.rename(id, "taken"));
    EXPECT_EQ(lib.path(id), space("taken 2.pdf"));
    EXPECT_EQ(words(space("taken.pdf")), "other") << "nothing is ever replaced";
}

TEST_F(EditsTest, aFolderTakesAllBelowItAlong)
{
    const QString outer = lib.folder("Outer"), inner = lib.folder("Inner", outer);
    givenFile("Outer/Inner/deep.txt");
    const QString deep = lib.find("deep.txt");
    EXPECT_TRUE(lib.edits.rename(outer, "Renamed"));
    EXPECT_EQ(lib.path(deep), space("Renamed/Inner/deep.txt"));
    lib.done();
    EXPECT_TRUE(lib.edits.move({{outer, {0, 0}}}, inner).empty()) << "into its own child";
    const QString other = lib.folder("Other");
    EXPECT_EQ(lib.edits.move({{inner, {5, 6}}}, other).size(), 1u);
    lib.done();
    EXPECT_EQ(words(lib.path(deep)), "words");
    EXPECT_EQ(lib.edits.trash({other}).size(), 1u);
    EXPECT_TRUE(lib.library.isInTrash(deep));
    EXPECT_TRUE(lib.node(deep).isLive()) << "children stay live in a trashed folder";
    EXPECT_EQ(words(lib.path(deep)), "words");
    while (lib.undo()) {
    }
    EXPECT_TRUE(lib.failures.isEmpty()) << lib.lastFailure().toStdString();
    while (lib.redo()) {
    }
    EXPECT_TRUE(lib.library.isInTrash(deep));
    EXPECT_EQ(words(lib.path(deep)), "words");
}

TEST_F(EditsTest, parentsThatCannotTakeAnythingSayWhy)
{
    const QString trashed = lib.folder("Bin");
    lib.edits.trash({trashed});
    EXPECT_TRUE(lib.make(NodeKind::Page, "x", trashed).isEmpty());
    EXPECT_EQ(lib.lastFailure(),
        "That folder is in the Trash. Put it back first, or choose another folder.");
    EXPECT_TRUE(lib.make(NodeKind::Page, "x", "no such id").isEmpty());
    EXPECT_EQ(lib.lastFailure(), "That folder no longer exists. Choose another folder.");
    const QString lost = lib.folder("Lost");
    QDir(lib.path(lost)).removeRecursively();
    EXPECT_TRUE(lib.make(NodeKind::Page, "x", lost).isEmpty());
    EXPECT_EQ(
        lib.lastFailure(), QString::fromUtf8("Can’t find “Lost” in the library folder. If it was "
                                             "renamed or moved in Finder, put it back as it was."));
    const QString page = lib.make(NodeKind::Page, "page");
    QDir(space()).rename(space(), folder.path("elsewhere"));
    EXPECT_TRUE(lib.edits.move({{page, {1, 1}}}, QString()).empty());
    EXPECT_FALSE(QFileInfo::exists(space())) << "the space's folder is never made again";
}

TEST_F(EditsTest, aFileWhoseFolderIsInTheTrashComesBackAtTheTop)
{
    const QString home = lib.folder("Home");
    givenFile("Home/a.txt");
    const QString file = lib.find("a.txt");
    lib.edits.trash({file});
    lib.edits.trash({home});
    folder.makeFile("My Space/a.txt", "another");
    ASSERT_EQ(lib.edits.restore({file}).size(), 1u);
    EXPECT_TRUE(lib.node(file).parentID.isEmpty());
    EXPECT_EQ(lib.path(file), space("a 2.txt"));
    EXPECT_EQ(words(lib.path(file)), "words");
    EXPECT_FALSE(QFileInfo::exists(folder.path(".corvelle/Trash/" + file)));
    QDir(folder.path(".corvelle/Trash/" + home)).removeRecursively();
    EXPECT_TRUE(lib.edits.restore({home}).empty());
    EXPECT_EQ(lib.lastFailure(), QString::fromUtf8("Couldn’t put back “Home”. Try again."));
}

TEST_F(EditsTest, deletingForGoodTakesAllBelowAndNoFileOutside)
{
    const TempFolder outside;
    outside.makeFile("keep/inner.txt");
    outside.makeFile("keep/inner2.txt");
    ASSERT_EQ(::symlink(outside.path("keep").toUtf8(), space("link").toUtf8()), 0);
    const QString home = lib.folder("Home");
    givenFile("Home/a.txt");
    ASSERT_EQ(::symlink(outside.path("keep").toUtf8(), space("Home/to keep").toUtf8()), 0);
    ASSERT_TRUE(lib.look());
    const QString file = lib.find("a.txt");
    lib.edits.trash({home});
    EXPECT_TRUE(lib.edits.deleteForGood({home}));
    ASSERT_TRUE(lib.settle());
    EXPECT_FALSE(lib.library.node(home));
    EXPECT_FALSE(lib.library.node(file));
    EXPECT_FALSE(QFileInfo::exists(folder.path(".corvelle/Trash/" + home)));
    EXPECT_TRUE(QFileInfo::exists(outside.path("keep/inner.txt"))) << "a link is never followed";
    const size_t steps = lib.manager.undoNames().size();
    EXPECT_TRUE(lib.undo());
    EXPECT_EQ(
        lib.refusals.last(), QString::fromUtf8("Couldn’t undo Move to Trash | What it changed "
                                               "was deleted for good."));
    EXPECT_EQ(lib.manager.undoNames().size(), steps - 1) << "the next step stands there";
}

TEST_F(EditsTest, linkedFilesAreNeverTouchedAndStayForgotten)
{
    // Not below the temporary folder, from which files are copied in.
    const QString outside = QDir::homePath() + "/corvelle-linked-test";
    QDir(outside).removeRecursively();
    ASSERT_TRUE(QDir().mkpath(outside + "/below"));
    QFile file(outside + "/below/a.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    lib.addFiles.add({outside}, {}, {});
    ASSERT_TRUE(lib.settle());
    const QString top = lib.find("corvelle-linked-test"), inner = lib.find("a.txt");
    ASSERT_FALSE(inner.isEmpty());
    EXPECT_EQ(lib.node(inner).path, file.fileName());
    EXPECT_TRUE(lib.edits.rename(inner, "other"));
    EXPECT_TRUE(file.exists()) << "only the title";
    lib.edits.trash({top});
    EXPECT_TRUE(lib.edits.deleteForGood({top}));
    ASSERT_TRUE(lib.settle());
    EXPECT_TRUE(file.exists());
    int forgotten = 0;
    ASSERT_TRUE(lib.library.connection().each("SELECT path FROM forgotten_links", {},
        [&](const SQLRow& row) { forgotten += row.text(0) == outside ? 1 : 100; }));
    EXPECT_EQ(forgotten, 1) << "the topmost path alone";
    lib.addFiles.add({outside}, {}, {});
    ASSERT_TRUE(lib.settle());
    EXPECT_FALSE(lib.find("a.txt").isEmpty()) << "adding it by hand brings it back";
    QDir(outside).removeRecursively();
}

TEST_F(EditsTest, volatileFilesAreCopiedInAndNothingIsAddedTwice)
{
    const TempFolder outside;
    outside.makeFile("dropped/a.txt", "dropped words");
    lib.addFiles.add({outside.path("dropped"), outside.path("dropped/a.txt")}, {}, {});
    lib.addFiles.add({outside.path("dropped")}, {}, {});
    EXPECT_EQ(lib.lastFailure(), QString::fromUtf8("“dropped” is still being added."));
    ASSERT_TRUE(lib.settle());
    EXPECT_EQ(words(space("dropped/a.txt")), "dropped words");
    EXPECT_EQ(lib.library.tree().size(), 2);
    EXPECT_TRUE(QDir(folder.path(".corvelle/staging")).isEmpty());
    ASSERT_TRUE(lib.look());
    EXPECT_EQ(lib.library.tree().size(), 2) << "the look finds nothing new";
    lib.addFiles.add({lib.path(lib.find("a.txt"))}, {}, {});
    ASSERT_TRUE(lib.settle());
    EXPECT_EQ(lib.library.tree().size(), 2) << "what has a card isn't added again";
    EXPECT_TRUE(lib.undo());
    EXPECT_TRUE(lib.library.children({}).empty()) << "the undo takes all of it to the Trash";
    lib.addFiles.add({outside.path("not there")}, {}, {});
    EXPECT_EQ(lib.lastFailure(), QString::fromUtf8("Couldn’t add “not there”. Try again."));
}

TEST_F(EditsTest, duplicatesTakeEverythingAlong)
{
    const QString home = lib.folder("Home"), inner = lib.folder("Inner", home);
    const QString page = lib.make(NodeKind::Page, "Page", inner);
    ASSERT_TRUE(lib.pageSaves.saveNow(page, "{\"type\":\"doc\"}", "some words"));
    lib.make(NodeKind::Link, "Link", home);
    givenFile("Home/Inner/a.txt", "copied words");
    lib.duplicates.duplicate({home, page});
    ASSERT_TRUE(lib.settle());
    const QString copy = lib.find("Home copy");
    ASSERT_FALSE(copy.isEmpty());
    EXPECT_EQ(words(space("Home copy/Inner/a.txt")), "copied words");
    EXPECT_EQ(lib.library.children(copy).size(), 2u);
    EXPECT_FALSE(lib.find("Page copy").isEmpty());
    int texts = 0, docs = 0;
    ASSERT_TRUE(
        lib.library.connection().each("SELECT text FROM node_text WHERE text = 'some words'", {},
            [&](const SQLRow&) { ++texts; }));
    ASSERT_TRUE(lib.library.connection().each("SELECT doc FROM pages", {},
        [&](const SQLRow& row) { docs += row.text(0) == "{\"type\":\"doc\"}"; }));
    EXPECT_EQ(texts, 3) << "the page, its copy in the folder's copy, and its own copy";
    EXPECT_EQ(docs, 3);
    ASSERT_TRUE(lib.look());
    EXPECT_EQ(lib.manager.undoActionName(), "Duplicate");
    EXPECT_TRUE(lib.undo());
    EXPECT_TRUE(lib.library.isInTrash(copy));
}

// ---- when something fails ----

TEST_F(EditsTest, aFullDiskAFailingCommitAndABusyDatabaseChangeNothing)
{
    const QString home = lib.folder("Home"), other = lib.folder("Other");
    givenFile("Home/a.txt");
    const QString file = lib.find("a.txt");
    const auto tryAll = [&] {
        EXPECT_FALSE(lib.edits.rename(home, "Renamed"));
        EXPECT_TRUE(lib.edits.move({{file, {1, 1}}}, other).empty());
        EXPECT_TRUE(lib.edits.trash({home}).empty());
        EXPECT_TRUE(lib.folder("New").isEmpty());
    };
    const auto isAsBefore = [&](const char* fault) {
        EXPECT_EQ(words(space("Home/a.txt")), "words") << fault;
        EXPECT_EQ(lib.path(file), space("Home/a.txt")) << fault;
        EXPECT_EQ(lib.node(home).title, "Home") << fault;
        EXPECT_FALSE(QFileInfo::exists(space("New"))) << fault << ": a folder was left behind";
        EXPECT_TRUE(QDir(folder.path(".corvelle/Trash")).isEmpty()) << fault;
        const auto row = lib.library.connection().query("SELECT path FROM nodes WHERE id = ?",
            {file}, [](const SQLRow& r) { return r.text(0); });
        EXPECT_EQ(row->front(), "My Space/Home/a.txt") << fault;
    };
    const size_t steps = lib.manager.undoNames().size();
    injectDiskFault(fullDisk);
    tryAll();
    injectDiskFault(nullptr);
    isAsBefore("full disk");
    EXPECT_TRUE(
        lib.failures.contains(QString::fromUtf8("Couldn’t rename “Home”: there isn’t enough space "
                                                "on the disk. Free up some space, then try "
                                                "again.")));
    EXPECT_TRUE(
        lib.failures.contains(QString::fromUtf8("Couldn’t move “Home” to the Trash. Try again.")));

    sqlite3* handle = lib.library.connection().handle();
    sqlite3_commit_hook(handle, failCommit, nullptr);
    tryAll();
    EXPECT_FALSE(lib.edits.savePositions({{file, {9, 9}}}));
    EXPECT_FALSE(lib.edits.deleteForGood({home}));
    sqlite3_commit_hook(handle, nullptr, nullptr);
    isAsBefore("failing commit");
    EXPECT_NE(lib.node(file).x, 9);

    auto other2 = SQLite::open(databasePath(lib.library.root()));
    ASSERT_TRUE(other2->execute("BEGIN IMMEDIATE"));
    ASSERT_TRUE(lib.library.connection().execute("PRAGMA busy_timeout = 10"));
    tryAll();
    ASSERT_TRUE(other2->execute("ROLLBACK"));
    isAsBefore("busy database");
    EXPECT_EQ(lib.manager.undoNames().size(), steps) << "what failed is no step";
    EXPECT_TRUE(lib.edits.rename(home, "Renamed")) << "and all goes on";
}

TEST_F(EditsTest, anotherDeviceIsCopiedToSyncedAndThenEmptied)
{
    const QString home = lib.folder("Home"), other = lib.folder("Other");
    givenFile("Home/a.txt");
    ASSERT_EQ(::symlink("/etc", space("Home/link").toUtf8()), 0);
    injectDiskFault(otherDevice);
    EXPECT_EQ(lib.edits.move({{home, {1, 1}}}, other).size(), 1u);
    EXPECT_EQ(words(space("Other/Home/a.txt")), "words");
    EXPECT_TRUE(QFileInfo(space("Other/Home/link")).isSymLink());
    EXPECT_FALSE(QFileInfo::exists(space("Home")));
    EXPECT_TRUE(QFileInfo::exists("/etc/passwd"));
    EXPECT_TRUE(QDir(space("Other"))
                    .entryList(QDir::Hidden | QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot) ==
                QStringList("Home"));

    // More than it copies: nothing happens.
    QFile big(space("big.bin"));
    ASSERT_TRUE(big.open(QIODevice::WriteOnly) && big.resize(mostBytesMovedAcrossDevices + 1));
    big.close();
    injectDiskFault(nullptr);
    ASSERT_TRUE(lib.look());
    injectDiskFault(otherDevice);
    EXPECT_TRUE(lib.edits.move({{lib.find("big.bin"), {1, 1}}}, other).empty());
    EXPECT_TRUE(QFileInfo::exists(space("big.bin")));
    EXPECT_FALSE(QFileInfo::exists(space("Other/big.bin")));
}

// ---- refusals ----

TEST_F(EditsTest, undoRefusesWhatWasChangedSinceAndTheRestStays)
{
    const QString a = lib.folder("A"), b = lib.folder("B"), c = lib.folder("C");
    const size_t base = lib.manager.undoNames().size();
    const auto expectRefusal = [&](const QString& step, const char* reason) {
        lib.refusals.clear();
        EXPECT_TRUE(lib.undo());
        ASSERT_EQ(lib.refusals.size(), 1) << reason;
        EXPECT_EQ(lib.refusals.front(),
            QString::fromUtf8("Couldn’t undo ") + step + " | " + QString::fromUtf8(reason));
        EXPECT_EQ(lib.manager.undoNames().size(), base) << reason;
    };
    lib.edits.rename(a, "A1");
    lib.done();
    elsewhere("UPDATE nodes SET title = 'X' WHERE title = 'A1'");
    expectRefusal("Rename", "“X” was renamed since.");

    lib.edits.setColor({b}, lib.node(b).color == NodeColor::Red ? NodeColor::Blue : NodeColor::Red);
    lib.done();
    elsewhere("UPDATE nodes SET color = 'yellow' WHERE title = 'B'");
    expectRefusal("Change Colour", "“B” was given another colour since.");

    lib.edits.savePositions({{b, {500, 500}}});
    lib.done();
    elsewhere("UPDATE nodes SET x = x + 0.6 WHERE title = 'B'");
    expectRefusal("Move", "“B” was moved since.");
    lib.edits.savePositions({{b, {700, 500}}});
    lib.done();
    elsewhere("UPDATE nodes SET x = x + 0.4 WHERE title = 'B'");
    EXPECT_TRUE(lib.undo());
    EXPECT_NEAR(lib.node(b).x, 500.6, 0.01) << "less than half a point is nothing";
    EXPECT_TRUE(lib.redo());
    EXPECT_TRUE(lib.undo());

    const QString page = lib.make(NodeKind::Page, "Page");
    lib.edits.move({{page, {0, 0}}}, b);
    lib.done();
    elsewhere("UPDATE nodes SET parent_id = '" + c.toUtf8() + "' WHERE title = 'Page'");
    lib.refusals.clear();
    EXPECT_TRUE(lib.undo());
    EXPECT_EQ(lib.refusals.value(0),
        QString::fromUtf8("Couldn’t undo Move | “Page” was moved to another folder since."));
    lib.edits.move({{page, {0, 0}}}, b);
    lib.done();
    elsewhere("UPDATE nodes SET deleted_at = 5 WHERE title = 'Page'");
    lib.refusals.clear();
    EXPECT_TRUE(lib.undo());
    EXPECT_EQ(
        lib.refusals.value(0), QString::fromUtf8("Couldn’t undo Move | “Page” is in the Trash."));

    // Of two nodes one is gone for good: the other is still taken back.
    const QString d = lib.folder("D"), e = lib.folder("E");
    lib.edits.trash({d, e});
    lib.done();
    ASSERT_TRUE(lib.edits.deleteForGood({d}));
    EXPECT_TRUE(lib.undo());
    EXPECT_FALSE(lib.library.isInTrash(e));
    EXPECT_TRUE(lib.redo());
    EXPECT_TRUE(lib.library.isInTrash(e));
}

TEST_F(EditsTest, anUndoWhoseOperationFailsEndsItsStep)
{
    const QString a = lib.folder("A");
    lib.edits.rename(a, "B");
    lib.done();
    injectDiskFault(fullDisk);
    EXPECT_TRUE(lib.undo());
    injectDiskFault(nullptr);
    EXPECT_EQ(lib.node(a).title, "B");
    EXPECT_FALSE(lib.manager.canRedo());
    EXPECT_EQ(lib.manager.undoActionName(), "New Folder");
}

// ---- pages ----

TEST_F(EditsTest, aSaveThatWasOvertakenLeavesTheLaterWords)
{
    const QString page = lib.make(NodeKind::Page, "P");
    const double first = *lib.pageSaves.stamp(page);
    lib.pageSaves.save(page, "{\"a\":1}", "early");
    const auto late = lib.pageSaves.saveNow(page, "{\"a\":2}", "late");
    ASSERT_TRUE(late);
    EXPECT_GT(*late, first);
    EXPECT_FALSE(lib.pageSaves.saveNow(page, "{\"a\":3}", "lost", first)) << "the stamp moved on";
    lib.pageSaves.drain();
    QString words;
    ASSERT_TRUE(lib.library.connection().each("SELECT text FROM node_text WHERE node_id = ?",
        {page}, [&](const SQLRow& row) { words = row.text(0); }));
    EXPECT_EQ(words, "late");
}
