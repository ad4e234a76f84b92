// Pages and Markdown files, opened over the canvas and read in the real window; and pages written
// out by the command line.
#include "e2e/Program.h"
#include "support/Printing.h"

#include <QImage>
#include <QJsonDocument>

#include <sqlite3.h>

namespace {

QJsonObject textNode(const QString& text, const QJsonArray& marks = {})
{
    QJsonObject node{{"type", "text"}, {"text", text}};
    if (!marks.isEmpty())
        node["marks"] = marks;
    return node;
}

QJsonObject paragraph(const QJsonArray& content)
{
    return {{"type", "paragraph"}, {"content", content}};
}

QJsonObject doc(const QJsonArray& blocks)
{
    return {{"type", "doc"}, {"content", blocks}};
}

class Pages : public testing::Test
{
protected:
    void SetUp() override
    {
        home.givenFile("Notes/read.md", "# A file\n\nwith *words* and [a page](other.md)\n");
        home.givenFile("a.txt", "text");
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
        program->settle();
        folder = make("folder", "Folder", {});
        page = make("page", "Page", {});
        program->tell("write",
            {{"id", page},
                {"doc",
                    doc({paragraph({textNode("See "),
                        QJsonObject{{"type", "mention"},
                            {"attrs", QJsonObject{{"id", folder}, {"label", "the folder"}}}},
                        textNode(" or "),
                        textNode("a site",
                            {QJsonObject{{"type", "link"},
                                {"attrs", QJsonObject{{"href", "file:///etc/passwd"}}}}})})})}});
        program->settle();
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    QString make(const QString& kind, const QString& title, const QString& parent)
    {
        return program
            ->tell("make",
                {{"kind", kind}, {"title", title},
                    {"parent", parent.isEmpty() ? QJsonValue() : parent}, {"x", 0}, {"y", 0}})
            .toObject()["id"]
            .toString();
    }
    QJsonObject opened() { return program->state()["open"].toObject(); }
    void open(const QString& id)
    {
        program->tell("open", {{"id", id}});
        program->settle();
        ASSERT_EQ(opened()["id"].toString(), id);
        ASSERT_TRUE(waitUntil([&] { return opened()["shown"].toBool(); }));
    }
    void press(const QJsonObject& target)
    {
        const QJsonArray place = target["place"].toArray();
        const QPointF at(place[0].toDouble() + place[2].toDouble() / 2,
            place[1].toDouble() + place[3].toDouble() / 2);
        program->mouse("move", at);
        program->mouse("press", at);
        program->mouse("release", at);
        program->settle();
    }

    Home home;
    std::unique_ptr<Program> program;
    QString folder, page;
};

TEST_F(Pages, nothingIsLeftOfAPageThatFadedAway)
{
    const auto shot = [&] {
        program->tell("shot", {{"file", home.path("shot.png")}});
        return QImage(home.path("shot.png"));
    };
    open(page);
    program->key("Esc"); // the canvas has the keyboard from now on
    ::usleep(400'000);
    const QImage before = shot();
    open(page);
    ASSERT_TRUE(waitUntil([&] { return shot() != before; }));
    ::usleep(400'000); // it stands
    program->tell("key", {{"key", "Escape"}});
    EXPECT_TRUE(waitUntil([&] { return shot() == before; }));
}

TEST_F(Pages, openOverTheCanvasAndCloseBackIntoIt)
{
    open(page);
    program->key("Esc");
    EXPECT_TRUE(opened().isEmpty());
    program->key("Alt+Left");
    EXPECT_EQ(opened()["id"].toString(), page) << "a page is a place to go back to";
    program->key("Alt+Left");
    EXPECT_TRUE(opened().isEmpty());
    program->key("Alt+Right");
    EXPECT_EQ(opened()["id"].toString(), page);
    program->tell("trash", {{"ids", QJsonArray{page}}});
    program->settle();
    EXPECT_TRUE(opened().isEmpty()) << "what is thrown away doesn't stay open";
    program->key("Alt+Left");
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(Pages, nothingIsUndoneBehindAPage)
{
    const auto steps = [&] {
        program->settle();
        return program->tell("steps", {})["undo"].toArray().size();
    };
    const auto before = steps();
    ASSERT_GT(before, 0);
    open(page);
    program->key("Ctrl+Z");
    EXPECT_EQ(steps(), before);
    program->key("Esc");
    program->key("Ctrl+Z");
    EXPECT_EQ(steps(), before - 1);
}

TEST_F(Pages, mentionsAndLinksAreFollowed)
{
    program->settle();
    open(page);
    ASSERT_TRUE(waitUntil([&] { return opened()["targets"].toArray().size() == 2; }));
    ::usleep(400'000); // it has come up
    press(opened()["targets"].toArray()[1].toObject());
    EXPECT_EQ(opened()["id"].toString(), page);
    EXPECT_EQ(program->state()["toasts"][0]["text"].toString(), "This link can’t be opened here.")
        << "a page can't open files";
    press(opened()["targets"].toArray()[0].toObject());
    EXPECT_TRUE(opened().isEmpty());
    EXPECT_EQ(program->folder(), folder);
    program->key("Alt+Left");
    program->settle();
    EXPECT_EQ(opened()["id"].toString(), page);
    // The same by the keyboard.
    program->key("Tab");
    program->key("Return");
    program->settle();
    EXPECT_EQ(program->folder(), folder);
}

TEST_F(Pages, aMentionOfWhatCameBackIsFollowed)
{
    program->tell("trash", {{"ids", QJsonArray{folder}}});
    program->settle();
    open(page);
    ::usleep(400'000); // it has come up
    program->tell("restore", {{"ids", QJsonArray{folder}}});
    program->settle();
    press(opened()["targets"].toArray()[0].toObject());
    EXPECT_EQ(program->folder(), folder);
}

TEST_F(Pages, aMenuGoesWithItsPage)
{
    open(page);
    ::usleep(400'000);
    const QJsonArray place = opened()["targets"].toArray()[0].toObject()["place"].toArray();
    const QPointF at(place[0].toDouble() + 200, place[1].toDouble() + 100);
    program->tell("mouse", {{"type", "press"}, {"x", at.x()}, {"y", at.y()}, {"button", "right"}});
    program->tell(
        "mouse", {{"type", "release"}, {"x", at.x()}, {"y", at.y()}, {"button", "right"}});
    ASSERT_TRUE(waitUntil([&] { return !program->state()["menu"].toArray().isEmpty(); }));
    program->tell("trash", {{"ids", QJsonArray{page}}});
    program->settle();
    EXPECT_TRUE(program->state()["menu"].toArray().isEmpty());
    program->key("Ctrl+A");
    EXPECT_EQ(program->state()["selection"].toArray().size(), 3) << "the canvas has the keyboard";
}

TEST_F(Pages, wordsAreFoundFromOneToTheNext)
{
    QJsonArray blocks;
    for (int i = 0; i < 400; ++i)
        blocks.append(paragraph({textNode(i % 100 == 50 ? "a needle here" : "only hay")}));
    program->tell("write", {{"id", page}, {"doc", doc(blocks)}});
    program->tell("open", {{"id", page}, {"find", "Needle"}});
    program->settle();
    const auto found = [&] { return opened()["find"].toObject(); };
    ASSERT_TRUE(waitUntil([&] { return found()["count"].toInt() == 4; }));
    const double first = opened()["scroll"].toDouble();
    EXPECT_GT(first, 0);
    program->key("Return");
    EXPECT_EQ(found()["current"].toInt(), 1);
    EXPECT_GT(opened()["scroll"].toDouble(), first);
    program->key("Return", 3);
    EXPECT_EQ(found()["current"].toInt(), 0) << "from the last to the first";
    program->key("Esc");
    EXPECT_FALSE(opened().contains("find"));
    EXPECT_FALSE(opened().isEmpty()) << "the first Escape closes the field alone";
}

TEST_F(Pages, whatLiesBesideTheColumnIsReachedSideways)
{
    QJsonArray cells;
    for (int i = 0; i < 20; ++i)
        cells.append(QJsonObject{{"type", "tableCell"},
            {"content",
                QJsonArray{paragraph({textNode("a longer text in column " + QString::number(i),
                    {QJsonObject{{"type", "link"},
                        {"attrs", QJsonObject{{"href", "#" + QString::number(i)}}}}})})}}});
    const QJsonObject row{{"type", "tableRow"}, {"content", cells}};
    program->tell("write",
        {{"id", page},
            {"doc", doc({QJsonObject{{"type", "table"}, {"content", QJsonArray{row, row}}}})}});
    open(page);
    ::usleep(400'000); // it has come up
    const auto inSight = [&](const QString& address) {
        for (const QJsonValue& target : opened()["targets"].toArray())
            if (target["address"].toString() == address)
                return true;
        return false;
    };
    ASSERT_TRUE(waitUntil([&] { return inSight("#0"); }));
    EXPECT_FALSE(inSight("#19"));
    for (int i = 0; i < 40; ++i)
        program->tell(
            "wheel", {{"x", 600}, {"y", 260}, {"dx", 0}, {"dy", -120}, {"mods", "Shift"}});
    EXPECT_TRUE(inSight("#19"));
    EXPECT_FALSE(inSight("#0"));
    program->key("Left", 100);
    EXPECT_TRUE(inSight("#0"));
    program->tell("open", {{"id", page}, {"find", "column 19"}});
    program->settle();
    EXPECT_TRUE(inSight("#19")) << "what is found is brought into sight";
}

TEST_F(Pages, whatIsOpenFollowsWhatIsWritten)
{
    open(page);
    const double before = opened()["scrollRange"].toDouble();
    QJsonArray blocks;
    for (int i = 0; i < 200; ++i)
        blocks.append(paragraph({textNode("more")}));
    program->tell("write", {{"id", page}, {"doc", doc(blocks)}});
    EXPECT_TRUE(waitUntil([&] { return opened()["scrollRange"].toDouble() > before + 1'000; }));
}

TEST_F(Pages, whatCantBeReadIsNotTakenForEmpty)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(
        sqlite3_open(home.library(".corvelle/library.sqlite").toUtf8().constData(), &database),
        SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, R"(UPDATE pages SET doc = '{"type":"doc", broken')", nullptr,
                  nullptr, nullptr),
        SQLITE_OK);
    sqlite3_close(database);
    open(page);
    EXPECT_EQ(opened()["appButton"][2].toInt(), 0) << "no other application has pages";
    EXPECT_EQ(program->state()["toasts"][0]["text"].toString(), "“Page” couldn’t be read");
    EXPECT_EQ(opened()["id"].toString(), page);
}

TEST_F(Pages, aMarkdownFileOpensAsAPage)
{
    const QString file = program->tree().idAt("My Space/Notes/read.md");
    ASSERT_FALSE(file.isEmpty());
    open(file);
    EXPECT_EQ(opened()["kind"].toString(), "file");
    EXPECT_EQ(opened()["badge"].toString(), "") << "its own head row has a sign";
    EXPECT_EQ(program->folder(), program->tree().idAt("My Space/Notes")) << "in its own folder";
    EXPECT_EQ(opened()["targets"][0]["address"].toString(), "other.md");
    EXPECT_EQ(program->state()["lastFailure"].toString(), QString());
}

TEST_F(Pages, filesThatNameEachOtherAreFollowed)
{
    home.givenFile("Notes/other.md", "back to [it](../Notes/read.md) or [the text](../a.txt)\n");
    program->settle();
    const auto idAt = [&](const QString& path) { return program->tree().idAt("My Space/" + path); };
    open(idAt("Notes/read.md"));
    ::usleep(400'000); // it has come up
    press(opened()["targets"][0].toObject());
    ASSERT_TRUE(waitUntil([&] {
        return opened()["id"].toString() == idAt("Notes/other.md") &&
               opened()["targets"].toArray().size() == 2;
    }));
    ::usleep(400'000);
    press(opened()["targets"][1].toObject());
    EXPECT_TRUE(opened().isEmpty()) << "another application's file is only shown";
    EXPECT_EQ(program->folder(), idAt(""));
    EXPECT_EQ(program->state()["selection"].toArray(), QJsonArray{idAt("a.txt")});
}

TEST_F(Pages, exportsByTheChannelAndTheCommandLine)
{
    const QString html = program->tell("export", {{"id", page}, {"format", "html"}}).toString();
    EXPECT_TRUE(html.contains("<title>Page</title>")) << html.toStdString();
    EXPECT_TRUE(html.contains("the folder")) << html.toStdString();
    const QString markdown = program->tell("export", {{"id", page}, {"format", "md"}}).toString();
    EXPECT_TRUE(markdown.contains("the folder")) << markdown.toStdString();

    const QString json = home.path("A page.json");
    QFile file(json);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(program->tell("page", {{"id", page}}).toObject()["doc"].toObject()).toJson());
    file.close();
    const auto exported = [&](const QStringList& arguments) {
        QProcess process;
        process.start(CORVELLE_PROGRAM, QStringList{"--export"} + arguments);
        EXPECT_TRUE(process.waitForFinished(20'000));
        return std::pair(process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()));
    };
    EXPECT_EQ(exported({json, "words"}), std::pair(0, QString("6\n")));
    EXPECT_TRUE(exported({json, "html"}).second.contains("<title>A page</title>"));
    EXPECT_EQ(exported({json, "md"}).first, 0);
}

} // namespace
