// Items that are linked from outside stay with their files, and nothing is done to those.
#include "edits/EditedLibrary.h"
#include "edits/OwnMounts.h"

#include "library/LinkBookmarks.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace corvelle;

namespace {

class LinkSyncTest : public testing::Test
{
protected:
    void open()
    {
        lib = std::make_unique<EditedLibrary>(folder.path());
        lib->linkSync.setDelays({40, 120, 10, 60});
        lib->diskSync.setDelays({1, 40, 120});
        lib->diskSync.watch();
        lib->linkSync.start();
        ASSERT_TRUE(lib->settle());
    }
    void SetUp() override { open(); }
    QString add(const QString& path)
    {
        lib->addFiles.add({outside.path(path)}, {}, {});
        settle();
        return lib->find(QFileInfo(path).fileName());
    }
    void settle()
    {
        lib->linkSync.catchUp();
        lib->diskSync.catchUp();
        ASSERT_TRUE(lib->settle());
    }
    void move(const QString& from, const QString& to) const
    {
        QDir().mkpath(QFileInfo(outside.path(to)).path());
        ASSERT_EQ(
            ::rename(QFile::encodeName(outside.path(from)), QFile::encodeName(outside.path(to))), 0)
            << from.toStdString();
    }
    void remove(const QString& path) const
    {
        const QString absolute = outside.path(path);
        EXPECT_TRUE(QFileInfo(absolute).isDir() ? QDir(absolute).removeRecursively()
                                                : QFile::remove(absolute));
    }
    bool isMissing(const QString& id) const { return lib->library.isMissing(id); }
    bool isInTrash(const QString& id) const { return lib->library.isInTrash(id); }
    int live() const
    {
        int count = 0;
        lib->library.tree().eachNode([&](const Node& node, const SeenFile&) {
            count += lib->library.isInTrash(node.id) ? 0 : 1;
        });
        return count;
    }
    int rows(const QByteArray& table) const
    {
        int count = 0;
        EXPECT_TRUE(lib->library.connection().each(
            "SELECT 1 FROM " + table, {}, [&](const SQLRow&) { ++count; }));
        return count;
    }

    TempFolder folder;
    TempFolder outside{QDir::homePath()};
    std::unique_ptr<EditedLibrary> lib;
};

} // namespace

TEST_F(LinkSyncTest, aLinkedFileIsFollowedWhereverAWatchedFolderShowsIt)
{
    outside.makeFile("a/report.txt");
    outside.makeFile("b/other.txt");
    const QString report = add("a/report.txt"), other = add("b/other.txt");
    ASSERT_FALSE(report.isEmpty());
    lib->edits.setColor({report}, NodeColor::Blue);
    const Node before = lib->node(report);

    move("a/report.txt", "a/.hidden"); // a skipped name is no new place
    settle();
    EXPECT_TRUE(isMissing(report));
    EXPECT_FALSE(isInTrash(report));
    move("a/.hidden", "a/final.txt");
    settle();
    EXPECT_FALSE(isMissing(report));
    EXPECT_EQ(lib->node(report).title, "final.txt");
    EXPECT_EQ(lib->path(report), outside.path("a/final.txt"));
    EXPECT_EQ(lib->node(report).color, before.color);
    EXPECT_EQ(QPointF(lib->node(report).x, lib->node(report).y), QPointF(before.x, before.y));

    move("a/final.txt", "b/moved.txt"); // another folder that is watched
    settle();
    EXPECT_EQ(lib->path(report), outside.path("b/moved.txt"));
    move("b/moved.txt", "far/away.txt"); // nobody looks there
    settle();
    EXPECT_TRUE(isMissing(report));
    EXPECT_EQ(lib->path(report), outside.path("b/moved.txt"));
    EXPECT_FALSE(isMissing(other));
    move("far/away.txt", "b/moved.txt");
    settle();
    EXPECT_FALSE(isMissing(report));
    EXPECT_EQ(live(), 2);
}

