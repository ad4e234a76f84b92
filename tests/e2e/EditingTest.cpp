// Everything a person does to cards, by pointer and by keyboard in the real window.
#include "e2e/Program.h"
#include "support/Printing.h"

namespace {

class Editing : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const char* name : {"Alpha/one.txt", "b.txt", "c.txt"})
            home.givenFile(name);
        start();
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    void start()
    {
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
        program->settle();
    }
    void again()
    {
        EXPECT_EQ(program->quit(), 0);
        start();
    }
    QString id(const QString& path) { return program->tree().idAt("My Space/" + path); }
    QJsonObject node(const QString& nodeID)
    {
        return program->tell("node", {{"id", nodeID}}).toObject();
    }
    QPointF place(const QString& path) { return program->onScreen(node(id(path))); }
    QStringList names(const QString& list)
    {
        QStringList result;
        for (const QJsonValue& name : program->tell("steps").toObject()[list].toArray())
            result.append(name.toString());
        return result;
    }
    void drag(QPointF from, QPointF to)
    {
        program->mouse("move", from);
        program->mouse("press", from);
        for (int i = 1; i <= 4; ++i)
            program->mouse("move", from + (to - from) * i / 4);
        program->mouse("release", to);
        program->settle();
    }
    void choose(const QString& row)
    {
        for (const QJsonValue& each : program->state()["menu"].toArray())
            if (each["id"].toString() == row) {
                const QJsonArray box = each["place"].toArray();
                program->mouse("click", {box[0].toDouble() + box[2].toDouble() / 2,
                                            box[1].toDouble() + box[3].toDouble() / 2});
                program->settle();
                return;
            }
        ADD_FAILURE() << "the menu has no " << row.toStdString();
    }
    QString toast() { return program->state()["toasts"].toArray().last()["text"].toString(); }
    bool exists(const QString& path) const { return QFile::exists(home.space(path)); }

    Home home;
    std::unique_ptr<Program> program;
};

} // namespace

TEST_F(Editing, aNameIsTypedOnTheCardAndUndoneAfterARestart)
{
    const QString file = id("b.txt");
    program->mouse("click", place("b.txt"));
    program->key("F2");
    EXPECT_TRUE(program->state()["editing"].toBool());
    program->tell("text", {{"text", "summary"}});
    program->key("Return");
    EXPECT_EQ(node(file)["title"].toString(), "summary.txt") << "only the stem was selected";
    EXPECT_TRUE(exists("summary.txt"));
    program->key("F2");
    program->tell("text", {{"text", "never"}});
    program->key("Escape");
    EXPECT_EQ(node(file)["title"].toString(), "summary.txt");
    again();
    EXPECT_EQ(names("undo"), QStringList("Rename"));
    program->key("Ctrl+Z");
    program->settle();
    EXPECT_TRUE(exists("b.txt"));
    EXPECT_EQ(names("redo"), QStringList("Rename"));
    again();
    program->key("Ctrl+Shift+Z");
    program->settle();
    EXPECT_TRUE(exists("summary.txt"));
}

TEST_F(Editing, cardsAreDraggedIntoAFolderAndOutToTheBreadcrumb)
{
    const QString file = id("b.txt"), alpha = id("Alpha");
    drag(place("b.txt"), place("Alpha"));
    EXPECT_EQ(node(file)["parentID"].toString(), alpha);
    EXPECT_TRUE(exists("Alpha/b.txt"));
    program->tell("open", {{"id", alpha}});
    program->settle();
    drag(program->onScreen(node(file)), QPointF(118, 38));
    EXPECT_TRUE(node(file)["parentID"].isNull());
    EXPECT_TRUE(exists("b.txt"));
    EXPECT_EQ(names("undo"), QStringList({"Move", "Move"}));
    program->key("Ctrl+Z", 2);
    program->settle();
    program->tell("up");
    const QPointF before = place("b.txt");
    drag(before, before + QPointF(0, 150));
    EXPECT_NEAR(place("b.txt").y(), before.y() + 150, 1.5);
    EXPECT_EQ(names("undo"), QStringList("Move"));
}

TEST_F(Editing, escapeCallsADragOff)
{
    const QPointF before = place("b.txt");
    program->mouse("press", before);
    program->mouse("move", before + QPointF(30, 30));
    program->key("Escape");
    program->mouse("move", before + QPointF(90, 90));
    program->mouse("release", before + QPointF(90, 90));
    program->settle();
    EXPECT_EQ(place("b.txt"), before);
    EXPECT_TRUE(names("undo").isEmpty());
}

