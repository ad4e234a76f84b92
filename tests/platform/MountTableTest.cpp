#include "platform/MountTable.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(MountTable, isReadWhateverTheMountPointsAreCalled)
{
    const Mounts mounts = mountsFrom(
        "21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/root rw\n"
        "36 21 98:0 /mnt1 /media/my\\040disk\\134\\011x rw,noatime master:1 - ext3 /dev/x rw\n"
        "40 21 0:5 / /media/disk rw - tmpfs none rw\n"
        "41 40 0:6 / /media/disk rw - tmpfs none rw\n"
        "50 21 0:7 / /net rw master:1 - autofs systemd-1 rw,fd=29,direct\n"
        "51 21 0:8 / /home/nfs rw - autofs systemd-1 rw,fd=30,direct\n"
        "52 51 0:9 / /home/nfs rw - nfs4 host:/ rw\n"
        "no number 0:6 / /bad\n"
        "7 8 0:1 /\n\n");
    const Mounts wanted{{"/", {21}}, {"/media/my disk\\\tx", {36}}, {"/media/disk", {41}},
        {"/net", {50, true}}, {"/home/nfs", {52}}};
    EXPECT_EQ(mounts, wanted) << "the last one covers those before it";

    EXPECT_EQ(mountOf("/media/disk/a/b", mounts), "/media/disk");
    EXPECT_EQ(mountOf("/media/disk", mounts), "/media/disk");
    EXPECT_EQ(mountOf("/media/diskette", mounts), "/");
    EXPECT_TRUE(wouldMount("/net/host/a", mounts));
    EXPECT_FALSE(wouldMount("/home/nfs/a", mounts)) << "it is mounted";
}

TEST(MountTable, tellsWhatCameWentOrWasReplaced)
{
    const Mounts before{{"/", {1}}, {"/stays", {2}}, {"/goes", {3}}, {"/other", {4}}};
    const Mounts after{{"/", {1}}, {"/stays", {2}}, {"/comes", {5}}, {"/other", {6}}};
    EXPECT_EQ(differingMounts(before, after), (QSet<QString>{"/goes", "/comes", "/other"}));
    EXPECT_TRUE(differingMounts(after, after).isEmpty());
    EXPECT_TRUE(readMounts().contains("/")) << "this system's own table";
}