TEST_F(LinkSyncTest, savesAreChangesAndKeepTheFileFindable)
{
    outside.makeFile("a/text.txt", "one");
    const QString text = add("a/text.txt");
    QSet<QString> changed;
    QObject::connect(&lib->linkSync, &LinkSync::filesChanged, &lib->library,
        [&](const QSet<QString>& ids) { changed.unite(ids); });
    outside.makeFile("a/.text.txt.swp", "written by way of another file");
    move("a/.text.txt.swp", "a/text.txt");
    settle();
    EXPECT_EQ(changed, QSet<QString>{text});
    EXPECT_EQ(lib->node(text).byteSize, 30);
    move("a/text.txt", "a/renamed.txt"); // found by the identity of what was saved
    settle();
    EXPECT_EQ(lib->path(text), outside.path("a/renamed.txt"));
}

TEST_F(LinkSyncTest, whatHappensInALinkedFolderShowsInItsCard)
{
    outside.makeFile("box/keep.txt");
    outside.makeFile("box/sub/deep.txt");
    const QString box = add("box"), keep = lib->find("keep.txt"), deep = lib->find("deep.txt");
    ASSERT_FALSE(deep.isEmpty());
    outside.makeFile("box/new.txt");
    outside.makeFile("box/fresh/inner.txt");
    move("box/sub/deep.txt", "box/fresh/deeper.txt");
    move("box/keep.txt", "box/kept.txt");
    settle();
    EXPECT_EQ(lib->node(lib->find("new.txt")).parentID, box);
    EXPECT_EQ(lib->node(lib->find("inner.txt")).parentID, lib->find("fresh"));
    EXPECT_EQ(lib->node(deep).parentID, lib->find("fresh"));
    EXPECT_EQ(lib->node(deep).title, "deeper.txt");
    EXPECT_EQ(lib->node(keep).title, "kept.txt");
    EXPECT_EQ(live(), 7);

    // Gone by the sync's hand, and back by itself; the way it counts its own is the time.
    remove("box/kept.txt");
    settle();
    EXPECT_TRUE(isInTrash(keep));
    EXPECT_EQ(rows("went_away"), 1);
    EXPECT_EQ(lib->manager.undoNames().front(), "Move to Trash");
    outside.makeFile("box/kept.txt", "restored from a backup");
    settle();
    EXPECT_FALSE(isInTrash(keep));
    EXPECT_EQ(rows("went_away"), 0);

    // What the person put into the Trash stays there, with its file gone or back.
    lib->edits.trash({keep});
    remove("box/kept.txt");
    settle();
    outside.makeFile("box/kept.txt");
    settle();
    EXPECT_TRUE(isInTrash(keep));
    const int before = live();
    const QString trashed = lib->find("deeper.txt");
    lib->edits.trash({trashed});
    move("box/fresh/deeper.txt", "box/fresh/renamed.txt");
    settle();
    EXPECT_EQ(live(), before - 1) << "nor does it come back under another name";

    // Deleted for good: the file stays, and no look brings it back.
    const QString gone = lib->find("new.txt");
    lib->edits.trash({gone});
    EXPECT_TRUE(lib->edits.deleteForGood({gone}));
    outside.makeFile("box/another.txt");
    settle();
    EXPECT_TRUE(QFileInfo::exists(outside.path("box/new.txt")));
    EXPECT_TRUE(lib->find("new.txt").isEmpty());
    EXPECT_FALSE(lib->find("another.txt").isEmpty());
}

