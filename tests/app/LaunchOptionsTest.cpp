#include "app/LaunchOptions.h"

#include "app/KeyMigration.h"
#include "interface/wording/Wording.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <map>

#include <sys/stat.h>

using namespace corvelle;

namespace {

LaunchOptions options(const QStringList& arguments, std::map<std::string, QString> environment = {})
{
    return readLaunchOptions(arguments, [&](const char* name) {
        const auto found = environment.find(name);
        return found == environment.end() ? QString() : found->second;
    });
}

} // namespace

TEST(LaunchOptions, switchesStandAnywhereAndNeedTheirOperands)
{
    const LaunchOptions all = options({"x", "--size", "800x600", "--plate", "--folder", "abc"});
    EXPECT_EQ(all.size, QSize(800, 600));
    EXPECT_TRUE(all.plate);
    EXPECT_EQ(all.folder, "abc");
    EXPECT_TRUE(options({"--folder"}).folder.isEmpty());
    for (const QString bad :
        {"800", "800x", "axb", "8x600", "800x600x1", "99999999x600", "-800x600"})
        EXPECT_FALSE(options({"--size", bad}).size.has_value()) << bad.toStdString();
    EXPECT_FALSE(options({"--plates"}).plate) << "switches are matched whole";
}

TEST(LaunchOptions, aLibraryFromTheEnvironmentIsAScratchOne)
{
    EXPECT_TRUE(options({}, {{"CORVELLE_LIBRARY", "/x"}}).showsScratchNote());
    EXPECT_FALSE(options({"--plate"}, {{"CORVELLE_LIBRARY", "/x"}}).showsScratchNote());
    const LaunchOptions empty = options({}, {{"CORVELLE_LIBRARY", QString("")}});
    EXPECT_FALSE(empty.showsScratchNote());
    EXPECT_TRUE(empty.isUnderTest()) << "set, even empty, leaves the person's keys alone";
    EXPECT_TRUE(options({}, {{"CORVELLE_DRIVER", QString("")}}).isUnderTest());
    EXPECT_FALSE(options({}).isUnderTest());
    EXPECT_FALSE(options({}, {{"CORVELLE_BACKGROUND", "yes"}}).background);
}

TEST(LaunchOptions, onlyAddressesOfItemsNameAnItem)
{
    const struct
    {
        QString address, id;
    } cases[] = {
        {"corvelle://item/abc-1", "abc-1"},
        {"corvelle://item/abc/more", "abc"},
        {"corvelle://item/", ""},
        {"corvelle://item", ""},
        {"corvelle://page/abc", ""},
        {"https://item/abc", ""},
        {"abc", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(itemOfAddress(c.address), c.id) << c.address.toStdString();
}

TEST(KeyMigration, findsTheKeyAndKeepsTheOtherLines)
{
    const struct
    {
        QByteArray file;
        QString key;
        QByteArray rest;
    } cases[] = {
        {"ANTHROPIC_API_KEY=abc\n", "abc", ""},
        {"A=1\n export ANTHROPIC_API_KEY = \"a=b'\" \r\nB=2", "a=b", "A=1\nB=2\n"},
        {"OTHER=1\n", "", "OTHER=1\n"},
        {"ANTHROPIC_API_KEY=\n", "", "ANTHROPIC_API_KEY=\n"},
        {"MY_ANTHROPIC_API_KEY=abc\n", "", "MY_ANTHROPIC_API_KEY=abc\n"},
        {"NAME=\xff\nANTHROPIC_API_KEY=abc\n", "abc", "NAME=\xff\n"},
        {"", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        EXPECT_EQ(readKeysFile(c.file).key, c.key);
        EXPECT_EQ(readKeysFile(c.file).rest, c.rest);
    }
}

TEST(KeyMigration, takesTheKeyOutOfTheFileOnlyOnceItIsSaved)
{
    const TempFolder folder;
    const QByteArray content = "A=1\nANTHROPIC_API_KEY=abc\n";
    folder.makeFile("keys.env", content);
    migrateKey(
        folder.path("keys.env"), [](const QString&) -> Result<void> { return Failure("locked"); });
    EXPECT_EQ(folder.content("keys.env"), content);

    QString saved;
    migrateKey(folder.path("keys.env"), [&](const QString& key) -> Result<void> {
        saved = key;
        return {};
    });
    EXPECT_EQ(saved, "abc");
    EXPECT_EQ(folder.content("keys.env"), "A=1\n");
    struct stat facts = {};
    ASSERT_EQ(::stat(folder.path("keys.env").toUtf8().constData(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600u);

    folder.makeFile("only.env", "ANTHROPIC_API_KEY='k'\n");
    migrateKey(folder.path("only.env"), [](const QString&) { return Result<void>(); });
    EXPECT_FALSE(QFile::exists(folder.path("only.env")));
}

TEST(Wording, putsThisDesktopsWordsInWhereASentenceIsShown)
{
    const struct
    {
        QString sentence, shown;
    } cases[] = {
        {"60 items deleted in Finder are in the Trash",
            "60 items deleted in Files are in the Trash"},
        {"Show in Finder", "Show in Files"},
        {"it can’t be found on this Mac.", "it can’t be found on this computer."},
        {"⌘K", "Ctrl+K"},
        {"⌘⇧L", "Ctrl+Shift+L"},
        {"Nothing in it has changed.", "Nothing in it has changed."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shown(c.sentence), c.shown);
}
