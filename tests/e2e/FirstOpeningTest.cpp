#include "e2e/FolderPrint.h"
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QImage>
#include <QTemporaryDir>

#include <cmath>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

class FirstOpening : public testing::Test
{
protected:
    // Starts the program on the folder as it is, lets it come to rest and ends it. The folder must
    // come out of it untouched.
    Tree openOnce()
    {
        const FolderPrint before = printOf(home.library());
        Program program(home);
        program.settle();
        const Tree tree = program.tree();
        EXPECT_EQ(program.quit(), 0);
        log = program.log();
        EXPECT_EQ(differences(before, printOf(home.library())), QStringList());
        EXPECT_FALSE(tree.hasTwins());
        return tree;
    }

    void givenPicture(const QString& below, int width, int height)
    {
        QImage picture(width, height, QImage::Format_RGB32);
        picture.fill(Qt::red);
        home.givenFile(below, {});
        EXPECT_TRUE(picture.save(home.space(below), "PNG"));
    }

    Home home;
    QByteArray log;
};

TEST_F(FirstOpening, bringsEveryFileAndFolderInWithItsFacts)
{
    home.givenFile("letter.txt", "Dear all,");
    home.givenFile("Trip/plan.md", "# Plan");
    home.givenFile("Trip/Paris/hotel.pdf", "%PDF-");
    home.givenFolder("Trip/Rome");
    const Tree tree = openOnce();

    EXPECT_EQ(tree.paths(),
        (QStringList{"My Space/Trip", "My Space/Trip/Paris", "My Space/Trip/Paris/hotel.pdf",
            "My Space/Trip/Rome", "My Space/Trip/plan.md", "My Space/letter.txt"}));
    EXPECT_EQ(tree.titlesIn({}), (QStringList{"Trip", "letter.txt"}));
    EXPECT_EQ(tree.titlesIn("My Space/Trip"), (QStringList{"Paris", "Rome", "plan.md"}));
    const QJsonObject letter = tree.at("My Space/letter.txt");
    EXPECT_EQ(letter["kind"].toString(), "file");
    EXPECT_EQ(letter["mime"].toString(), "text/plain");
    EXPECT_EQ(letter["byteSize"].toInt(), 9);
    EXPECT_TRUE(letter["parentID"].isNull());
    EXPECT_TRUE(letter["width"].isNull());
    const QJsonObject trip = tree.at("My Space/Trip");
    EXPECT_EQ(trip["kind"].toString(), "folder");
    EXPECT_TRUE(trip["mime"].isNull());
    EXPECT_TRUE(trip["byteSize"].isNull());
    const QJsonObject hotel = tree.at("My Space/Trip/Paris/hotel.pdf");
    EXPECT_EQ(hotel["mime"].toString(), "application/pdf");
    EXPECT_EQ(hotel["parentID"].toString(), tree.idAt("My Space/Trip/Paris"));
}

TEST_F(FirstOpening, laysTheCardsOutInRowsOfFourByName)
{
    for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"})
        home.givenFile(name);
    const Tree tree = openOnce();
    const QPointF places[] = {{0, 160}, {256, 160}, {512, 160}, {768, 160}, {0, 424}};
    QString lastPosition;
    for (int i = 0; i < 5; ++i) {
        const QJsonObject node = tree.at(QString("My Space/%1.txt").arg(QChar('a' + i)));
        EXPECT_EQ(QPointF(node["x"].toDouble(), node["y"].toDouble()), places[i]);
        EXPECT_GT(node["position"].toString(), lastPosition);
        lastPosition = node["position"].toString();
    }
}

TEST_F(FirstOpening, measuresPictures)
{
    givenPicture("sun.png", 64, 48);
    home.givenFile("broken.png", "this is no picture");
    const Tree tree = openOnce();
    EXPECT_EQ(tree.at("My Space/sun.png")["width"].toInt(), 64);
    EXPECT_EQ(tree.at("My Space/sun.png")["height"].toInt(), 48);
    EXPECT_EQ(tree.at("My Space/broken.png")["mime"].toString(), "image/png");
    EXPECT_TRUE(tree.at("My Space/broken.png")["width"].isNull());
}