TEST_F(LinkSyncTest, filesAreFollowedFromOneLinkedFolderToAnother)
{
    outside.makeFile("one/a.txt");
    outside.makeFile("two/b.txt");
    add("one");
    const QString two = add("two"), a = lib->find("a.txt");
    move("one/a.txt", "two/a.txt");
    settle();
    EXPECT_FALSE(isInTrash(a));
    EXPECT_EQ(lib->node(a).parentID, two);
    EXPECT_EQ(lib->path(a), outside.path("two/a.txt"));
    // A file with a card of its own keeps it when it comes into a linked folder.
    outside.makeFile("loose/c.txt");
    const QString c = add("loose/c.txt");
    move("loose/c.txt", "one/c.txt");
    settle();
    EXPECT_EQ(lib->path(c), outside.path("one/c.txt"));
    EXPECT_TRUE(lib->node(c).parentID.isEmpty());
    outside.makeFile("one/d.txt");
    settle();
    EXPECT_EQ(live(), 6) << "no second card for it";
}

TEST_F(LinkSyncTest, aFolderThatIsAwayLeavesItsCardsWhereTheyAre)
{
    outside.makeFile("disk/x/inner.txt");
    const QString disk = add("disk"), inner = lib->find("inner.txt");
    move("disk", "unplugged");
    settle();
    EXPECT_TRUE(isMissing(disk) && isMissing(inner));
    outside.makeFolder("disk"); // what an unmounted disk leaves behind
    ASSERT_TRUE(turnUntil([&] { return lib->linkSync.isIdle(); }));
    settle();
    EXPECT_TRUE(isMissing(disk) && isMissing(inner));
    EXPECT_FALSE(isInTrash(inner));
    EXPECT_EQ(lib->path(inner), outside.path("disk/x/inner.txt"));
    ASSERT_TRUE(QDir().rmdir(outside.path("disk")));
    move("unplugged", "disk");
    ASSERT_TRUE(turnUntil([&] { return !isMissing(disk); })) << "found without a word";
    settle();
    EXPECT_FALSE(isMissing(inner));
    EXPECT_EQ(rows("went_away"), 0);

    // The same for a folder inside it.
    move("disk/x", "x");
    outside.makeFolder("disk/x");
    settle();
    EXPECT_TRUE(isMissing(inner));
    EXPECT_FALSE(isInTrash(inner) || isMissing(disk));
    outside.makeFile("disk/elsewhere.txt"); // a later look at the same folder
    settle();
    EXPECT_FALSE(isInTrash(inner));
    ASSERT_TRUE(QDir().rmdir(outside.path("disk/x")));
    move("x", "disk/x");
    settle();
    EXPECT_FALSE(isMissing(inner));
    // With something in it, it is another folder: what was in ours went.
    move("disk/x", "x");
    outside.makeFile("disk/x/other.txt");
    settle();
    EXPECT_TRUE(isInTrash(inner));
}

TEST_F(LinkSyncTest, aFolderAboveThatIsMovedIsFoundOutByLooking)
{
    outside.makeFile("up/box/a.txt");
    outside.makeFile("up/loose.txt");
    const QString box = add("up/box"), loose = add("up/loose.txt");
    move("up", "other"); // the kernel tells nobody who watches what lies in it
    lib->linkSync.lookForFolders();
    EXPECT_TRUE(turnUntil([&] { return isMissing(box) && isMissing(loose); }));
    move("other", "up");
    EXPECT_TRUE(turnUntil([&] { return !isMissing(box) && !isMissing(loose); }));
    settle();
    // Another stands in its place at once: that one is followed from now on.
    outside.makeFile("copy/box/a.txt");
    outside.makeFile("copy/loose.txt");
    move("up", "old");
    move("copy", "up");
    lib->linkSync.lookForFolders();
    settle();
    outside.makeFile("up/box/b.txt");
    outside.makeFile("up/loose.txt", "changed");
    EXPECT_TRUE(turnUntil([&] { return !lib->find("b.txt").isEmpty(); }));
    EXPECT_TRUE(turnUntil([&] { return lib->node(loose).byteSize == 7; }));
    EXPECT_FALSE(isInTrash(box) || isInTrash(loose));
}