TEST_F(Editing, theTrashTakesPutsBackAndAsksBeforeItDeletes)
{
    const QString file = id("b.txt"), other = id("c.txt");
    program->mouse("click", place("b.txt"));
    program->key("Delete");
    program->settle();
    EXPECT_EQ(toast(), QString::fromUtf8("“b.txt” moved to Trash"));
    EXPECT_FALSE(exists("b.txt"));
    program->mouse("click", place("c.txt"));
    program->key("Delete");
    program->mouse("click", QPointF(1200 - 38, 38));
    program->settle();
    EXPECT_TRUE(program->state()["trashOpen"].toBool());
    program->key("Down", 2);
    program->key("Delete");
    EXPECT_EQ(program->alert()["title"].toString(), QString::fromUtf8("Delete “b.txt” for good?"));
    program->key("Escape");
    EXPECT_TRUE(program->tree().isInTrash(file));
    program->key("Delete");
    program->key("Return");
    program->settle();
    EXPECT_TRUE(node(file).isEmpty());
    EXPECT_TRUE(program->tree().isInTrash(other));
    program->key("Escape");
    program->key("Escape");
    EXPECT_FALSE(program->state()["trashOpen"].toBool());
    program->key("Ctrl+Z");
    program->settle();
    EXPECT_TRUE(exists("c.txt"));
}

TEST_F(Editing, theMenusDoWhatTheySay)
{
    const QString alpha = id("Alpha");
    program->mouse("click", place("Alpha"), "right");
    program->settle();
    program->tell("select", {{"ids", QJsonArray{alpha}}});
    program->key("Menu");
    const QString color = node(alpha)["color"].toString() == "blue" ? "green" : "blue";
    choose("color:" + color);
    EXPECT_EQ(node(alpha)["color"].toString(), color);
    program->key("Menu");
    choose("duplicate");
    EXPECT_TRUE(exists("Alpha copy/one.txt"));
    program->key("Menu");
    choose("copy");
    EXPECT_TRUE(program->tell("clipboard")
                    .toObject()["text/plain"]
                    .toString()
                    .startsWith("corvelle://item/"));
    program->tell("select", {{"ids", QJsonArray()}});
    program->key("Menu");
    QString undoWords;
    for (const QJsonValue& row : program->state()["menu"].toArray())
        if (row["id"].toString() == "undo")
            undoWords = row["words"].toString();
    EXPECT_EQ(undoWords, "Undo Duplicate");
    choose("undo");
    EXPECT_FALSE(exists("Alpha copy"));
    program->key("Menu");
    choose("folder");
    EXPECT_TRUE(program->state()["editing"].toBool()) << "a new folder is named at once";
    program->tell("text", {{"text", "Fresh"}});
    program->key("Return");
    program->settle();
    EXPECT_TRUE(exists("Fresh"));
}

TEST_F(Editing, filesAddressesAndTextAreDroppedFromOutside)
{
    home.folder.makeFile("outside/note.txt", "from outside");
    const QPointF ground(600, 700);
    program->tell("drop", {{"x", ground.x()}, {"y", ground.y()},
                              {"urls", QJsonArray{home.path("outside/note.txt")}}});
    program->settle();
    EXPECT_TRUE(exists("note.txt")) << "what lies in a folder for temporary files is copied";
    EXPECT_EQ(names("undo").value(0), "Add Files");
    const QPointF alpha = place("Alpha");
    program->tell(
        "drop", {{"x", alpha.x()}, {"y", alpha.y()}, {"urls", QJsonArray{home.path("outside")}}});
    program->settle();
    EXPECT_TRUE(exists("Alpha/outside/note.txt"));
    program->tell("drop", {{"x", 300}, {"y", 700}, {"text", "see https://example.com/a, please"}});
    program->tell("drop", {{"x", 900}, {"y", 700}, {"text", "A title\n\nand words"}});
    program->settle();
    QStringList titles;
    const Tree tree = program->tree();
    for (const QJsonValue& each : tree.nodes())
        titles.append(each["title"].toString() + "|" + each["url"].toString());
    EXPECT_TRUE(titles.contains("example.com|https://example.com/a"))
        << titles.join("\n").toStdString();
    EXPECT_TRUE(titles.contains("A title|"));
}

TEST_F(Editing, whatGoesFromTheDiskWhileWeAreAwayCanBePutBack)
{
    EXPECT_EQ(program->quit(), 0);
    home.moves("b.txt", home.path("taken away"));
    start();
    EXPECT_EQ(names("undo"), QStringList("Move to Trash"));
    home.moves(home.path("taken away"), "b.txt");
    program->key("Ctrl+Z");
    program->settle();
    EXPECT_FALSE(id("b.txt").isEmpty());
}