TEST_F(FirstOpening, leavesOutWhatIsHiddenUnfinishedOrGenerated)
{
    const QStringList skipped = {".hidden", ".folder/x.txt", "~$letter.docx", "old.txt~", "Icon\r",
        "x.sb-1a2b", "movie.mp4.part", "setup.CRDOWNLOAD", "a.tmp", "#draft#", "4913",
        "node_modules/m/index.js", "__pycache__/a.pyc", "app/Pods/p.h", "DerivedData/d",
        "venv/pyvenv.cfg"};
    for (const QString& name : skipped)
        home.givenFile(name);
    home.givenFile("tools/venv/notes.txt"); // no environment of a tool: nothing marks it
    home.givenFile("part.txt");
    home.givenFile("~tilde first.txt");
    EXPECT_EQ(openOnce().paths(),
        (QStringList{"My Space/app", "My Space/part.txt", "My Space/tools", "My Space/tools/venv",
            "My Space/tools/venv/notes.txt", "My Space/~tilde first.txt"}));
}

TEST_F(FirstOpening, leavesOutPipesAndSockets)
{
    home.givenFile("a.txt");
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.space("pipe.png")).constData(), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(home.space("socket"));
    ASSERT_LT(static_cast<size_t>(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(openOnce().paths(), QStringList{"My Space/a.txt"});
    ::close(socket);
}

TEST_F(FirstOpening, makesEachSymbolicLinkOneFileAndFollowsNone)
{
    home.givenFile("real/inside.txt");
    givenPicture("real/picture.png", 8, 8);
    home.givenLink("to folder", "real");
    home.givenLink("to file.txt", "real/inside.txt");
    home.givenLink("to picture.png", "real/picture.png");
    home.givenLink("dangling", "nowhere");
    home.givenLink("itself", "itself");
    home.givenLink("real/up", "..");
    home.givenLink("disk", "/");
    const Tree tree = openOnce();
    EXPECT_EQ(tree.paths(),
        (QStringList{"My Space/dangling", "My Space/disk", "My Space/itself", "My Space/real",
            "My Space/real/inside.txt", "My Space/real/picture.png", "My Space/real/up",
            "My Space/to file.txt", "My Space/to folder", "My Space/to picture.png"}));
    for (const char* link :
        {"to folder", "to file.txt", "to picture.png", "dangling", "itself", "disk", "real/up"}) {
        SCOPED_TRACE(link);
        const QJsonObject node = tree.at(QString("My Space/") + link);
        EXPECT_EQ(node["kind"].toString(), "file");
        EXPECT_TRUE(node["width"].isNull());
    }
    EXPECT_EQ(tree.at("My Space/dangling")["byteSize"].toInt(), 7); // of the link itself
}

// Opening a pipe waits until somebody writes into it.
TEST_F(FirstOpening, isNotHeldUpByALinkToAPipeThatCallsItselfAPicture)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(home.path("pipe")).constData(), 0600), 0);
    home.givenFolder({});
    home.givenLink("pipe.png", QFile::encodeName(home.path("pipe")));
    EXPECT_EQ(openOnce().paths(), QStringList{"My Space/pipe.png"});
}

TEST_F(FirstOpening, takesAnyNameThatIsText)
{
    const QString longest = QString(125, QChar(0xe9)) + "x.txt"; // 255 bytes
    ASSERT_EQ(longest.toUtf8().size(), 255);
    const QStringList names = {"two\nlines.txt", QString::fromUtf8("\xf0\x9f\x8e\x89 party.txt"),
        longest, "tab\there", "back\\slash", " blanks ", "?*\"<>|%00", "-rf", "e\u0301.txt",
        "\u00e9.txt", "\u202ertl.txt"};
    for (const QString& name : names)
        home.givenFile(name);
    QStringList expected = names;
    expected.sort();
    const Tree tree = openOnce();
    EXPECT_EQ(tree.titlesIn({}), expected);
    for (const QString& name : names)
        EXPECT_FALSE(tree.idAt("My Space/" + name).isEmpty()) << name.toStdString();
}

TEST_F(FirstOpening, keepsApartWhatTheDiskKeepsApart)
{
    home.givenFile("a.txt", "small");
    home.givenFile("A.txt", "capital");
    if (printOf(home.space()).size() != 2)
        GTEST_SKIP() << "this disk ignores case";
    const Tree tree = openOnce();
    EXPECT_EQ(tree.at("My Space/a.txt")["byteSize"].toInt(), 5);
    EXPECT_EQ(tree.at("My Space/A.txt")["byteSize"].toInt(), 7);
}