TEST_F(LinkSyncTest, aSpaceWhoseDiskWentAwayKeepsItsCards)
{
    folder.makeFile("My Space/sub/a.txt");
    settle();
    const QString a = lib->find("a.txt");
    ASSERT_FALSE(a.isEmpty());
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(QDir().rename(folder.path("My Space"), folder.path("Away")));
        if (round > 0)
            folder.makeFolder("My Space");
        settle();
        EXPECT_TRUE(isMissing(a) && !isInTrash(a)) << round;
        (void)QDir().rmdir(folder.path("My Space"));
        ASSERT_TRUE(QDir().rename(folder.path("Away"), folder.path("My Space")));
        settle();
        EXPECT_FALSE(isMissing(a) || isInTrash(a)) << round;
    }
}

TEST_F(LinkSyncTest, thePersonCanSayWhereItIs)
{
    outside.makeFile("old/box/a.txt");
    outside.makeFile("old/file.txt");
    const QString box = add("old/box"), a = lib->find("a.txt"), file = add("old/file.txt");
    outside.makeFolder("new");
    move("old/box", "new/carton");
    move("old/file.txt", "new/sheet.txt");
    settle();
    ASSERT_TRUE(isMissing(box) && isMissing(a) && isMissing(file));

    folder.makeFile("My Space/inside.txt");
    folder.makeFolder("My Space/inside");
    for (const QString& bad : {outside.path("new/sheet.txt"), outside.path("nowhere"),
             folder.path("My Space/inside"), folder.path(), QDir::rootPath()})
        EXPECT_FALSE(lib->linkSync.relink(box, bad)) << bad.toStdString();
    EXPECT_FALSE(lib->linkSync.relink(file, outside.path("new")));
    EXPECT_FALSE(lib->linkSync.relink(file, folder.path("My Space/inside.txt")));
    outside.makeFile("taken/taken.txt");
    add("taken/taken.txt");
    EXPECT_FALSE(lib->linkSync.relink(file, outside.path("taken/taken.txt"))) << "it has a card";
    EXPECT_TRUE(lib->linkSync.relink(box, outside.path("new/carton")));
    EXPECT_TRUE(lib->linkSync.relink(file, outside.path("new/sheet.txt")));
    settle();
    EXPECT_FALSE(isMissing(box) || isMissing(a) || isMissing(file));
    EXPECT_EQ(lib->path(a), outside.path("new/carton/a.txt"));
    EXPECT_EQ(lib->node(box).title, "box") << "the person's word for it";
    outside.makeFile("new/carton/b.txt"); // it is watched there
    move("new/sheet.txt", "new/page.txt");
    settle();
    EXPECT_EQ(lib->node(lib->find("b.txt")).parentID, box);
    EXPECT_EQ(lib->path(file), outside.path("new/page.txt"));
}

TEST_F(LinkSyncTest, thePersonLooksAroundFromWhereItWas)
{
    outside.makeFile("a/b/c.txt");
    const QString file = add("a/b/c.txt");
    remove("a/b");
    QStringList folders;
    lib->linkSync.findPlaceNear(file, [&](const QString& place) { folders.append(place); });
    ASSERT_TRUE(turnUntil([&] { return !folders.isEmpty(); }));
    settle();
    EXPECT_EQ(folders, QStringList{outside.path("a")});
}

TEST_F(LinkSyncTest, whatHappenedWhileClosedIsFoundAtTheOpening)
{
    outside.makeFile("a/first.txt");
    outside.makeFile("box/x.txt");
    outside.makeFile("box/y.txt");
    const QString first = add("a/first.txt"), box = add("box"), x = lib->find("x.txt");
    const QString y = lib->find("y.txt");
    lib.reset();
    move("a/first.txt", "a/second.txt");
    move("box/x.txt", "box/z.txt");
    remove("box/y.txt");
    open();
    EXPECT_EQ(lib->node(first).title, "second.txt");
    EXPECT_EQ(lib->node(x).title, "z.txt");
    EXPECT_TRUE(isInTrash(y));
    lib.reset();
    remove("box");
    open();
    EXPECT_TRUE(isMissing(box) && isMissing(x));
}

