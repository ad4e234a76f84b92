#include "e2e/FolderPrint.h"
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QImage>

#include <fcntl.h>

namespace {

class Switches : public testing::Test
{
protected:
    void SetUp() override
    {
        home.givenFile("Folder/a.txt");
        Program program(home);
        program.settle();
        folder = program.tree().idAt("My Space/Folder");
        file = program.tree().idAt("My Space/Folder/a.txt");
        EXPECT_EQ(program.quit(), 0);
    }

    QString folderWith(const QStringList& arguments)
    {
        Program program(home, {arguments, {}});
        program.settle();
        const QString open = program.folder();
        EXPECT_EQ(program.quit(), 0);
        return open;
    }

    QSize sizeWith(const QStringList& arguments)
    {
        Program program(home, {arguments, {}});
        program.settle();
        const QJsonArray viewport = program.state()["viewport"].toArray();
        EXPECT_EQ(program.quit(), 0);
        return {viewport[0].toInt(), viewport[1].toInt()};
    }

    QImage windowWith(const Program::Options& options)
    {
        Program program(home, options);
        program.settle();
        program.tell("shot", {{"file", home.path("shot.png")}});
        EXPECT_EQ(program.quit(), 0);
        return QImage(home.path("shot.png"));
    }

    Home home;
    QString folder, file;
};

TEST_F(Switches, folderOpensThatFolder)
{
    EXPECT_EQ(folderWith({"--folder", folder}), folder);
    EXPECT_EQ(folderWith({"something", "--folder", folder, "else"}), folder);
}

TEST_F(Switches, folderIgnoresWhatIsNoFolderOfTheTree)
{
    EXPECT_EQ(folderWith({"--folder"}), QString());
    EXPECT_EQ(folderWith({"--folder", "unknown"}), QString());
    EXPECT_EQ(folderWith({"--folder", file}), QString());
    EXPECT_EQ(folderWith({"--folder=" + folder}), QString()); // arguments are matched whole
}

TEST_F(Switches, sizeIsThatOfTheWindowsContent)
{
    EXPECT_EQ(sizeWith({}), QSize(1440, 900));
    EXPECT_EQ(sizeWith({"--size", "1000x700"}), QSize(1000, 700));
    EXPECT_EQ(sizeWith({"--size", "600x400"}), QSize(600, 400));
}

TEST_F(Switches, sizeIgnoresWhatIsNone)
{
    for (const char* size : {"", "wide", "800", "800x", "x600", "800x600x400", "-800x600", "0x0",
             "99999999999x3", "nanxinf"})
        EXPECT_EQ(sizeWith({"--size", size}), QSize(1440, 900)) << size;
    EXPECT_EQ(sizeWith({"--size"}), QSize(1440, 900));
}

TEST_F(Switches, plateTakesTheNoteOfAScratchLibraryAway)
{
    const QImage noted = windowWith({}), bare = windowWith({{"--plate"}, {}});
    ASSERT_EQ(noted.size(), bare.size());
    QRect different;
    for (int y = 0; y < noted.height(); ++y)
        for (int x = 0; x < noted.width(); ++x)
            if (noted.pixel(x, y) != bare.pixel(x, y))
                different |= QRect(x, y, 1, 1);
    EXPECT_FALSE(different.isEmpty());
    EXPECT_TRUE(QRect(0, 800, 400, 100)
                    .contains(different)) // it stands in the lower left, and nothing else changes
        << different.x() << ' ' << different.y() << ' ' << different.width() << ' '
        << different.height();
    // A library that isn't a scratch one has no note.
    home.remembers(home.library());
    EXPECT_EQ(windowWith({{}, {{"CORVELLE_LIBRARY", QString()}}}), bare);
}

TEST_F(Switches, anEmptyLibraryVariableCountsAsNone)
{
    home.remembers(home.library());
    Program program(home, {{}, {{"CORVELLE_LIBRARY", ""}}});
    program.settle();
    EXPECT_EQ(program.tell("ping")["library"].toString(), home.library());
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Switches, withoutAnyChoiceTheLibraryIsInTheHomeFolder)
{
    Program program(home, {{}, {{"CORVELLE_LIBRARY", QString()}}});
    program.settle();
    EXPECT_EQ(program.tell("ping")["library"].toString(), home.path("home/Corvelle"));
    EXPECT_TRUE(QFileInfo(home.path("home/Corvelle/My Space")).isDir());
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Switches, theLibraryVariableKnowsTheHomeFolderAndIsNotRemembered)
{
    home.remembers(home.library());
    const QByteArray remembered = home.folder.content("config/Corvelle/Corvelle.conf");
    Program program(home, {{}, {{"CORVELLE_LIBRARY", "~/deep/inside/library/"}}});
    program.settle();
    EXPECT_EQ(program.tell("ping")["library"].toString(), home.path("home/deep/inside/library"));
    EXPECT_EQ(program.quit(), 0);
    EXPECT_TRUE(QFileInfo(home.path("home/deep/inside/library/My Space")).isDir());
    EXPECT_EQ(home.folder.content("config/Corvelle/Corvelle.conf"), remembered);
}

TEST_F(Switches, aLinkToALibraryIsTheLibrary)
{
    ASSERT_EQ(::symlink("library", QFile::encodeName(home.path("link")).constData()), 0);
    home.remembers(home.path("link"));
    Program program(home, {{}, {{"CORVELLE_LIBRARY", QString()}}});
    program.settle();
    EXPECT_TRUE(program.alert().isEmpty());
    EXPECT_EQ(program.tell("ping")["library"].toString(), home.library());
    EXPECT_EQ(program.tree().idAt("My Space/Folder"), folder);
    EXPECT_EQ(program.quit(), 0);
}

// Where the system notes that a file was read, keys.env must not even be read.
class KeysFile : public Switches
{
protected:
    void SetUp() override
    {
        Switches::SetUp();
        home.folder.makeFile("data/Corvelle/keys.env", content);
        home.folder.makeFile("data/witness", content);
        makeOld(witness);
        QFile reader(witness);
        ASSERT_TRUE(reader.open(QIODevice::ReadOnly) && !reader.readAll().isEmpty());
        if (!wasRead(witness))
            GTEST_SKIP() << "this disk doesn't note when a file was read";
    }

