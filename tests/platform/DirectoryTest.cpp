#include "platform/Directory.h"

#include "support/Printing.h"
#include "support/RefusedCall.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <set>

using namespace corvelle;

namespace {

class DirectoryTest : public testing::Test
{
protected:
    QByteArray path(const QByteArray& name) const { return m_folder.path().toUtf8() + '/' + name; }

    void givenFolder(const char* name) const { ASSERT_TRUE(QDir(m_folder.path()).mkpath(name)); }

    void givenFile(const QByteArray& name) const
    {
        const int fd = ::open(path(name).constData(), O_WRONLY | O_CREAT, 0600);
        ASSERT_GE(fd, 0);
        ::close(fd);
    }

    // What can be opened below the folder, as a text of the names.
    QByteArray opened(const std::vector<const char*>& names) const
    {
        const Result<Directory> folder = Directory::open(m_folder.path().toUtf8());
        QByteArray result;
        for (const char* name : names)
            if (folder->openBelow(name))
                result += QByteArray(name) + ' ';
        return result;
    }

private:
    QTemporaryDir m_folder;
};

std::multiset<QByteArray> namesIn(const QByteArray& path)
{
    std::multiset<QByteArray> names;
    Result<Directory> directory = Directory::open(path);
    if (directory)
        while (const auto name = directory->nextName())
            names.insert(name->toByteArray());
    return names;
}

} // namespace

TEST_F(DirectoryTest, everyNameIsToldOnceAsItsBytes)
{
    std::multiset<QByteArray> expected = {
        "two\nlines", "\xFFnot text", ".hidden", QByteArray(255, 'x')};
    for (int i = 0; i < 3000; ++i) // several reads' worth
        expected.insert("a longer name to fill the records " + QByteArray::number(i));
    for (const QByteArray& name : expected)
        givenFile(name);
    EXPECT_EQ(namesIn(path("")), expected);
}

TEST_F(DirectoryTest, aListingThatFailsHalfwayIsBroken)
{
    givenFolder("gone");
    Result<Directory> directory = Directory::open(path("gone"));
    ASSERT_TRUE(directory);
    ASSERT_EQ(::rmdir(path("gone").constData()), 0);
    EXPECT_FALSE(directory->nextName());
    EXPECT_TRUE(directory->isBroken());
}

TEST_F(DirectoryTest, onlyRealFoldersBelowAreOpened)
{
    givenFolder("real/inner");
    givenFile("file");
    ASSERT_EQ(::symlink("real", path("link").constData()), 0);
    const std::vector<const char*> asked = {"real", "real/inner", "link", "link/inner", "file",
        "none", "real/..", "../", "/tmp", "real/../real"};
    EXPECT_FALSE(Directory::open(path("link")));
    EXPECT_EQ(opened(asked), "real real/inner ");

    // Older kernels and some containers don't have the call that makes this easy.
    EXPECT_EXIT(
        {
            const bool isRefused = refuseCall(SYS_openat2, ENOSYS);
            ::_exit(!isRefused ? 2 : opened(asked) == "real real/inner " ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(DirectoryTest, whatIsGoneIsToldApartFromWhatCannotBeLookedAt)
{
    givenFile("file");
    const Result<Directory> directory = Directory::open(path(""));
    ASSERT_TRUE(directory);
    const auto there = directory->facts("file");
    ASSERT_TRUE(there && *there);
    EXPECT_EQ(**there, fileFacts(path("file")));
    const auto gone = directory->facts("nothing");
    ASSERT_TRUE(gone);
    EXPECT_FALSE(*gone);
    EXPECT_FALSE(directory->facts(QByteArray(300, 'x').constData()));
}

TEST(NameText, givesTheSameBytesBackOrNothing)
{
    const char* marked = "\uFEFFmarked"; // begins with a byte order mark
    for (const QByteArray name : {"plain", "ü", "u\u0308", marked, "\U0001F600", "a\nb", "\x7F"}) {
        ASSERT_TRUE(nameText(name)) << name.toStdString();
        EXPECT_EQ(nameText(name)->toUtf8(), name);
    }
    for (const QByteArray name : {"\xFF", "caf\xE9", "\xC0\x80", "\xED\xA0\x80", "\xF0\x9F\x98"})
        EXPECT_FALSE(nameText(name)) << name.toPercentEncoding().toStdString();
}