TEST_F(LinkSyncTest, aCopysOriginalIsFollowed)
{
    outside.makeFile("box/original.txt");
    add("box");
    const QString copy = lib->make(NodeKind::Page, "copy");
    const auto path = [&] {
        QString found;
        EXPECT_TRUE(lib->library.connection().each("SELECT path FROM edit_originals", {},
            [&](const SQLRow& row) { found = row.text(0); }));
        return found;
    };
    ASSERT_TRUE(
        lib->library.connection().run("INSERT INTO edit_originals (node_id, path) VALUES (?, ?)",
            {copy, outside.path("box/original.txt")}));
    outside.makeFile("box/any.txt"); // a look notes which file it is
    settle();
    move("box/original.txt", "box/sub/renamed.txt");
    settle();
    EXPECT_EQ(path(), outside.path("box/sub/renamed.txt"));
}

TEST_F(LinkSyncTest, theLibraryInsideALinkedFolderIsLeftOut)
{
    // Linked by an older hand: adding refuses it.
    ASSERT_TRUE(lib->library.connection().run(
        "INSERT INTO nodes (id, space_id, kind, title, x, y, position, path, created_at, "
        "updated_at, color) SELECT '0b1c2d3e-0000-4000-8000-000000000001', id, 'folder', 'around', "
        "0, 0, 'a0', ?, 0, 0, 'gray' FROM spaces",
        {QFileInfo(folder.path()).path()}));
    lib->library.reload();
    settle();
    lib->library.tree().eachNode([&](const Node& node, const SeenFile&) {
        EXPECT_FALSE(node.path.startsWith(folder.path())) << node.path.toStdString();
    });
}

TEST_F(LinkSyncTest, aFileThatWentToAnotherLinkedFolderStaysOutOfTheTrash)
{
    outside.makeFile("one/a.txt");
    outside.makeFile("two/b.txt");
    add("one");
    const QString two = add("two"), a = lib->find("a.txt");
    move("one/a.txt", "two/a.txt");
    settle();
    EXPECT_FALSE(isInTrash(a));
    lib.reset();
    open();
    EXPECT_FALSE(isInTrash(a));
    EXPECT_EQ(lib->node(a).parentID, two);
}

// Events come in batches, half a second long: a look at the folder that something moved into may
// come before the one that it left is told of.
TEST_F(LinkSyncTest, aMoveThatIsOnlyHalfToldIsStillAMove)
{
    outside.makeFile("box/sub/deep/a.txt");
    add("box");
    const QString deep = lib->find("deep"), a = lib->find("a.txt");
    lib->linkSync.setDelays({300, 400, 10, 60});
    const auto wait = [](int ms) {
        QElapsedTimer time;
        for (time.start(); time.elapsed() < ms;)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    };
    int removals = 0;
    QObject::connect(&lib->linkSync, &LinkSync::removedOnDisk, &lib->library, [&] { ++removals; });
    outside.makeFile("box/new.txt");
    wait(650); // told of after 500, looked at after 800
    move("box/sub/deep", "box/moved");
    wait(300);
    settle();
    EXPECT_EQ(lib->path(deep), outside.path("box/moved"));
    EXPECT_EQ(lib->path(a), outside.path("box/moved/a.txt"));
    // The folder that it leaves is looked at before the other one is told of.
    outside.makeFile("box/newer.txt");
    wait(650);
    move("box/moved", "box/sub/back");
    wait(300);
    settle();
    EXPECT_EQ(lib->path(a), outside.path("box/sub/back/a.txt"));
    EXPECT_EQ(removals, 0) << "it was never in the Trash";
    EXPECT_EQ(live(), 6);
}

