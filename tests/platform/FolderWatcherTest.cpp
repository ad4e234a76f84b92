#include "platform/FolderWatcher.h"

#include "support/BoundByRights.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

#include <condition_variable>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

using namespace corvelle;

namespace {

// A watcher on a real folder, asked for what it has seen so far.
class Watch
{
public:
    explicit Watch(
        const QString& root, std::chrono::milliseconds slowPoll = std::chrono::seconds(30))
        : m_watcher(
              root, {[this](FolderWatcher::Batch batch) {
                         const std::lock_guard lock(m_mutex);
                         m_seen.paths.unite(batch.paths);
                         m_seen.everything |= batch.everything;
                         ++m_batches;
                     },
                        [](const QString& name) { return name.startsWith('.'); },
                        [](const QString& name, const QString&) { return name == "generated"; },
                        slowPoll})
    {}

    FolderWatcher::Batch seen()
    {
        bool done = false;
        m_watcher.flush([&] {
            const std::lock_guard lock(m_mutex);
            done = true;
            m_changed.notify_all();
        });
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return done; }));
        return std::exchange(m_seen, {});
    }
    QStringList paths()
    {
        const FolderWatcher::Batch batch = seen();
        EXPECT_FALSE(batch.everything);
        QStringList list(batch.paths.begin(), batch.paths.end());
        list.sort();
        return list;
    }
    int batches()
    {
        const std::lock_guard lock(m_mutex);
        return m_batches;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    FolderWatcher::Batch m_seen;
    int m_batches = 0;
    FolderWatcher m_watcher; // last: it ends before what it writes to
};

class FolderWatcherTest : public testing::Test
{
protected:
    void rename(const QString& from, const QString& to) const
    {
        EXPECT_EQ(
            ::rename(QFile::encodeName(folder.path(from)), QFile::encodeName(folder.path(to))), 0);
    }

    TempFolder folder;
};

} // namespace

TEST_F(FolderWatcherTest, tellsWhatChangesInAllFolders)
{
    folder.makeFile("a/b/one.txt");
    folder.makeFile("two.txt");
    Watch watch(folder.path());
    EXPECT_EQ(watch.paths(), QStringList()) << "what was there before is no news";
    folder.makeFile("a/b/one.txt", "other words");
    EXPECT_EQ(watch.paths(), QStringList{"a/b/one.txt"});
    rename("two.txt", "a/three.txt");
    EXPECT_EQ(watch.paths(), (QStringList{"a/three.txt", "two.txt"}));
    ASSERT_TRUE(QFile::remove(folder.path("a/three.txt")));
    folder.makeFile(".hidden");
    EXPECT_EQ(watch.paths(), QStringList{"a/three.txt"});
}

TEST_F(FolderWatcherTest, watchesNewFoldersWithoutAGap)
{
    Watch watch(folder.path());
    for (int i = 0; i < 200; ++i) {
        const QString name = QString("new%1/below/deeper").arg(i);
        folder.makeFolder(name);
        folder.makeFile(name + "/file.txt"); // at once: its folder may not be watched yet
    }
    QSet<QString> paths = watch.seen().paths;
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(paths.contains(QString("new%1/below/deeper/file.txt").arg(i))) << i;
    folder.makeFile("new7/below/deeper/later.txt");
    EXPECT_EQ(watch.paths(), QStringList{"new7/below/deeper/later.txt"});
}

TEST_F(FolderWatcherTest, aFolderThatMovesTakesItsWatchesAlong)
{
    folder.makeFolder("a/inner");
    folder.makeFolder("b");
    const TempFolder outside;
    Watch watch(folder.path());
    rename("a", "b/c");
    EXPECT_EQ(watch.paths(), (QStringList{"a", "b/c"}));
    folder.makeFile("b/c/inner/file.txt");
    EXPECT_EQ(watch.paths(), QStringList{"b/c/inner/file.txt"});
    // Out of what is watched, and back with something new in it.
    ASSERT_EQ(
        ::rename(QFile::encodeName(folder.path("b/c")), QFile::encodeName(outside.path("c"))), 0);
    EXPECT_EQ(watch.paths(), QStringList{"b/c"});
    outside.makeFile("c/inner/other.txt");
    EXPECT_EQ(watch.paths(), QStringList());
    ASSERT_EQ(
        ::rename(QFile::encodeName(outside.path("c")), QFile::encodeName(folder.path("back"))), 0);
    EXPECT_EQ(watch.paths(),
        (QStringList{"back", "back/inner", "back/inner/file.txt", "back/inner/other.txt"}));
    // Two folders change places.
    folder.makeFolder("x/only-x");
    folder.makeFolder("y/only-y");
    (void)watch.seen();
    rename("x", "t");
    rename("y", "x");
    rename("t", "y");
    (void)watch.seen();
    folder.makeFile("y/only-x/file.txt");
    EXPECT_EQ(watch.paths(), QStringList{"y/only-x/file.txt"});
}

