#include "platform/Volume.h"

#include "support/Printing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace corvelle;

namespace {

void givenFile(const QString& path)
{
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
}

// What the disk of the tests does, asked in the plainest way.
NameCase actual(const QTemporaryDir& folder)
{
    givenFile(folder.filePath("plain"));
    const bool isFound = QFile::exists(folder.filePath("PLAIN"));
    QFile::remove(folder.filePath("plain"));
    return isFound ? NameCase::Ignored : NameCase::Kept;
}

} // namespace

TEST(Volume, theProbeIsRightAndLeavesNothingBehind)
{
    const QTemporaryDir folder;
    EXPECT_EQ(probeNameCase(folder.path()), actual(folder));
    EXPECT_TRUE(
        QDir(folder.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    EXPECT_EQ(probeNameCase(folder.filePath("nothing")), NameCase::Kept);
}

TEST(Volume, aLookAtNamesIsRightWithAnyContents)
{
    const QTemporaryDir folder;
    EXPECT_EQ(lookUpNameCase(folder.path()), actual(folder)) << "empty";
    givenFile(folder.filePath("1234"));
    EXPECT_EQ(lookUpNameCase(folder.path()), actual(folder)) << "without letters";
    givenFile(folder.filePath("Report.txt"));
    EXPECT_EQ(lookUpNameCase(folder.path() + '/'), actual(folder)) << "with letters";
    EXPECT_EQ(lookUpNameCase(folder.filePath("nothing")), NameCase::Kept);
    EXPECT_EQ(lookUpNameCase("/proc/self/fd"), NameCase::Kept);
}

TEST(Volume, twoLinksToOneFileAreNotTakenForOneName)
{
    const QTemporaryDir folder;
    givenFile(folder.filePath("a"));
    if (::link(folder.filePath("a").toUtf8().constData(),
            folder.filePath("A").toUtf8().constData()) != 0)
        GTEST_SKIP() << "this volume ignores case or has no links";
    EXPECT_EQ(lookUpNameCase(folder.path()), NameCase::Kept);
}
