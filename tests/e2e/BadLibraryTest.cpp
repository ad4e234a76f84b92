#include "e2e/FolderPrint.h"
#include "e2e/Program.h"
#include "support/Printing.h"

#include <sqlite3.h>

#include <csignal>

namespace {

void run(const QString& database, const char* sql)
{
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(database.toUtf8().constData(), &connection), SQLITE_OK);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, &error), SQLITE_OK)
        << (error ? error : "");
    sqlite3_free(error);
    sqlite3_close(connection);
}

QJsonArray words(std::initializer_list<const char*> list)
{
    QJsonArray array;
    for (const char* text : list)
        array.append(QString::fromUtf8(text));
    return array;
}

class BadLibrary : public testing::Test
{
protected:
    QString database() const { return home.library(".corvelle/library.sqlite"); }

    // A library that the program has made and closed.
    void givenLibrary()
    {
        home.givenFile("a.txt");
        Program program(home);
        program.settle();
        EXPECT_EQ(program.quit(), 0);
    }

    static Program::Options remembering() { return {{}, {{"CORVELLE_LIBRARY", QString()}}}; }

    void expectFailedAlert(Program& program, const QString& name = "library")
    {
        const QJsonObject alert = program.alert();
        EXPECT_EQ(alert["title"].toString(),
            QString::fromUtf8("Couldn’t open the library “%1”").arg(name));
        EXPECT_EQ(alert["text"].toString(),
            QString::fromUtf8("Corvelle couldn’t read it, or couldn’t save in its folder: its data "
                              "may be damaged, or the "
                              "folder may not allow changes. Nothing in it has changed."));
        EXPECT_EQ(alert["buttons"].toArray(), words({"Quit", "Show in Files", "Choose Library…"}));
    }

    void expectMissingAlert(Program& program, const QString& name)
    {
        const QJsonObject alert = program.alert();
        EXPECT_EQ(
            alert["title"].toString(), QString::fromUtf8("Can’t find the library “%1”").arg(name));
        EXPECT_EQ(alert["text"].toString(),
            QString::fromUtf8("It was in %1. It may have been renamed or moved in Files, or be on "
                              "a disk that isn’t connected. "
                              "Nothing in it has changed.")
                .arg(home.path({})));
        EXPECT_EQ(alert["buttons"].toArray(),
            words({"Back to Corvelle Library", "Try Again", "Choose Library…"}));
    }

    // The program tells that it can't open the database, changes nothing, and ends when it is told
    // to.
    void expectToFail()
    {
        const QByteArray before = bytes();
        const FolderPrint print = printOf(home.library());
        Program program(home);
        program.settle();
        expectFailedAlert(program);
        EXPECT_EQ(program.tree().nodes(), QJsonArray());
        EXPECT_TRUE(program.log().contains("Library failed to open: "))
            << program.log().toStdString();
        program.key("Escape");
        EXPECT_EQ(program.ended(), 0);
        EXPECT_EQ(bytes(), before);
        EXPECT_EQ(differences(print, printOf(home.library())), QStringList());
        for (const char* ending : {"-wal", "-shm", "-journal"})
            EXPECT_FALSE(QFile::exists(database() + ending)) << ending;
    }

    QByteArray bytes() const { return home.folder.content("library/.corvelle/library.sqlite"); }

    QPointF button(Program& program, int number)
    {
        const QJsonArray place = program.alert()["places"].toArray()[number].toArray();
        return {place[0].toDouble() + place[2].toDouble() / 2,
            place[1].toDouble() + place[3].toDouble() / 2};
    }

    Home home;
};