    static void makeOld(const QString& path)
    {
        const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'100, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
    }
    static bool wasRead(const QString& path)
    {
        struct stat facts = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &facts), 0);
        return facts.st_atim.tv_sec != 1'000'000'000;
    }

    const QByteArray content = "export ANTHROPIC_API_KEY=\"secret\"\nOTHER=1\n";
    const QString keys = home.path("data/Corvelle/keys.env"), witness = home.path("data/witness");
};

TEST_F(KeysFile, isNotTouchedByAProgramUnderTest)
{
    for (const QMap<QString, QString>& environment :
        {QMap<QString, QString>{{"CORVELLE_LIBRARY", QString()}}, QMap<QString, QString>{}}) {
        makeOld(keys);
        const FolderPrint before = printOf(home.path("data/Corvelle"));
        makeOld(keys); // to look at it was to read it
        Program program(home, {{}, environment});
        program.settle();
        EXPECT_EQ(program.quit(), 0);
        EXPECT_FALSE(wasRead(keys));
        EXPECT_EQ(differences(before, printOf(home.path("data/Corvelle"))), QStringList());
    }
}

TEST_F(KeysFile, staysAsItIsWhereNoKeyringTakesTheKey)
{
    makeOld(keys);
    Program program(home, {{}, {{"CORVELLE_LIBRARY", QString()}}, false});
    EXPECT_TRUE(waitUntil([&] { return wasRead(keys); })); // it is a person's program now
    ::usleep(300'000);
    program.terminate();
    EXPECT_EQ(program.ended(), 0);
    EXPECT_EQ(home.folder.content("data/Corvelle/keys.env"), content);
}

} // namespace
