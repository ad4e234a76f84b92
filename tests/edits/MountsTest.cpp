// Disks and folders that are mounted inside the library, in a mount namespace of the test's own.
#include "edits/EditedLibrary.h"
#include "edits/OwnMounts.h"

#include <sys/mount.h>

using namespace corvelle;

TEST(Mounts, areNeverEmptiedNorMovedAndTheirFilesComeAcross)
{
    const TempFolder folder;
    if (!runWithOwnMounts("-rm", "MountsChild.*", folder.path()))
        GTEST_SKIP() << "this system lets nobody but its administrator mount";
}

TEST(MountsChild, DISABLED_editsAroundMounts)
{
    const TempFolder outside;
    outside.makeFile("precious.txt", "elsewhere");
    const QString root = qEnvironmentVariable("CORVELLE_CHILD_LIBRARY");
    const auto at = [&](const QString& path) { return root + "/My Space/" + path; };
    const auto write = [&](const QString& path) {
        QFile file(at(path));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("words") == 5);
    };
    for (const char* name : {"Box/Disk", "Box/Bound", "Other"})
        QDir().mkpath(at(name));
    ASSERT_EQ(::mount("none", at("Box/Disk").toUtf8(), "tmpfs", 0, nullptr), 0);
    // A bind mount is on the same device as the library.
    ASSERT_EQ(
        ::mount(outside.path().toUtf8(), at("Box/Bound").toUtf8(), nullptr, MS_BIND, nullptr), 0);
    write("Box/Disk/onDisk.txt");
    write("Box/own.txt");
    EditedLibrary lib(root);
    ASSERT_TRUE(lib.look());
    const QString box = lib.find("Box"), other = lib.find("Other");

    // Files come across and leave nothing behind; the mount points stay where they are.
    for (const char* name : {"onDisk.txt", "precious.txt"}) {
        EXPECT_EQ(lib.edits.move({{lib.find(name), {1, 1}}}, other).size(), 1u) << name;
        EXPECT_TRUE(QFileInfo::exists(at("Other/" + QString(name))));
    }
    EXPECT_TRUE(QDir(at("Box/Disk")).isEmpty() && QDir(outside.path()).isEmpty());
    for (const char* name : {"Disk", "Bound"}) {
        EXPECT_TRUE(lib.edits.move({{lib.find(name), {1, 1}}}, other).empty()) << name;
        lib.edits.trash({lib.find(name)});
        EXPECT_FALSE(lib.library.isInTrash(lib.find(name))) << name;
    }
    lib.failures.clear();

    // A folder takes what is mounted in it along, also into the Trash; deleting it spares that.
    outside.makeFile("again.txt", "elsewhere again");
    write("Box/Disk/again on disk.txt");
    ASSERT_TRUE(lib.look());
    lib.edits.trash({box});
    lib.done();
    ASSERT_TRUE(lib.library.isInTrash(box));
    lib.edits.deleteForGood({box});
    ASSERT_TRUE(lib.settle());
    EXPECT_TRUE(QFileInfo::exists(outside.path("again.txt")));
    int left = 0;
    for (QDirIterator files(root, {"again*.txt", "own.txt"}, QDir::Files | QDir::Hidden,
             QDirIterator::Subdirectories);
         files.hasNext(); ++left)
        EXPECT_NE(QFileInfo(files.next()).fileName(), "own.txt");
    EXPECT_EQ(left, 2) << "one on the disk, one through the bind mount";
}
