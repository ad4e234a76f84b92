// What a single look makes of a disk that changed in more places than it was told of.
#include "edits/EditedLibrary.h"

#include "disk/DiskScan.h"
#include "disk/PassOutcome.h"

using namespace corvelle;

namespace {

class Looks : public testing::Test
{
protected:
    void SetUp() override
    {
        lib = std::make_unique<EditedLibrary>(folder.path());
        ASSERT_TRUE(lib->look());
    }
    // Links it and looks at what is there once; what happens later nobody tells.
    QString add(const QString& path)
    {
        lib->addFiles.add({outside.path(path)}, {}, {});
        EXPECT_TRUE(lib->settle());
        return lib->find(QFileInfo(path).fileName());
    }
    static void rename(const QString& from, const QString& to)
    {
        ASSERT_EQ(::rename(QFile::encodeName(from), QFile::encodeName(to)), 0)
            << from.toStdString();
    }
    DiskPass lookAtOwn(const QString& path) const
    {
        FolderIndex index;
        index.build(lib->library, NameCase::Kept);
        const DiskRequest request{false, true, {path}, {}};
        auto pass = lookAtFolders(
            folder.path(), request, memoryOf(lib->library, index, request), Round::Another, {});
        EXPECT_TRUE(pass);
        return pass ? *pass : DiskPass();
    }
    DiskPass lookAtLinkedFolder(const QString& id) const
    {
        const QString root = lib->node(id).path;
        FolderIndex index(FolderIndex::Which::Linked);
        index.build(lib->library, NameCase::Kept);
        DiskRequest all;
        all.trees = {root};
        LinkedQuery query;
        query.library = folder.path();
        query.root = root;
        query.isFolder = query.request.everything = true;
        query.memory = memoryOf(lib->library, index, all);
        auto found = lookAtLinked(std::move(query), Round::Another, {});
        EXPECT_TRUE(found);
        return found ? found->pass : DiskPass();
    }
    static QString whereItGoes(const DiskPass& pass, const QString& id)
    {
        for (const DiskPlan::Action& action : pass.actions)
            if (const auto* moved = std::get_if<DiskPlan::Moved>(&action); moved && moved->id == id)
                return moved->to.path;
        return {};
    }
    static QStringList arriving(const DiskPass& pass)
    {
        QStringList paths;
        for (const ArrivingItem& item : pass.arriving)
            paths.append(item.path);
        return paths;
    }

    TempFolder folder;
    TempFolder outside{QDir::homePath()};
    std::unique_ptr<EditedLibrary> lib;
};

} // namespace

TEST_F(Looks, whatLeftAFolderThatMovedSinceWaitsForAWiderLook)
{
    folder.makeFile("My Space/a/b/c/it.txt");
    folder.makeFolder("My Space/to");
    ASSERT_TRUE(lib->look());
    rename(folder.path("My Space/a/b/c/it.txt"), folder.path("My Space/to/it.txt"));
    rename(folder.path("My Space/a/b"), folder.path("My Space/elsewhere"));
    const DiskPass pass = lookAtOwn("My Space/to");
    EXPECT_EQ(arriving(pass), QStringList());
    EXPECT_TRUE(pass.lookAgain);
    EXPECT_EQ(pass.lookAlso, (QSet<QString>{"My Space/a/b/c", "My Space/a/b", "My Space/a"}));
}

TEST_F(Looks, whatCameFromAnotherLinkedFolderWaitsForItsNewFolder)
{
    outside.makeFile("one/box/a.txt");
    outside.makeFile("two/b.txt");
    (void)add("one");
    const QString two = add("two"), box = lib->find("box");
    ASSERT_FALSE(lib->find("a.txt").isEmpty());
    outside.makeFile("two/new/c.txt");
    rename(outside.path("one/box"), outside.path("two/new/box"));
    const DiskPass pass = lookAtLinkedFolder(two);
    EXPECT_EQ(
        arriving(pass), (QStringList{outside.path("two/new"), outside.path("two/new/c.txt")}));
    EXPECT_TRUE(pass.lookAgain);
    rename(outside.path("two/new/box"), outside.path("two/box"));
    EXPECT_EQ(whereItGoes(lookAtLinkedFolder(two), box), outside.path("two/box"));
}