TEST_F(LinkSyncTest, aTrashedFolderCanBeLinkedAgainWithItsContents)
{
    outside.makeFile("box/sub/a.txt");
    const QString box = add("box");
    lib->edits.trash({box});
    settle();
    const QString again = add("box");
    EXPECT_NE(again, box);
    EXPECT_FALSE(again.isEmpty());
    EXPECT_FALSE(lib->find("a.txt").isEmpty());
    outside.makeFile("box/b.txt");
    outside.makeFile("box/sub/c.txt");
    settle();
    EXPECT_FALSE(lib->find("b.txt").isEmpty());
    EXPECT_FALSE(lib->find("c.txt").isEmpty());
    lib->edits.restore({box});
    settle();
    lib->edits.trash({box});
    outside.makeFile("box/d.txt");
    settle();
    EXPECT_FALSE(lib->find("d.txt").isEmpty());
    // The other way round, also for what comes into the folders below.
    lib->edits.trash({again});
    lib->edits.restore({box});
    outside.makeFile("box/sub/e.txt");
    settle();
    const QString e = lib->find("e.txt");
    ASSERT_FALSE(e.isEmpty());
    EXPECT_FALSE(isInTrash(e));
    EXPECT_EQ(lib->node(lib->node(e).parentID).parentID, box);
}

TEST_F(LinkSyncTest, whatThePersonTrashedGetsNoOtherCard)
{
    outside.makeFile("box/a.txt");
    outside.makeFile("box/sub/b.txt");
    add("box");
    lib->edits.trash({lib->find("a.txt"), lib->find("sub")});
    outside.makeFile("box/new.txt");
    outside.makeFile("box/sub/more.txt");
    settle();
    EXPECT_TRUE(lib->find("a.txt").isEmpty());
    EXPECT_TRUE(lib->find("sub").isEmpty());
    EXPECT_FALSE(lib->find("new.txt").isEmpty());
    lib.reset();
    open();
    EXPECT_TRUE(lib->find("a.txt").isEmpty());
    EXPECT_TRUE(lib->find("sub").isEmpty());
}

TEST_F(LinkSyncTest, aFolderInAFilesPlaceIsAnotherThing)
{
    outside.makeFile("box/thing");
    outside.makeFile("box/later");
    add("box");
    const QString thing = lib->find("thing"), later = lib->find("later");
    remove("box/thing");
    outside.makeFile("box/thing/inner.txt");
    remove("box/later");
    settle();
    EXPECT_TRUE(isInTrash(thing));
    EXPECT_TRUE(isInTrash(later));
    EXPECT_FALSE(lib->find("inner.txt").isEmpty());
    outside.makeFile("box/later/deep.txt");
    settle();
    EXPECT_TRUE(isInTrash(later));
    EXPECT_FALSE(lib->find("deep.txt").isEmpty());
}

TEST_F(LinkSyncTest, theNearerOfTwoLinkedFoldersKeepsWhatLiesInBoth)
{
    outside.makeFile("box/sub/a.txt");
    outside.makeFile("box/b.txt");
    const QString sub = add("box/sub"), a = lib->find("a.txt");
    const QString box = add("box"), b = lib->find("b.txt");
    ASSERT_EQ(live(), 4);
    for (int round = 0; round < 5; ++round) {
        const QString from = round ? QString("n%1.txt").arg(round - 1) : QString("a.txt");
        move("box/sub/" + from, QString("box/sub/n%1.txt").arg(round));
        settle();
        EXPECT_EQ(live(), 4) << round;
        EXPECT_FALSE(isInTrash(a)) << round;
        EXPECT_EQ(lib->path(a), outside.path(QString("box/sub/n%1.txt").arg(round)));
    }
    move("box/b.txt", "box/sub/b.txt");
    settle();
    EXPECT_EQ(live(), 4);
    EXPECT_FALSE(isInTrash(b));
    EXPECT_EQ(lib->node(b).parentID, sub);
    move("box/sub/b.txt", "box/b2.txt");
    settle();
    EXPECT_EQ(live(), 4);
    EXPECT_FALSE(isInTrash(b));
    EXPECT_EQ(lib->node(b).parentID, box);
    lib.reset();
    open();
    EXPECT_FALSE(isInTrash(a) || isInTrash(b));
    EXPECT_EQ(live(), 4);
}