TEST_F(BadLibrary, doesNotOpenWhenTheDatabaseIsNoise)
{
    QByteArray noise;
    for (int i = 0; i < 20'000; ++i)
        noise.append(static_cast<char>(i * 7919 % 251));
    home.givenFile("a.txt");
    home.folder.makeFile("library/.corvelle/library.sqlite", noise);
    expectToFail();
}

TEST_F(BadLibrary, doesNotOpenWhenTheDatabaseIsBrokenInside)
{
    givenLibrary();
    QFile file(database());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(100);
    file.write(QByteArray(4000, '\x5a'));
    file.close();
    expectToFail();
}

TEST_F(BadLibrary, doesNotOpenWhenALaterVersionWroteIt)
{
    givenLibrary();
    run(database(), "PRAGMA user_version = 9999; PRAGMA journal_mode = DELETE");
    expectToFail();
}

TEST_F(BadLibrary, doesNotOpenSomebodyElsesDatabase)
{
    home.givenFile("a.txt");
    home.folder.makeFolder("library/.corvelle");
    run(database(), "CREATE TABLE recipes (name TEXT); INSERT INTO recipes VALUES ('soup')");
    expectToFail();
}

TEST_F(BadLibrary, doesNotOpenADatabaseThatCanOnlyBeRead)
{
    givenLibrary();
    run(database(), "PRAGMA journal_mode = DELETE");
    ASSERT_EQ(::chmod(QFile::encodeName(database()).constData(), 0444), 0);
    expectToFail();
}

TEST_F(BadLibrary, doesNotOpenWhereNothingMayBeMade)
{
    home.givenFile("a.txt");
    ASSERT_EQ(::chmod(QFile::encodeName(home.library()).constData(), 0555), 0);
    expectToFail();
    ::chmod(QFile::encodeName(home.library()).constData(), 0755);
}

TEST_F(BadLibrary, takesAnEmptyDatabaseForANewOne)
{
    home.givenFile("a.txt");
    home.folder.makeFile("library/.corvelle/library.sqlite", {});
    Program program(home);
    program.settle();
    EXPECT_TRUE(program.alert().isEmpty());
    EXPECT_EQ(program.tree().paths(), QStringList{"My Space/a.txt"});
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(BadLibrary, doesNotOpenARootThatIsNoFolder)
{
    home.folder.makeFile("library", "a file");
    home.folder.makeFolder("places");
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(home.path("places/dangling")).constData()), 0);
    ASSERT_EQ(::symlink("loop", QFile::encodeName(home.path("places/loop")).constData()), 0);
    const FolderPrint before = printOf(home.path("places"));
    for (const char* root : {"library", "places/dangling", "places/loop"}) {
        SCOPED_TRACE(root);
        Program program(home, {{}, {{"CORVELLE_LIBRARY", home.path(root)}}});
        program.settle();
        expectFailedAlert(program, QFileInfo(root).fileName());
        program.key("Escape");
        EXPECT_EQ(program.ended(), 0);
    }
    EXPECT_EQ(home.folder.content("library"), "a file");
    EXPECT_EQ(differences(before, printOf(home.path("places"))), QStringList());
}

TEST_F(BadLibrary, tellsThatARememberedLibraryIsMissing)
{
    home.folder.makeFile("a file", "words");
    home.folder.makeFile("a folder/of mine.txt", "words");
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(home.path("dangling")).constData()), 0);
    ASSERT_EQ(::symlink("loop", QFile::encodeName(home.path("loop")).constData()), 0);
    for (const char* name : {"a file", "a folder", "dangling", "loop", "gone"}) {
        SCOPED_TRACE(name);
        home.remembers(home.path(name));
        const FolderPrint before = printOf(home.path("a folder"));
        Program program(home, remembering());
        program.settle();
        expectMissingAlert(program, name);
        EXPECT_EQ(program.tree().nodes(), QJsonArray());
        EXPECT_EQ(program.quit(), 0);
        EXPECT_EQ(differences(before, printOf(home.path("a folder"))), QStringList());
        EXPECT_FALSE(QFileInfo::exists(home.path("a folder/.corvelle")));
        EXPECT_FALSE(QFileInfo::exists(home.path("gone")));
    }
}

