#include "platform/FileFacts.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

using namespace corvelle;

namespace {

class FileFactsTest : public testing::Test
{
protected:
    QByteArray path(const char* name) const { return m_folder.path().toUtf8() + '/' + name; }

    void givenFile(const char* name, const QByteArray& contents) const
    {
        QFile file(QString::fromUtf8(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

private:
    QTemporaryDir m_folder;
};

struct statx birthless(quint64 inode, quint64 size, qint64 seconds)
{
    struct statx status = {};
    status.stx_mask = STATX_TYPE | STATX_INO | STATX_SIZE | STATX_MTIME;
    status.stx_mode = S_IFREG;
    status.stx_ino = inode;
    status.stx_size = size;
    status.stx_mtime.tv_sec = seconds;
    return status;
}

quint64 identityOf(const struct statx& status)
{
    return factsOf(status)->identity;
}

} // namespace

TEST_F(FileFactsTest, aPathIsDescribedAsItIs)
{
    givenFile("file", "12345");
    const timespec times[2] = {{0, UTIME_OMIT}, {1'700'000'000, 250'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path("file").constData(), times, 0), 0);
    ASSERT_EQ(::mkdir(path("folder").constData(), 0700), 0);
    ASSERT_EQ(::symlink("nowhere", path("link").constData()), 0);
    ASSERT_EQ(::mkfifo(path("fifo").constData(), 0600), 0);

    const auto file = fileFacts(path("file"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->kind, FileFacts::Kind::Regular);
    EXPECT_EQ(file->size, 5);
    EXPECT_EQ(file->modified, 1'700'000'000.25);
    EXPECT_EQ(fileFacts(path("folder"))->kind, FileFacts::Kind::Folder);
    EXPECT_EQ(fileFacts(path("folder"))->device, file->device);
    EXPECT_EQ(fileFacts(path("link"))->kind, FileFacts::Kind::SymbolicLink);
    EXPECT_EQ(fileFacts(path("link"))->size, 7);
    EXPECT_EQ(fileFacts(path("fifo"))->kind, FileFacts::Kind::Other);
    EXPECT_FALSE(fileFacts(path("nothing")));
    EXPECT_FALSE(fileFacts(path("file") + "/below"));
}

TEST_F(FileFactsTest, identityStaysWithTheFileAndIsNotGivenToTheNextOne)
{
    givenFile("a", "1");
    const quint64 first = fileFacts(path("a"))->identity;
    ASSERT_EQ(::rename(path("a").constData(), path("b").constData()), 0);
    givenFile("b", "other contents");
    EXPECT_EQ(fileFacts(path("b"))->identity, first);

    std::set<quint64> identities = {first};
    std::set<ino_t> inodes;
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(::unlink(path("b").constData()), 0);
        // The birth time is read from a clock that moves on with every timer tick.
        ::usleep(10'000);
        givenFile("b", "other contents");
        struct stat status;
        ASSERT_EQ(::stat(path("b").constData(), &status), 0);
        inodes.insert(status.st_ino);
        identities.insert(fileFacts(path("b"))->identity);
    }
    EXPECT_EQ(identities.size(), 11u) << "on " << inodes.size() << " different inodes";
}

TEST(FileFacts, withoutABirthTimeSizeAndTimeOfAFileJoinItsIdentity)
{
    const struct statx status = birthless(7, 100, 1000);
    EXPECT_EQ(identityOf(status), identityOf(birthless(7, 100, 1000)));
    EXPECT_NE(identityOf(status), identityOf(birthless(8, 100, 1000)));
    EXPECT_NE(identityOf(status), identityOf(birthless(7, 101, 1000)));
    EXPECT_NE(identityOf(status), identityOf(birthless(7, 100, 1001)));

    struct statx zeroBirth = status;
    zeroBirth.stx_mask |= STATX_BTIME;
    EXPECT_EQ(identityOf(zeroBirth), identityOf(status)) << "a birth at the zero point is none";

    struct statx folder = status;
    folder.stx_mode = S_IFDIR;
    const quint64 empty = identityOf(folder);
    folder.stx_mtime.tv_sec = 2000;
    EXPECT_EQ(identityOf(folder), empty) << "a folder stays itself when something is put into it";
}

TEST(FileFacts, birthTimeReplacesSizeAndTime)
{
    struct statx status = birthless(7, 100, 1000);
    status.stx_mask |= STATX_BTIME;
    status.stx_btime = {900, 5, 0};
    struct statx edited = status;
    edited.stx_size = 200;
    edited.stx_mtime.tv_sec = 3000;
    EXPECT_EQ(identityOf(edited), identityOf(status));
    struct statx other = status;
    other.stx_btime.tv_nsec = 6;
    EXPECT_NE(identityOf(other), identityOf(status));
}

TEST(FileFacts, whatTheFileSystemDoesNotKnowIsNotMadeUp)
{
    struct statx status = birthless(7, 100, 1000);
    status.stx_mask = STATX_TYPE | STATX_INO;
    ASSERT_TRUE(factsOf(status));
    EXPECT_EQ(factsOf(status)->modified, std::nullopt);
    EXPECT_EQ(factsOf(status)->size, 0);
    status.stx_mask = STATX_TYPE;
    EXPECT_FALSE(factsOf(status));
}