TEST_F(LinkSyncTest, whatIsAwayFromAFolderInsideAnotherStaysMarked)
{
    outside.makeFile("box/sub/a.txt");
    outside.makeFile("box/b.txt");
    const QString sub = add("box/sub"), a = lib->find("a.txt");
    const QString box = add("box"), b = lib->find("b.txt");
    move("box/sub", "elsewhere/sub");
    settle();
    const auto check = [&] {
        EXPECT_TRUE(isMissing(sub) && isMissing(a));
        EXPECT_FALSE(isMissing(box) || isMissing(b) || isInTrash(a));
    };
    check();
    outside.makeFile("box/c.txt");
    settle();
    check();
    lib.reset();
    open();
    check();
    // A look at the whole of the outer folder, since that came back too.
    move("box", "elsewhere/box");
    settle();
    EXPECT_TRUE(isMissing(b));
    move("elsewhere/box", "box");
    ASSERT_TRUE(turnUntil([&] { return !isMissing(b); }));
    settle();
    check();
    move("elsewhere/sub", "box/sub");
    ASSERT_TRUE(turnUntil([&] { return !isMissing(a); }));
    settle();
    EXPECT_FALSE(isMissing(sub));
    EXPECT_EQ(live(), 5);
}

TEST_F(LinkSyncTest, anEmptyFolderCanBeChosenForOneThatIsGone)
{
    outside.makeFile("old/box/a.txt");
    const QString box = add("old/box");
    remove("old/box");
    settle();
    ASSERT_TRUE(isMissing(box));
    outside.makeFolder("new/box");
    ASSERT_TRUE(lib->linkSync.relink(box, outside.path("new/box")));
    settle();
    EXPECT_FALSE(isMissing(box));
}

TEST_F(LinkSyncTest, nothingComesInForAFolderThatWasDeleted)
{
    for (int i = 0; i < 5000; ++i)
        outside.makeFile(QString("box/s/f%1.txt").arg(i));
    lib->addFiles.add({outside.path("box")}, {}, {});
    ASSERT_TRUE(turnUntil([&] { return !lib->find("s").isEmpty(); }));
    const QString box = lib->find("box");
    lib->edits.trash({box});
    EXPECT_TRUE(lib->edits.deleteForGood({box}));
    settle();
    EXPECT_EQ(live(), 0);
    EXPECT_EQ(rows("nodes"), 0);
}

TEST_F(LinkSyncTest, hiddenFilesDoNotMakeAFolderTheOneWeKnew)
{
    outside.makeFile("disk/.hidden");
    EXPECT_TRUE(lookAtPlace(outside.path("disk"), 1).isAway);
    outside.makeFile("disk/a");
    EXPECT_FALSE(lookAtPlace(outside.path("disk"), 1).isAway);
}

TEST_F(LinkSyncTest, aLookThatFailsIsMadeAgain)
{
    outside.makeFile("box/a.txt");
    add("box");
    auto& connection = lib->library.connection();
    ASSERT_TRUE(connection.run("ALTER TABLE forgotten_links RENAME TO away", {}));
    outside.makeFile("box/b.txt");
    lib->linkSync.catchUp();
    (void)turnUntil([] { return false; }, 60);
    ASSERT_TRUE(connection.run("ALTER TABLE away RENAME TO forgotten_links", {}));
    settle();
    EXPECT_FALSE(lib->find("b.txt").isEmpty());
}

