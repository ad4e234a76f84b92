#include "platform/ShallowWatcher.h"

#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <unistd.h>

using namespace corvelle;

namespace {

class Shallow : public testing::Test
{
protected:
    QStringList told()
    {
        bool done = false;
        watcher.flush([&] {
            const std::lock_guard lock(mutex);
            done = true;
            changed.notify_all();
        });
        std::unique_lock lock(mutex);
        EXPECT_TRUE(changed.wait_for(lock, std::chrono::seconds(20), [&] { return done; }));
        QStringList list;
        for (const QString& each : std::exchange(folders, {}))
            list.append(each.mid(folder.path().size() + 1));
        list.sort();
        return list;
    }
    void rename(const QString& from, const QString& to) const
    {
        ASSERT_EQ(
            ::rename(QFile::encodeName(folder.path(from)), QFile::encodeName(folder.path(to))), 0);
    }

    TempFolder folder;
    std::mutex mutex;
    std::condition_variable changed;
    QSet<QString> folders;
    ShallowWatcher watcher{{[this](const QSet<QString>& some) {
                                const std::lock_guard lock(mutex);
                                folders.unite(some);
                            },
        [](const QString& name) { return name.startsWith('.'); }}};
};

} // namespace

TEST_F(Shallow, tellsOfFoldersAndNotOfWhatLiesBelowThem)
{
    folder.makeFile("a/file.txt");
    folder.makeFile("a/below/deep.txt");
    folder.makeFile("b/file.txt");
    EXPECT_TRUE(watcher.watch(folder.path("a")));
    EXPECT_TRUE(watcher.watch(folder.path("b")));
    EXPECT_FALSE(watcher.watch(folder.path("nowhere")));
    EXPECT_FALSE(watcher.watch(folder.path("a/file.txt"))) << "no folder";
    EXPECT_EQ(told(), QStringList{});
    folder.makeFile("a/file.txt", "other words");
    EXPECT_EQ(told(), QStringList{"a"});
    folder.makeFile("a/below/deep.txt", "other words");
    folder.makeFile("b/.hidden");
    EXPECT_EQ(told(), QStringList{});
    rename("a/file.txt", "b/moved.txt");
    EXPECT_EQ(told(), (QStringList{"a", "b"}));
    watcher.forget(folder.path("a"));
    folder.makeFile("a/new.txt");
    EXPECT_EQ(told(), QStringList{});
}

TEST_F(Shallow, aFolderThatWentIsToldAndCanBeWatchedAgain)
{
    folder.makeFolder("a");
    EXPECT_TRUE(watcher.watch(folder.path("a")));
    rename("a", "elsewhere");
    EXPECT_EQ(told(), QStringList{"a"});
    EXPECT_FALSE(watcher.watch(folder.path("a")));
    folder.makeFile("elsewhere/x.txt");
    EXPECT_EQ(told(), QStringList{}) << "what it was is nobody's business";
    folder.makeFolder("a");
    EXPECT_TRUE(watcher.watch(folder.path("a")));
    folder.makeFile("a/x.txt");
    EXPECT_EQ(told(), QStringList{"a"});
    ASSERT_TRUE(QDir(folder.path("a")).removeRecursively());
    EXPECT_EQ(told(), QStringList{"a"});
}
