// Linked items where an automounter waits for the first who goes in. A process of the test's own is
// the automounter, as autofs(5) has it: the kernel tells it by a pipe that somebody waits.
#include "edits/EditedLibrary.h"
#include "edits/OwnMounts.h"

#include "platform/MountTable.h"

#include <linux/auto_fs.h>
#include <linux/auto_fs4.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace corvelle;

namespace {

// Never returns. Waits at `point`, and mounts `source` there for whoever goes in, if it is allowed
// to. Writes one byte once it waits, and one for each time somebody went in.
[[noreturn]] void beAutomounter(
    const QByteArray& source, const QByteArray& point, int report, const QByteArray& allowed)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::setpgid(0, 0); // this group sees the folder as it is
    int pipe[2];
    if (::pipe(pipe) != 0)
        ::_exit(1);
    const QByteArray options = "fd=" + QByteArray::number(pipe[1]) +
                               ",pgrp=" + QByteArray::number(::getpgrp()) +
                               ",minproto=5,maxproto=5,direct";
    if (::mount("test", point, "autofs", 0, options) != 0)
        ::_exit(2);
    const int folder = ::open(point, O_RDONLY | O_DIRECTORY);
    (void)!::write(report, "w", 1);
    autofs_v5_packet packet;
    while (::read(pipe[0], &packet, sizeof packet) > 0) {
        (void)!::write(report, "i", 1);
        const bool mounts =
            ::access(allowed, F_OK) == 0 && ::mount(source, point, nullptr, MS_BIND, nullptr) == 0;
        ::ioctl(folder, mounts ? AUTOFS_IOC_READY : AUTOFS_IOC_FAIL, packet.wait_queue_token);
    }
    ::_exit(0);
}

} // namespace

TEST(Automounter, isOnlySetOffByThePerson)
{
    const TempFolder folder;
    if (::geteuid() != 0 || !runWithOwnMounts("-m", "AutomounterChild.*", folder.path()))
        GTEST_SKIP() << "only the administrator can be an automounter";
}

TEST(AutomounterChild, DISABLED_linkedItemsBehindIt)
{
    const TempFolder outside(QDir::homePath());
    const QString point = outside.path("net"), allowed = outside.path("allowed");
    outside.makeFile("source/box/a.txt");
    outside.makeFile("source/loose.txt");
    outside.makeFolder("net");
    const QByteArray source = QFile::encodeName(outside.path("source"));
    const auto unmount = [&] { return ::umount2(QFile::encodeName(point), MNT_DETACH); };
    ASSERT_EQ(::mount(source, QFile::encodeName(point), nullptr, MS_BIND, nullptr), 0);
    EditedLibrary lib(qEnvironmentVariable("CORVELLE_CHILD_LIBRARY"));
    lib.linkSync.setDelays({40, 120, 10, 60});
    lib.linkSync.start();
    lib.addFiles.add({point + "/box", point + "/loose.txt"}, {}, {});
    ASSERT_TRUE(lib.settle());
    const QString box = lib.find("box"), a = lib.find("a.txt"), loose = lib.find("loose.txt");
    ASSERT_FALSE(a.isEmpty() || loose.isEmpty());
    ASSERT_EQ(unmount(), 0);

    int report[2];
    ASSERT_EQ(::pipe2(report, O_CLOEXEC), 0);
    const pid_t automounter = ::fork();
    if (automounter == 0)
        beAutomounter(source, QFile::encodeName(point), report[1], QFile::encodeName(allowed));
    ::close(report[1]);
    char told = 0;
    if (::read(report[0], &told, 1) != 1)
        GTEST_SKIP() << "this kernel has no automounter";
    ::fcntl(report[0], F_SETFL, O_NONBLOCK);
    const auto entered = [&] { return ::read(report[0], &told, 1) == 1; };

    const auto areMissing = [&](bool missing) {
        return lib.library.isMissing(a) == missing && lib.library.isMissing(box) == missing &&
               lib.library.isMissing(loose) == missing;
    };
    ASSERT_TRUE(turnUntil([&] { return areMissing(true); }));
    lib.linkSync.lookForFolders();
    ASSERT_TRUE(lib.settle());
    QThread::msleep(200);
    ASSERT_TRUE(lib.settle());
    EXPECT_FALSE(entered()) << "no look of our own has a disk mounted";

    lib.linkSync.visit(loose); // the disk can't be had
    ASSERT_TRUE(turnUntil(entered));
    ASSERT_TRUE(lib.settle());
    EXPECT_TRUE(areMissing(true));

    outside.makeFile("allowed");
    lib.linkSync.visit(a);
    EXPECT_TRUE(turnUntil([&] { return areMissing(false); }));
    outside.makeFile("source/box/b.txt");
    EXPECT_TRUE(turnUntil([&] { return !lib.find("b.txt").isEmpty(); })) << "it is watched again";
    EXPECT_FALSE(lib.library.isInTrash(a));
    ::kill(automounter, SIGKILL);
    ::waitpid(automounter, nullptr, 0);
    unmount();
    unmount();
}