TEST_F(FolderWatcherTest, generatedFoldersAndLinksAreNotEntered)
{
    const TempFolder outside;
    folder.makeFolder("a");
    Watch watch(folder.path());
    folder.makeFile("a/generated/made.txt");
    ASSERT_TRUE(QFile::link(outside.path(), folder.path("link")));
    outside.makeFile("there.txt");
    EXPECT_EQ(watch.paths(), (QStringList{"a/generated", "link"}));
    folder.makeFile("a/generated/more.txt");
    outside.makeFile("there too.txt");
    EXPECT_EQ(watch.paths(), QStringList());
    rename("a/generated", "a/kept");
    (void)watch.seen();
    folder.makeFile("a/kept/more.txt", "again");
    EXPECT_EQ(watch.paths(), QStringList{"a/kept/more.txt"});
}

TEST_F(FolderWatcherTest, aLostRootIsEverything)
{
    const TempFolder outside;
    folder.makeFolder("root");
    Watch watch(folder.path("root"));
    rename("root", "elsewhere");
    EXPECT_TRUE(watch.seen().everything);
    folder.makeFolder("root/inner");
    bool back = false;
    for (int i = 0; i < 100 && !back; ++i) {
        ::usleep(100'000);
        back = watch.seen().everything;
    }
    EXPECT_TRUE(back) << "a root that comes back is watched again";
    folder.makeFile("root/inner/file.txt");
    EXPECT_EQ(watch.paths(), QStringList{"inner/file.txt"});
}

TEST_F(FolderWatcherTest, aFolderWhoseRightsComeBackIsWatched)
{
    const auto setMode = [&](const QString& path, mode_t mode) {
        ASSERT_EQ(::chmod(QFile::encodeName(folder.path(path)), mode), 0);
    };
    const BoundByRights bound;
    for (const char* which : {"", "shut", "shut/inner"}) {
        for (const mode_t mode : {0000, 0111, 0444}) {
            SCOPED_TRACE(testing::Message() << which << ' ' << std::oct << mode);
            folder.makeFile("shut/inner/deep/a.txt");
            setMode(which, mode);
            Watch watch(folder.path());
            setMode(which, 0755);
            for (int i = 0; i < 40 && watch.seen().isEmpty(); ++i)
                ::usleep(100'000); // the root itself is looked for every two seconds
            folder.makeFile("shut/inner/deep/a.txt", "again");
            EXPECT_EQ(watch.paths(), QStringList{"shut/inner/deep/a.txt"});
        }
    }
    Watch watch(folder.path());
    setMode("", 0700);
    EXPECT_EQ(watch.paths(), QStringList{""}) << "the root's own rights are told too";
}

TEST(NoMoreWatches, isEverythingNowAndThen)
{
    const QString command = QString("echo 0 > /proc/sys/user/max_inotify_watches && exec '%1' "
                                    "--gtest_filter=NoMoreWatchesChild.* "
                                    "--gtest_also_run_disabled_tests")
                                .arg(QCoreApplication::applicationFilePath());
    if (QProcess::execute(
            "unshare", {"-r", "sh", "-c", "echo 0 > /proc/sys/user/max_inotify_watches"}) != 0)
        GTEST_SKIP() << "this system doesn't let the number of watches be set";
    EXPECT_EQ(QProcess::execute("unshare", {"-r", "sh", "-c", command}), 0);
}

TEST(NoMoreWatchesChild, DISABLED_theRootItself)
{
    const TempFolder folder;
    Watch watch(folder.path(), std::chrono::seconds(3)); // the root is tried every two
    EXPECT_TRUE(watch.seen().isEmpty());
    bool told = false;
    for (int i = 0; i < 60 && !told; ++i) {
        ::usleep(100'000);
        told = watch.seen().everything;
    }
    EXPECT_TRUE(told);
}

TEST_F(FolderWatcherTest, manyEventsAreFewBatches)
{
    Watch watch(folder.path());
    for (int i = 0; i < 60; ++i) {
        folder.makeFile("busy.txt", QByteArray::number(i));
        ::usleep(10'000);
    }
    const int during = watch.batches();
    EXPECT_LE(during, 2) << "half a second of events is one batch";
    EXPECT_EQ((watch.seen().paths.isEmpty() && during == 0), false);
}