TEST_F(Looks, whatWasLinkedFromWithinALinkedFolderIsFollowedThere)
{
    outside.makeFile("box/sub/a.txt");
    outside.makeFile("box/loose.txt");
    outside.makeFile("box/rest.txt");
    const QString sub = add("box/sub"), loose = add("box/loose.txt"), box = add("box");
    rename(outside.path("box/sub"), outside.path("box/other"));
    rename(outside.path("box/loose.txt"), outside.path("box/found.txt"));
    const DiskPass pass = lookAtLinkedFolder(box);
    EXPECT_EQ(whereItGoes(pass, sub), outside.path("box/other"));
    EXPECT_EQ(whereItGoes(pass, loose), outside.path("box/found.txt"));
    EXPECT_EQ(arriving(pass), QStringList());
    // Into a new folder, which comes first.
    outside.makeFolder("box/new");
    rename(outside.path("box/other"), outside.path("box/new/sub"));
    rename(outside.path("box/rest.txt"), outside.path("box/new/rest.txt"));
    EXPECT_EQ(arriving(lookAtLinkedFolder(box)), QStringList{outside.path("box/new")});
}

TEST_F(Looks, aCardStaysWithItsNameWhereItsFileWentToAnotherLinkedFolder)
{
    outside.makeFile("one/a.txt");
    outside.makeFolder("two");
    (void)add("one");
    const QString two = add("two"), a = lib->find("a.txt");
    rename(outside.path("one/a.txt"), outside.path("two/b.txt"));
    outside.makeFile("one/a.txt", "another one");
    const DiskPass pass = lookAtLinkedFolder(two);
    EXPECT_EQ(whereItGoes(pass, a), QString());
    EXPECT_EQ(arriving(pass), QStringList{outside.path("two/b.txt")});
}

TEST_F(Looks, whatAnotherTookToTheTrashMeanwhileWaitsToComeBack)
{
    outside.makeFile("one/a.txt");
    outside.makeFile("one/kept.txt");
    outside.makeFolder("two");
    const QString one = add("one"), a = lib->find("a.txt");
    (void)add("two");
    outside.makeFolder("two/new");
    rename(outside.path("one/a.txt"), outside.path("two/new/a.txt"));
    DiskApply apply(lib->library);
    bool done = false;
    apply.run(lookAtLinkedFolder(one), [&](const DiskApply::Done&) { done = true; });
    ASSERT_TRUE(turnUntil([&] { return done; }));
    ASSERT_TRUE(lib->library.isInTrash(a));
    // What went away had been read before.
    const DiskView view = DiskView::ofLinked(outside.path("two"), folder.path(), {});
    const auto scans = view.trees({outside.path("two")});
    DiskPlan::Outcome outcome;
    outcome.actions = {DiskPlan::Added{scans.at(outside.path("two")).front()}};
    DiskPass pass;
    ASSERT_TRUE(takeOutcome(
        pass, lib->library.connection(), view, outcome, scans, KnownRows(), Round::Another));
    EXPECT_EQ(arriving(pass), QStringList{outside.path("two/new")});
    EXPECT_TRUE(pass.lookAgain);
}

TEST_F(Looks, twoOfThemNeverGiveOneFileTwoCards)
{
    outside.makeFile("box/a.txt");
    outside.makeFile("box/b.txt");
    outside.makeFile("box/kept.txt");
    const QString box = add("box"), a = lib->find("a.txt"), b = lib->find("b.txt");
    rename(outside.path("box/a.txt"), outside.path("box/c.txt"));
    ASSERT_TRUE(QFile::remove(outside.path("box/b.txt")));
    DiskPass pass = lookAtLinkedFolder(box);
    ASSERT_EQ(whereItGoes(pass, a), outside.path("box/c.txt"));
    const DiskPlan::Entry to = *DiskPlan::entry(
        outside.path("box/c.txt"), outside.path("box/c.txt"), DiskPlan::NameRules::Apply);
    DiskApply apply(lib->library);
    std::optional<DiskApply::Done> done;
    for (const QString& id : {a, b}) {
        pass.actions = {DiskPlan::Moved{id, to}};
        done.reset();
        apply.run(pass, [&](const DiskApply::Done& result) { done = result; });
        ASSERT_TRUE(turnUntil([&] { return done.has_value(); }));
        EXPECT_EQ(done->placed.contains(id), id == a);
    }
    EXPECT_TRUE(done->overtaken) << "the next look knows";
    EXPECT_EQ(lib->node(a).path, outside.path("box/c.txt"));
    EXPECT_EQ(lib->node(b).path, outside.path("box/b.txt"));
}
