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

} // namespace