TEST_F(LinkSyncTest, whatMovedInNestedFoldersWhileClosedIsFollowed)
{
    outside.makeFile("box/sub/a.txt");
    add("box/sub");
    add("box");
    const QString a = lib->find("a.txt");
    lib.reset();
    move("box/sub/a.txt", "box/sub/b.txt");
    open();
    EXPECT_EQ(live(), 3);
    EXPECT_EQ(lib->path(a), outside.path("box/sub/b.txt"));
    EXPECT_FALSE(isInTrash(a));
    lib.reset();
    move("box/sub/b.txt", "box/b.txt");
    open();
    EXPECT_EQ(live(), 3);
    EXPECT_FALSE(isInTrash(a));
}

TEST_F(LinkSyncTest, whatLeavesATrashedFolderLeavesItsCardThere)
{
    outside.makeFile("one/a.txt");
    outside.makeFolder("two");
    const QString one = add("one"), two = add("two"), a = lib->find("a.txt");
    lib->edits.trash({one});
    settle();
    move("one/a.txt", "two/a.txt");
    settle();
    EXPECT_TRUE(isInTrash(a));
    EXPECT_EQ(lib->path(a), outside.path("one/a.txt"));
    EXPECT_EQ(lib->node(lib->find("a.txt")).parentID, two);
}

TEST(LinkBookmarks, areReadAsTheyWereWritten)
{
    const LinkBookmark bookmark{"/home/ä b/c d", 0xfedcba9876543210};
    EXPECT_EQ(bookmarkFrom(storedBookmark(bookmark)), bookmark);
    for (const char* bad : {"", "12", "xyz /a", "12 a", " /a"})
        EXPECT_FALSE(bookmarkFrom(bad)) << bad;
}

TEST(LinkedDisks, areFollowedAsTheyComeAndGo)
{
    const TempFolder folder;
    if (!runWithOwnMounts("-rm", "LinkedDisksChild.*", folder.path()))
        GTEST_SKIP() << "this system lets nobody but its administrator mount";
}

TEST(LinkedDisksChild, DISABLED_mountAndUnmount)
{
    const TempFolder outside(QDir::homePath());
    const QString source = outside.path("source"), point = outside.path("mnt/disk");
    outside.makeFile("source/box/a.txt");
    outside.makeFile("source/loose.txt");
    outside.makeFolder("mnt/disk");
    const auto mount = [&] {
        ASSERT_EQ(::mount(source.toUtf8(), point.toUtf8(), nullptr, MS_BIND, nullptr), 0);
    };
    mount();
    EditedLibrary lib(qEnvironmentVariable("CORVELLE_CHILD_LIBRARY"));
    lib.linkSync.setDelays({40, 120, 10, 60});
    lib.linkSync.start();
    lib.addFiles.add({point, point + "/box", point + "/loose.txt"}, {}, {});
    ASSERT_TRUE(lib.settle());
    const QString disk = lib.find("disk"), a = lib.find("a.txt"), loose = lib.find("loose.txt");
    ASSERT_FALSE(a.isEmpty());
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(::umount2(point.toUtf8(), MNT_DETACH), 0);
        ASSERT_TRUE(turnUntil([&] { return lib.library.isMissing(a); })) << round;
        ASSERT_TRUE(lib.settle());
        EXPECT_TRUE(lib.library.isMissing(disk) && lib.library.isMissing(loose));
        EXPECT_FALSE(lib.library.isInTrash(a) || lib.library.isInTrash(loose));
        mount();
        ASSERT_TRUE(turnUntil([&] { return !lib.library.isMissing(a); })) << round;
        ASSERT_TRUE(lib.settle());
        EXPECT_FALSE(lib.library.isMissing(disk) || lib.library.isMissing(loose));
        // It is watched again.
        outside.makeFile(QString("source/box/new%1.txt").arg(round));
        ASSERT_TRUE(
            turnUntil([&] { return !lib.find(QString("new%1.txt").arg(round)).isEmpty(); }));
    }
    ASSERT_EQ(::umount2(point.toUtf8(), MNT_DETACH), 0);
}
