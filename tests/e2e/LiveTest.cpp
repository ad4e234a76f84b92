// What changes on disk shows up in the open window.
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QElapsedTimer>

namespace {

class Live : public testing::Test
{
protected:
    void SetUp() override
    {
        for (int i = 0; i < 60; ++i)
            home.givenFile(QString("Many/%1.txt").arg(i));
        home.givenFile("a.txt");
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
        program->settle();
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    QString onDisk(const QString& name) const { return home.library() + "/My Space/" + name; }
    bool showsUp(const QString& path)
    {
        return waitUntil(
            [&] { return program->tree().paths().contains("My Space/" + path); }, 10'000);
    }
    void remove(int from, int to) const
    {
        for (int i = from; i < to; ++i)
            ASSERT_TRUE(QFile::remove(onDisk(QString("Many/%1.txt").arg(i))));
    }
    QStringList toasts()
    {
        QStringList texts;
        for (const QJsonValue& toast : program->state()["toasts"].toArray())
            texts.append(toast["text"].toString());
        return texts;
    }

    Home home;
    std::unique_ptr<Program> program;
};

TEST_F(Live, newAndRenamedFilesShowUpWithoutBeingAskedFor)
{
    const QString id = program->tree().idAt("My Space/a.txt");
    QElapsedTimer time;
    time.start();
    home.givenFile("b.txt");
    EXPECT_TRUE(showsUp("b.txt"));
    EXPECT_LT(time.elapsed(), 4'000) << "about two seconds, on a busy machine";
    ASSERT_TRUE(QFile::rename(onDisk("a.txt"), onDisk("renamed.txt")));
    EXPECT_TRUE(showsUp("renamed.txt"));
    EXPECT_EQ(program->tree().idAt("My Space/renamed.txt"), id);
    home.givenFile("New/deep/c.txt");
    EXPECT_TRUE(showsUp("New/deep/c.txt"));
    home.givenFile("New/deep/d.txt");
    EXPECT_TRUE(showsUp("New/deep/d.txt")) << "a new folder is watched as well";
}

TEST_F(Live, manyFilesDeletedElsewhereAreToldOnce)
{
    remove(0, 9);
    program->settle();
    EXPECT_TRUE(toasts().isEmpty());
    ::usleep(2'500'000);
    EXPECT_TRUE(toasts().isEmpty()) << "a few are nobody's news";
    remove(9, 60);
    EXPECT_TRUE(waitUntil([&] {
        return toasts() == QStringList{"51 items deleted in Files are in the Trash"};
    })) << toasts().join(", ").toStdString();
    EXPECT_EQ(program->tell("steps").toObject()["undo"][0].toString(), "Move to Trash");
}

// Files in the temporary folder would be copied in.
class LinkedFile : public testing::Test
{
protected:
    void SetUp() override
    {
        outside.makeFile("here/notes.txt");
        program->tell(
            "add", {{"paths", QJsonArray{outside.path("here/notes.txt")}}, {"x", 0}, {"y", 0}});
        program->settle();
        id = program->tree().idAt(outside.path("here/notes.txt"));
        ASSERT_FALSE(id.isEmpty());
        outside.makeFolder("there");
        home.moves(outside.path("here/notes.txt"), outside.path("there/words.txt"));
        program->settle();
        ASSERT_TRUE(isToldMissing());
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    bool isToldMissing()
    {
        program->tell("open", {{"id", id}});
        const QJsonArray toasts = program->state()["toasts"].toArray();
        return toasts.size() == 1 && toasts.at(0)["key"] == "locate" &&
               toasts.at(0)["button"] == QString::fromUtf8("Locate…");
    }
    // By the card's menu and the dialog, with the keyboard alone.
    void locate(const QString& path)
    {
        program->tell("select", {{"ids", QJsonArray{id}}});
        for (const char* key : {"Menu", "Down", "Down", "Return"})
            program->tell("key", {{"key", key}});
        program->tell("text", {{"text", path}});
        program->tell("key", {{"key", "Return"}});
        program->settle();
    }

    Home home;
    TempFolder outside{QDir::homePath()};
    std::unique_ptr<Program> program =
        std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
    QString id;
};

TEST_F(LinkedFile, isFoundAgainByThePersonsWord)
{
    // A place in the library is refused.
    home.givenFile("inside.txt");
    locate(home.space("inside.txt"));
    const QJsonArray toasts = program->state()["toasts"].toArray();
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts.at(0)["text"].toString(),
        QString::fromUtf8("Couldn’t use that file for “notes.txt”. Try again."));
    locate(outside.path("there/words.txt"));
    EXPECT_EQ(program->tree().idAt(outside.path("there/words.txt")), id);
    EXPECT_TRUE(program->state()["toasts"].toArray().isEmpty());
    EXPECT_EQ(program->tell("node", {{"id", id}}).toObject()["title"], "notes.txt");
}

} // namespace
