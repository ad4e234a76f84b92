#include "e2e/Program.h"
#include "support/Printing.h"

#include <QJsonDocument>

#include <sqlite3.h>

#include <sys/socket.h>
#include <sys/un.h>

namespace {

class Copies : public testing::Test
{
protected:
    void SetUp() override
    {
        home.givenFile("Folder/a.txt");
        home.givenFile("b.txt");
    }

    // As another program of the person's says it to all that listen; how many did.
    int broadcast(const QByteArray& message) const
    {
        const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        int heard = 0;
        for (const QFileInfo& listener :
            QDir(home.path("run/corvelle")).entryInfoList(QDir::System)) {
            sockaddr_un address = {};
            address.sun_family = AF_UNIX;
            const QByteArray path = QFile::encodeName(listener.filePath());
            EXPECT_LT(static_cast<size_t>(path.size()), sizeof address.sun_path);
            std::copy(path.begin(), path.end(), address.sun_path);
            heard += ::sendto(socket, message.constData(), static_cast<size_t>(message.size()), 0,
                         reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
        }
        ::close(socket);
        return heard;
    }
    static QByteArray libraryChanged(const QString& root)
    {
        return QJsonDocument(
            QJsonObject{{"name", "app.corvelle.library-changed"}, {"object", root}})
            .toJson();
    }

    void givenRow(const QString& id, const QString& title) const
    {
        sqlite3* database = nullptr;
        ASSERT_EQ(
            sqlite3_open(home.library(".corvelle/library.sqlite").toUtf8().constData(), &database),
            SQLITE_OK);
        const QString sql = QString(
            "INSERT INTO nodes (id, space_id, kind, title, position, created_at, updated_at) "
            "SELECT '%1', id, 'page', '%2', 'z', 1, 1 FROM spaces")
                                .arg(id, title);
        EXPECT_EQ(
            sqlite3_exec(database, sql.toUtf8().constData(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

    Home home;
};

TEST_F(Copies, aSecondOneTellsSoAndEnds)
{
    Program first(home);
    first.settle();
    Program second(home);
    second.settle();
    const QJsonObject alert = second.alert();
    EXPECT_EQ(alert["title"].toString(), QString::fromUtf8("“library” is already open"));
    EXPECT_EQ(alert["text"].toString(),
        QString::fromUtf8(
            "Another copy of Corvelle has this library open. A library opens in one copy at a "
            "time, so neither "
            "saves over the other’s changes. This copy will close and show you that one."));
    EXPECT_EQ(alert["buttons"].toArray(), QJsonArray{"Show Other Copy"});
    EXPECT_EQ(second.state()["loadError"].toString(),
        QString::fromUtf8("“library” is open in another copy of Corvelle."));
    EXPECT_EQ(second.tree().nodes(), QJsonArray());
    second.key("Return");
    EXPECT_EQ(second.ended(), 0);
    EXPECT_EQ(first.tree().paths().size(), 3);
    EXPECT_EQ(first.quit(), 0);
}

TEST_F(Copies, aSecondOneInTheBackgroundEndsAtOnce)
{
    Program first(home);
    first.settle();
    Program second(home, {{}, {{"CORVELLE_BACKGROUND", "1"}}});
    EXPECT_EQ(second.ended(), 0);
    EXPECT_TRUE(first.isRunning());
    EXPECT_EQ(first.quit(), 0);
}

TEST_F(Copies, aSecondOneEndsAlsoWhenTheLockNamesNobody)
{
    Program first(home);
    first.settle();
    ASSERT_EQ(::truncate(QFile::encodeName(home.library(".corvelle/app.lock")).constData(), 0), 0);
    Program second(home);
    second.settle();
    second.key("Escape");
    EXPECT_EQ(second.ended(), 0);
    EXPECT_EQ(first.quit(), 0);
}

TEST_F(Copies, twoLibrariesAreOpenSideBySide)
{
    Program first(home);
    Program second(home, {{}, {{"CORVELLE_LIBRARY", home.path("other")}}});
    second.settle();
    EXPECT_TRUE(second.alert().isEmpty());
    EXPECT_EQ(second.quit(), 0);
    EXPECT_EQ(first.quit(), 0);
}

TEST_F(Copies, theLockOfAKilledOneIsFree)
{
    {
        Program first(home);
        first.settle();
        first.kill();
    }
    EXPECT_TRUE(QFile::exists(home.library(".corvelle/app.lock")));
    Program second(home);
    second.settle();
    EXPECT_TRUE(second.alert().isEmpty());
    EXPECT_EQ(
        home.folder.content("library/.corvelle/app.lock"), QByteArray::number(second.pid()) + '\n');
    EXPECT_EQ(second.quit(), 0);
}

TEST_F(Copies, anAddressGivenToASecondOneOpensInTheFirst)
{
    Program first(home);
    first.settle();
    const Tree tree = first.tree();
    const QString folder = tree.idAt("My Space/Folder");
    Program second(home, {{"corvelle://item/" + folder}, {}});
    EXPECT_EQ(second.ended(), 0);
    EXPECT_TRUE(waitUntil([&] { return first.folder() == folder; }));
    first.tell("up");
    Program third(home, {{"corvelle://item/unknown"}, {}}); // it is handed over all the same
    EXPECT_EQ(third.ended(), 0);
    EXPECT_EQ(first.folder(), QString());
    EXPECT_EQ(first.quit(), 0);
}

TEST_F(Copies, anAddressOpensAfterTheStartWhereNoOtherRuns)
{
    QString folder;
    {
        Program program(home);
        program.settle();
        folder = program.tree().idAt("My Space/Folder");
        EXPECT_EQ(program.quit(), 0);
    }
    Program program(home, {{"corvelle://item/" + folder}, {}});
    program.settle();
    EXPECT_EQ(program.folder(), folder);
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Copies, malformedAddressesAreIgnored)
{
    QString folder;
    {
        Program first(home);
        first.settle();
        folder = first.tree().idAt("My Space/Folder");
        EXPECT_EQ(first.quit(), 0);
    }
    Program program(
        home, {{"corvelle://item/", "corvelle://item", "corvelle://folder/" + folder,
                   "corvelle:item/" + folder, "http://item/" + folder, "corvelle:///" + folder,
                   "corvelle://item//" + folder, folder, "corvelle://"},
                  {}});
    program.settle();
    EXPECT_EQ(program.folder(), QString());
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Copies, aChangeByAnotherProcessShowsOnceItIsTold)
{
    Program program(home);
    program.settle();
    givenRow("id-1", "From elsewhere");
    EXPECT_EQ(broadcast(libraryChanged(home.library())), 1);
    EXPECT_TRUE(waitUntil([&] { return program.tell("node", {{"id", "id-1"}}).isObject(); }));
    program.settle();
    EXPECT_EQ(program.tree().titlesIn({}), (QStringList{"Folder", "From elsewhere", "b.txt"}));
    givenRow("id-2", "Another");
    EXPECT_EQ(broadcast(libraryChanged({})), 1); // nobody's in particular: everybody's
    EXPECT_TRUE(waitUntil([&] { return program.tell("node", {{"id", "id-2"}}).isObject(); }));
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Copies, aChangeOfAnotherLibraryIsIgnored)
{
    Program program(home);
    program.settle();
    const int revision = program.state()["revision"].toInt();
    givenRow("id-1", "From elsewhere");
    EXPECT_EQ(broadcast(libraryChanged(home.path("other"))), 1);
    EXPECT_EQ(broadcast("this is no message"), 1);
    EXPECT_EQ(broadcast(R"({"name": 7, "object": [1]})"), 1);
    program.settle();
    ::usleep(200'000);
    program.settle();
    EXPECT_FALSE(program.tell("node", {{"id", "id-1"}}).isObject());
    EXPECT_EQ(program.state()["revision"].toInt(), revision);
    EXPECT_EQ(broadcast(libraryChanged(home.library())), 1); // it does listen
    EXPECT_TRUE(waitUntil([&] { return program.tell("node", {{"id", "id-1"}}).isObject(); }));
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(Copies, leavesNoSocketBehind)
{
    Program program(home);
    program.settle();
    const QDir sockets(home.path("run/corvelle"));
    EXPECT_EQ(sockets.entryList(QDir::System).size(), 1);
    EXPECT_EQ(program.quit(), 0);
    EXPECT_EQ(sockets.entryList(QDir::System), QStringList());
}

} // namespace