TEST_F(BadLibrary, opensOnTryAgainOnceTheFolderIsBack)
{
    givenLibrary();
    ASSERT_TRUE(QDir().rename(home.library(), home.path("away")));
    home.remembers(home.library());
    Program program(home, remembering());
    program.settle();
    expectMissingAlert(program, "library");
    // From the likely answer, which has the focus, back to the one before it.
    program.key("Shift+Tab");
    program.key("Return");
    program.settle();
    expectMissingAlert(program, "library"); // it isn't back yet
    ASSERT_TRUE(QDir().rename(home.path("away"), home.library()));
    program.key("Shift+Tab");
    program.key("Return");
    program.settle();
    EXPECT_TRUE(program.alert().isEmpty());
    EXPECT_EQ(program.tree().paths(), QStringList{"My Space/a.txt"});
    EXPECT_EQ(program.state()["loadError"].toString(), QString());
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(BadLibrary, answersToTheMouse)
{
    givenLibrary();
    ASSERT_TRUE(QDir().rename(home.library(), home.path("away")));
    home.remembers(home.library());
    Program program(home, remembering());
    program.settle();
    program.mouse("click", QPointF(20, 20)); // beside the panel
    program.mouse("click", program.onScreen(QPointF(0, 0)));
    expectMissingAlert(program, "library");
    ASSERT_TRUE(QDir().rename(home.path("away"), home.library()));
    program.mouse("click", button(program, 1));
    program.settle();
    EXPECT_TRUE(program.alert().isEmpty());
    EXPECT_EQ(program.tree().paths(), QStringList{"My Space/a.txt"});
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(BadLibrary, tellsOnTryAgainThatAnotherCopyHasIt)
{
    givenLibrary();
    ASSERT_TRUE(QDir().rename(home.library(), home.path("away")));
    home.remembers(home.library());
    Program program(home, remembering());
    program.settle();
    ASSERT_TRUE(QDir().rename(home.path("away"), home.library()));
    Program other(home);
    other.settle();
    program.key("Shift+Tab");
    program.key("Return");
    program.settle();
    EXPECT_EQ(program.alert()["title"].toString(), QString::fromUtf8("“library” is already open"));
    program.key("Return");
    EXPECT_EQ(program.ended(), 0);
    EXPECT_EQ(other.quit(), 0);
}

TEST_F(BadLibrary, comesBackToTheAlertFromTheChooser)
{
    home.remembers(home.path("gone"));
    Program program(home, remembering());
    program.settle();
    program.key("Return"); // the likely answer
    program.settle();
    EXPECT_TRUE(program.alert().isEmpty());
    program.key("Escape");
    program.settle();
    expectMissingAlert(program, "gone");
    EXPECT_EQ(program.quit(), 0);
}

// Ends the program that has the library open, which isn't ours to wait for.
bool endHolder(const QString& library)
{
    QFile lock(library + "/.corvelle/app.lock");
    const pid_t holder =
        lock.open(QIODevice::ReadOnly) ? static_cast<pid_t>(lock.readAll().trimmed().toInt()) : 0;
    if (holder <= 1 || ::kill(holder, SIGTERM) != 0)
        return false;
    return waitUntil([holder] { return ::kill(holder, 0) != 0; });
}

TEST_F(BadLibrary, goesBackToTheDefaultLibraryAndForgetsTheMissingOne)
{
    home.remembers(home.path("gone"));
    Program program(home, remembering());
    program.settle();
    program.key("Escape");
    EXPECT_EQ(program.ended(), 0);
    const QString library = home.path("home/Corvelle");
    ASSERT_TRUE(
        waitUntil([&] { return QFileInfo(library + "/.corvelle/library.sqlite").size() > 0; }));
    EXPECT_TRUE(waitUntil([&] { return QFileInfo(library + "/My Space").isDir(); }));
    EXPECT_TRUE(endHolder(library));
    EXPECT_FALSE(home.folder.content("config/Corvelle/Corvelle.conf").contains("libraryPath"));
    EXPECT_FALSE(QFileInfo::exists(home.path("gone")));
}

TEST_F(BadLibrary, staysSilentInTheBackground)
{
    home.remembers(home.path("gone"));
    Program missing(home, {{}, {{"CORVELLE_LIBRARY", QString()}, {"CORVELLE_BACKGROUND", "1"}}});
    missing.settle();
    EXPECT_TRUE(missing.alert().isEmpty());
    EXPECT_EQ(missing.state()["loadError"].toString(),
        QString::fromUtf8("Can’t find the library “gone”."));
    EXPECT_EQ(missing.quit(), 0);
    home.folder.makeFile("library", "a file");
    Program failed(home, {{}, {{"CORVELLE_BACKGROUND", "1"}}});
    failed.settle();
    EXPECT_TRUE(failed.alert().isEmpty());
    EXPECT_EQ(failed.state()["loadError"].toString(),
        QString::fromUtf8("Couldn’t open the library “library”."));
    EXPECT_EQ(failed.quit(), 0);
}

} // namespace
