#include "e2e/FolderPrint.h"
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QImage>

#include <sqlite3.h>

namespace {

// Each opening is a run of the program: it starts, comes to rest, tells its tree and ends. What a
// person does to the folder happens between two of them.
class LaterOpening : public testing::Test
{
protected:
    void SetUp() override { home.givenFolder({}); }

    Tree openOnce()
    {
        const FolderPrint before = printOf(home.library());
        Program program(home);
        program.settle();
        const Tree tree = program.tree();
        EXPECT_EQ(program.quit(), 0);
        EXPECT_EQ(differences(before, printOf(home.library())), QStringList());
        EXPECT_FALSE(tree.hasTwins());
        return tree;
    }

    void givenTitle(const QString& id, const QString& title)
    {
        sqlite3* database = nullptr;
        ASSERT_EQ(
            sqlite3_open(home.library(".corvelle/library.sqlite").toUtf8().constData(), &database),
            SQLITE_OK);
        const QString sql = QString("UPDATE nodes SET title = '%1' WHERE id = '%2'").arg(title, id);
        EXPECT_EQ(
            sqlite3_exec(database, sql.toUtf8().constData(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    static QPointF placeOf(const QJsonObject& node)
    {
        return {node["x"].toDouble(), node["y"].toDouble()};
    }

    Home home;
};

TEST_F(LaterOpening, changesNothingWhereNothingChanged)
{
    home.givenFile("a.txt");
    home.givenFile("Folder/b.txt");
    home.givenFile("picture.png", "no picture");
    home.givenLink("link", "a.txt");
    const Tree first = openOnce();
    EXPECT_EQ(openOnce().nodes(), first.nodes());
    EXPECT_EQ(openOnce().nodes(), first.nodes());
}

TEST_F(LaterOpening, givesARenamedFileItsNewTitleByTheNamesAlone)
{
    const struct
    {
        const char *what, *oldName, *title, *newName, *expected;
    } cases[] = {
        {"the whole name", "one.txt", "one.txt", "uno.txt", "uno.txt"},
        {"the name without its ending", "two.txt", "two", "due.txt", "due"},
        {"the same, and the ending goes", "three.txt", "three", "tre", "tre"},
        {"the same, with another ending", "four.txt", "four", "quattro.tar.gz", "quattro.tar"},
        {"a title of the person's own", "five.txt", "My five", "cinque.txt", "cinque.txt"},
        {"an old name without ending", "six", "six", "sei.txt", "sei.txt"},
        {"only case differs", "seven.txt", "seven", "SEVEN.txt", "SEVEN"},
    };
    for (const auto& c : cases)
        home.givenFile(c.oldName);
    const Tree before = openOnce();
    for (const auto& c : cases) {
        givenTitle(before.idAt(QString("My Space/") + c.oldName), c.title);
        home.moves(c.oldName, c.newName);
    }
    const Tree after = openOnce();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const QJsonObject old = before.at(QString("My Space/") + c.oldName);
        const QJsonObject node = after.at(QString("My Space/") + c.newName);
        EXPECT_EQ(node["id"], old["id"]);
        EXPECT_EQ(node["title"].toString(), c.expected);
        EXPECT_EQ(placeOf(node), placeOf(old));
        EXPECT_EQ(node["position"], old["position"]);
    }
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, letsAFileKeepItsCardInAnotherFolder)
{
    home.givenFile("a.txt");
    home.givenFile("own title.txt");
    home.givenFile("Box/there.txt");
    const Tree before = openOnce();
    const QString moved = before.idAt("My Space/a.txt"),
                  titled = before.idAt("My Space/own title.txt");
    givenTitle(titled, "Mine");
    home.moves("a.txt", "Box/a.txt");
    home.moves("own title.txt", "Box/own title.txt");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/Box/a.txt"), moved);
    EXPECT_EQ(after.node(moved)["parentID"].toString(), after.idAt("My Space/Box"));
    EXPECT_EQ(after.node(titled)["title"].toString(), "Mine"); // its name stayed
    // Below the card that was there: 160 + 112, and the gap of 160.
    EXPECT_EQ(placeOf(after.node(moved)), QPointF(0, 432));
    EXPECT_EQ(placeOf(after.node(titled)), QPointF(256, 432));
    EXPECT_GT(after.node(moved)["position"].toString(),
        after.at("My Space/Box/there.txt")["position"].toString());
}

TEST_F(LaterOpening, letsAMovedFolderKeepAllThatLiesInIt)
{
    home.givenFile("Work/Deep/a.txt");
    home.givenFile("Work/b.txt");
    home.givenFolder("Archive");
    const Tree before = openOnce();
    home.moves("Work", "Archive/Work 2023");
    const Tree after = openOnce();
    EXPECT_EQ(after.paths(),
        (QStringList{"My Space/Archive", "My Space/Archive/Work 2023",
            "My Space/Archive/Work 2023/Deep", "My Space/Archive/Work 2023/Deep/a.txt",
            "My Space/Archive/Work 2023/b.txt"}));
    for (const QString& below :
        {QString(), QString("/Deep"), QString("/Deep/a.txt"), QString("/b.txt")}) {
        SCOPED_TRACE(below.toStdString());
        const QJsonObject old = before.at("My Space/Work" + below);
        const QJsonObject node = after.at("My Space/Archive/Work 2023" + below);
        EXPECT_EQ(node["id"], old["id"]);
        if (!below.isEmpty()) {
            EXPECT_EQ(placeOf(node), placeOf(old));
            EXPECT_EQ(node["parentID"], old["parentID"]);
        }
    }
    EXPECT_EQ(after.at("My Space/Archive/Work 2023")["parentID"].toString(),
        after.idAt("My Space/Archive"));
    EXPECT_EQ(after.at("My Space/Archive/Work 2023")["title"].toString(), "Work 2023");
}

TEST_F(LaterOpening, findsAFileAgainInAFolderMadeMeanwhile)
{
    home.givenFile("a.txt");
    home.givenFile("Old/b.txt");
    const Tree before = openOnce();
    home.givenFile("New/Inner/fresh.txt");
    home.moves("a.txt", "New/a.txt");
    home.moves("Old", "New/Inner/Old");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/New/a.txt"), before.idAt("My Space/a.txt"));
    EXPECT_EQ(after.idAt("My Space/New/Inner/Old"), before.idAt("My Space/Old"));
    EXPECT_EQ(after.idAt("My Space/New/Inner/Old/b.txt"), before.idAt("My Space/Old/b.txt"));
    EXPECT_FALSE(after.idAt("My Space/New/Inner/fresh.txt").isEmpty());
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, findsAFileAgainThatLeftAFolderWhichWasRenamed)
{
    home.givenFile("Work/leaves.txt");
    home.givenFile("Work/stays.txt");
    home.givenFolder("Elsewhere");
    const Tree before = openOnce();
    home.moves("Work/leaves.txt", "Elsewhere/leaves.txt");
    home.moves("Work", "Work 2023");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/Elsewhere/leaves.txt"), before.idAt("My Space/Work/leaves.txt"));
    EXPECT_EQ(after.idAt("My Space/Work 2023/stays.txt"), before.idAt("My Space/Work/stays.txt"));
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, findsAFileAgainThatWentIntoAFolderWhichWasRenamed)
{
    home.givenFile("a.txt");
    home.givenFolder("Work");
    const Tree before = openOnce();
    home.moves("a.txt", "Work/a.txt");
    home.moves("Work", "Work 2023");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/Work 2023/a.txt"), before.idAt("My Space/a.txt"));
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, findsAFileAgainThatReturnsInsideANewFolder)
{
    home.givenFile("a.txt");
    home.givenFile("Folder/b.txt");
    const Tree before = openOnce();
    home.moves("a.txt", home.path("a.txt"));
    home.moves("Folder", home.path("Folder"));
    openOnce();
    home.givenFile("New/Inner/fresh.txt");
    home.moves(home.path("a.txt"), "New/Inner/a.txt");
    home.moves(home.path("Folder"), "New/Folder");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/New/Inner/a.txt"), before.idAt("My Space/a.txt"));
    EXPECT_EQ(after.idAt("My Space/New/Folder/b.txt"), before.idAt("My Space/Folder/b.txt"));
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, findsWhatLeftAFolderThatIsGone)
{
    home.givenFile("A/x.txt");
    home.givenFile("A/sub/y.txt");
    home.givenFolder("C");
    const Tree before = openOnce();
    home.moves("A/x.txt", "C/x.txt");
    home.givenFolder("D");
    home.moves("A/sub", "D/sub");
    home.removes("A");
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/C/x.txt"), before.idAt("My Space/A/x.txt"));
    EXPECT_EQ(after.idAt("My Space/D/sub"), before.idAt("My Space/A/sub"));
    EXPECT_EQ(after.idAt("My Space/D/sub/y.txt"), before.idAt("My Space/A/sub/y.txt"));
    EXPECT_TRUE(after.isInTrash(before.idAt("My Space/A")));
    EXPECT_EQ(openOnce().nodes(), after.nodes());
}

TEST_F(LaterOpening, followsFoldersRenamedOneInsideTheOther)
{
    QString old, fresh;
    for (int level = 0; level < 9; ++level)
        old += QString("old%1/").arg(level);
    home.givenFile(old + "deep.txt");
    const Tree before = openOnce();
    for (int level = 0; level < 9; ++level) {
        home.moves(fresh + QString("old%1").arg(level), fresh + QString("new%1").arg(level));
        fresh += QString("new%1/").arg(level);
    }
    home.givenFile("more.txt");
    const Tree after = openOnce();
    EXPECT_EQ(
        after.idAt("My Space/" + fresh + "deep.txt"), before.idAt("My Space/" + old + "deep.txt"));
    EXPECT_FALSE(after.idAt("My Space/more.txt").isEmpty());
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, followsWhatLiesInFoldersThatChangedNames)
{
    home.givenFile("A/in a.txt");
    home.givenFile("B/in b.txt");
    const Tree before = openOnce();
    home.moves("A", "between");
    home.moves("B", "A");
    home.moves("between", "B");
    const Tree after = openOnce();
    EXPECT_EQ(after.paths(),
        (QStringList{"My Space/A", "My Space/A/in b.txt", "My Space/B", "My Space/B/in a.txt"}));
    EXPECT_EQ(after.idAt("My Space/B/in a.txt"), before.idAt("My Space/A/in a.txt"));
    EXPECT_EQ(after.idAt("My Space/A/in b.txt"), before.idAt("My Space/B/in b.txt"));
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, doesNotGuessWhichOfTwoHardLinksAFileBecame)
{
    home.givenFile("a.txt");
    const Tree before = openOnce();
    home.moves("a.txt", "b.txt");
    ASSERT_EQ(::link(QFile::encodeName(home.space("b.txt")).constData(),
                  QFile::encodeName(home.space("c.txt")).constData()),
        0);
    const Tree after = openOnce();
    EXPECT_EQ(after.paths(), (QStringList{"My Space/b.txt", "My Space/c.txt"}));
    EXPECT_TRUE(after.isInTrash(before.idAt("My Space/a.txt")));
    EXPECT_EQ(openOnce().nodes(), after.nodes());
}

TEST_F(LaterOpening, followsTwoFilesThatChangedNames)
{
    home.givenFile("a.txt", "first");
    home.givenFile("b.txt", "second!");
    const Tree before = openOnce();
    home.moves("a.txt", "c.txt");
    home.moves("b.txt", "a.txt");
    const Tree after = openOnce();
    // What lies at "a.txt" is the card of that path, with the facts of what lies there now.
    EXPECT_EQ(after.paths(), (QStringList{"My Space/a.txt", "My Space/c.txt"}));
    EXPECT_EQ(after.at("My Space/a.txt")["byteSize"].toInt(), 7);
    EXPECT_EQ(after.at("My Space/c.txt")["byteSize"].toInt(), 5);
}

TEST_F(LaterOpening, takesAFileThatGotAFreedInodeForANewOne)
{
    home.givenFile("old.txt", "1");
    const Tree before = openOnce();
    struct stat facts = {};
    ASSERT_EQ(::stat(QFile::encodeName(home.space("old.txt")).constData(), &facts), 0);
    const ino_t inode = facts.st_ino;
    home.removes("old.txt");
    home.givenFile("new.txt", "1");
    ASSERT_EQ(::stat(QFile::encodeName(home.space("new.txt")).constData(), &facts), 0);
    if (facts.st_ino != inode)
        GTEST_SKIP() << "this disk gave another inode";
    const Tree after = openOnce();
    EXPECT_NE(after.idAt("My Space/new.txt"), before.idAt("My Space/old.txt"));
    EXPECT_TRUE(after.isInTrash(before.idAt("My Space/old.txt")));
}

TEST_F(LaterOpening, takesAFolderInAFilesPlaceForSomethingElse)
{
    home.givenFile("thing", "a file");
    home.givenFile("box/inside.txt");
    const Tree before = openOnce();
    home.removes("thing");
    home.givenFile("thing/inner.txt");
    home.removes("box");
    home.givenFile("box", "a file now");
    const Tree after = openOnce();
    EXPECT_EQ(
        after.paths(), (QStringList{"My Space/box", "My Space/thing", "My Space/thing/inner.txt"}));
    EXPECT_EQ(after.at("My Space/box")["kind"].toString(), "file");
    EXPECT_EQ(after.at("My Space/thing")["kind"].toString(), "folder");
    EXPECT_TRUE(after.isInTrash(before.idAt("My Space/thing")));
    EXPECT_TRUE(after.isInTrash(before.idAt("My Space/box/inside.txt")));
}

TEST_F(LaterOpening, takesWhatIsGoneToTheTrashAndBackWhenItReturns)
{
    home.givenFile("a.txt");
    home.givenFile("Folder/Inner/b.txt");
    const Tree first = openOnce();
    home.moves("a.txt", home.path("a.txt"));
    home.moves("Folder", home.path("Folder"));
    const Tree without = openOnce();
    EXPECT_EQ(without.paths(), QStringList());
    for (const char* path : {"a.txt", "Folder", "Folder/Inner", "Folder/Inner/b.txt"}) {
        const QString id = first.idAt(QString("My Space/") + path);
        EXPECT_TRUE(without.isInTrash(id)) << path;
        EXPECT_EQ(without.node(id)["deletedAt"].isNull(), QString(path).startsWith("Folder/"))
            << path;
    }
    home.moves(home.path("a.txt"), "again.txt");
    home.moves(home.path("Folder"), "Folder again");
    const Tree back = openOnce();
    EXPECT_EQ(back.idAt("My Space/again.txt"), first.idAt("My Space/a.txt"));
    EXPECT_EQ(back.at("My Space/again.txt")["title"].toString(), "again.txt");
    EXPECT_EQ(back.idAt("My Space/Folder again"), first.idAt("My Space/Folder"));
    EXPECT_EQ(
        back.idAt("My Space/Folder again/Inner/b.txt"), first.idAt("My Space/Folder/Inner/b.txt"));
    EXPECT_EQ(back.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, keepsATrashedFileApartFromANewOneOfItsName)
{
    home.givenFile("a.txt", "the old one");
    const Tree first = openOnce();
    const QString old = first.idAt("My Space/a.txt");
    home.moves("a.txt", home.path("away.txt"));
    openOnce();
    home.givenFile("a.txt", "new");
    const Tree second = openOnce();
    EXPECT_NE(second.idAt("My Space/a.txt"), old);
    EXPECT_TRUE(second.isInTrash(old));
    home.moves(home.path("away.txt"), "back.txt");
    const Tree third = openOnce();
    EXPECT_EQ(third.idAt("My Space/back.txt"), old);
    EXPECT_EQ(third.node(old)["title"].toString(), "back.txt");
    EXPECT_EQ(third.idAt("My Space/a.txt"), second.idAt("My Space/a.txt"));
}

TEST_F(LaterOpening, tellsTheNewSizeOfAChangedFile)
{
    home.givenFile("a.txt", "short");
    QImage picture(10, 20, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    ASSERT_TRUE(picture.save(home.space("p.png"), "PNG"));
    const Tree before = openOnce();
    home.givenFile("a.txt", "much longer now");
    ASSERT_TRUE(picture.scaled(40, 30).save(home.space("p.png"), "PNG"));
    const Tree after = openOnce();
    EXPECT_EQ(after.idAt("My Space/a.txt"), before.idAt("My Space/a.txt"));
    EXPECT_EQ(after.at("My Space/a.txt")["byteSize"].toInt(), 15);
    EXPECT_EQ(after.idAt("My Space/p.png"), before.idAt("My Space/p.png"));
    EXPECT_EQ(after.at("My Space/p.png")["width"].toInt(), 40);
    EXPECT_EQ(after.at("My Space/p.png")["height"].toInt(), 30);
    EXPECT_EQ(
        after.at("My Space/p.png")["byteSize"].toInteger(), QFileInfo(home.space("p.png")).size());
}

TEST_F(LaterOpening, keepsTheCardOfAFileSavedThroughATemporaryOne)
{
    home.givenFile("a.txt", "old");
    const Tree before = openOnce();
    home.givenFile("a.txt.new", "new words");
    home.moves("a.txt.new", "a.txt");
    const Tree after = openOnce();
    EXPECT_EQ(after.paths(), QStringList{"My Space/a.txt"});
    EXPECT_EQ(after.idAt("My Space/a.txt"), before.idAt("My Space/a.txt"));
    EXPECT_EQ(after.at("My Space/a.txt")["byteSize"].toInt(), 9);
    EXPECT_EQ(after.trashedPaths(), QStringList());
}

TEST_F(LaterOpening, takesNothingToTheTrashWhereTheDiskWentAway)
{
    home.givenFile("a.txt");
    home.givenFile("Folder/b.txt");
    const Tree before = openOnce();
    ASSERT_TRUE(QDir().rename(home.space(), home.path("kept")));
    EXPECT_EQ(openOnce().nodes(), before.nodes()); // the space is not there at all
    home.givenFolder({});                          // an empty place where a disk was
    EXPECT_EQ(openOnce().nodes(), before.nodes());
    EXPECT_EQ(openOnce().nodes(), before.nodes());
    ASSERT_TRUE(QDir().rmdir(home.space()) && QDir().rename(home.path("kept"), home.space()));
    EXPECT_EQ(openOnce().nodes(), before.nodes());
}

TEST_F(LaterOpening, takesTheLastFileToTheTrashWhereTheSpaceIsTheSame)
{
    home.givenFile("a.txt");
    openOnce();
    home.removes("a.txt");
    const Tree after = openOnce();
    EXPECT_EQ(after.paths(), QStringList());
    EXPECT_EQ(after.trashedPaths(), QStringList{"My Space/a.txt"});
}

TEST_F(LaterOpening, takesNothingToTheTrashThatLiesInAFolderItCannotList)
{
    home.givenFile("Shut/a.txt");
    home.givenFile("Shut/Inner/b.txt");
    const Tree before = openOnce();
    for (const mode_t rights :
        {0000, 0444}) { // not even listed; listed, but nothing told of what is in it
        ASSERT_EQ(::chmod(QFile::encodeName(home.space("Shut")).constData(), rights), 0);
        EXPECT_EQ(openOnce().nodes(), before.nodes()) << rights;
    }
    ::chmod(QFile::encodeName(home.space("Shut")).constData(), 0700);
    EXPECT_EQ(openOnce().nodes(), before.nodes());
}

} // namespace