TEST_F(FirstOpening, leavesNamesAloneThatAreNotTextAndTellsTheLogOnce)
{
    home.givenFile("fine.txt");
    for (const char* name : {"bad\xff.txt", "worse\xc3", "folder\xfe"}) {
        const QByteArray path = QFile::encodeName(home.space()) + '/' + name;
        if (name[0] == 'f')
            ASSERT_EQ(::mkdir(path.constData(), 0700), 0);
        else
            ASSERT_GE(::close(::open(path.constData(), O_CREAT | O_WRONLY, 0600)), 0);
    }
    EXPECT_EQ(openOnce().paths(), QStringList{"My Space/fine.txt"});
    EXPECT_EQ(log.count("not UTF-8"), 1);
    EXPECT_TRUE(log.contains("left out 3 names")) << log.toStdString();
}

TEST_F(FirstOpening, leavesPathsAloneThatAreTooLongToOpen)
{
    home.givenFile("fine.txt");
    const QByteArray name(250, 'd');
    int folder = ::open(QFile::encodeName(home.space()).constData(), O_RDONLY | O_DIRECTORY);
    for (int depth = 0; depth < 18; ++depth) { // 4,500 bytes; the system opens 4,095
        ASSERT_EQ(::mkdirat(folder, name.constData(), 0700), 0);
        const int inner = ::openat(folder, name.constData(), O_RDONLY | O_DIRECTORY);
        ASSERT_GE(inner, 0);
        ::close(folder);
        folder = inner;
    }
    ::close(::openat(folder, "deep.txt", O_CREAT | O_WRONLY, 0600));
    ::close(folder);
    const Tree tree = openOnce();
    EXPECT_FALSE(tree.idAt("My Space/fine.txt").isEmpty());
    for (const QString& path : tree.paths())
        EXPECT_LE(home.library(path).toUtf8().size(), 4095);
    EXPECT_GE(tree.paths().size(), 14);
    EXPECT_EQ(log.count("too long to open"), 1) << log.toStdString();
}

TEST_F(FirstOpening, goesOnAroundAFolderThatCannotBeListed)
{
    home.givenFile("open/a.txt");
    home.givenFile("shut/secret.txt");
    ASSERT_EQ(::chmod(QFile::encodeName(home.space("shut")).constData(), 0), 0);
    const Tree tree = openOnce();
    EXPECT_EQ(tree.paths(), (QStringList{"My Space/open", "My Space/open/a.txt", "My Space/shut"}));
    ::chmod(QFile::encodeName(home.space("shut")).constData(), 0700);
    EXPECT_EQ(openOnce().paths(), (QStringList{"My Space/open", "My Space/open/a.txt",
                                      "My Space/shut", "My Space/shut/secret.txt"}));
}

TEST_F(FirstOpening, makesANewLibraryWhereNothingIs)
{
    Program program(home);
    program.settle();
    EXPECT_EQ(program.tree().paths(), QStringList());
    EXPECT_TRUE(QFileInfo(home.space()).isDir());
    EXPECT_EQ(QFileInfo(home.library(".corvelle")).permissions() & 0x0077, QFile::Permissions());
    EXPECT_FALSE(
        QFileInfo::exists(home.path("config/Corvelle/Corvelle.conf"))); // nothing is remembered
    const QJsonObject camera = program.state()["camera"].toObject();
    EXPECT_EQ(camera, (QJsonObject{{"x", 0}, {"y", 0}, {"zoom", 1}}));
    EXPECT_EQ(program.quit(), 0);
}

TEST_F(FirstOpening, doesNotDependOnTheSystemsLanguage)
{
    const QString root = home.path(QString::fromUtf8("B\xc3\xbc"
                                                     "cher \xf0\x9f\x93\x9a"));
    home.folder.makeFile(
        QFileInfo(root).fileName() + "/My Space/" + QString::fromUtf8("\xc3\xa9.txt"));
    Program program(home, {{}, {{"CORVELLE_LIBRARY", root}, {"LC_ALL", "C"}, {"LANG", "C"}}});
    program.settle();
    EXPECT_EQ(program.tell("ping")["library"].toString(), root);
    EXPECT_EQ(program.tree().paths(), QStringList{QString::fromUtf8("My Space/\xc3\xa9.txt")});
    EXPECT_EQ(program.quit(), 0);
}

} // namespace
