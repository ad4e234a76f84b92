// Workbooks, opened over the canvas and read in the real window.
#include "documents/ZipWriter.h"
#include "e2e/Program.h"
#include "support/Printing.h"

namespace {

using corvelle::ZipWriter;

const QByteArray names = " xmlns='http://schemas.openxmlformats.org/spreadsheetml/2006/main'"
                         " xmlns:r='http://schemas.openxmlformats.org/officeDocument/2006/"
                         "relationships'";

// One cell for each word.
QByteArray sheetPart(int rows, const QByteArrayList& words)
{
    QByteArray part = "<worksheet" + names + "><sheetData>";
    for (int row = 0; row < rows; ++row) {
        part += "<row>";
        for (const QByteArray& word : words)
            part += "<c t='str'><v>" + word + "</v></c>";
        part += "</row>";
    }
    return part + "</sheetData></worksheet>";
}

QByteArray workbook(int rows, const QByteArrayList& words)
{
    ZipWriter zip(QDateTime{});
    zip.add("xl/workbook.xml",
        "<workbook" + names +
            "><sheets><sheet name='Costs'/><sheet name='Empty'/><sheet name='Gone'/></sheets>"
            "</workbook>");
    zip.add("xl/worksheets/sheet1.xml", sheetPart(rows, words));
    zip.add("xl/worksheets/sheet2.xml", sheetPart(0, {}));
    return zip.finish();
}

// Sheets of one word each.
QByteArray manySheets(int count)
{
    ZipWriter zip(QDateTime{});
    QByteArray list;
    for (int sheet = 1; sheet <= count; ++sheet) {
        list += "<sheet name='Sheet " + QByteArray::number(sheet) + "'/>";
        zip.add(QString("xl/worksheets/sheet%1.xml").arg(sheet),
            sheetPart(1, {sheet % 30 == 0 ? "goal" : "way"}));
    }
    zip.add("xl/workbook.xml", "<workbook" + names + "><sheets>" + list + "</sheets></workbook>");
    return zip.finish();
}

class Sheets : public testing::Test
{
protected:
    void SetUp() override
    {
        home.givenFile("Costs.xlsx", workbook(1200, {"Van", "two\nlines", "420"}));
        home.givenFile("Macro.XLSM", workbook(1, {"x"}));
        home.givenFile("Many.xlsx", manySheets(130));
        home.givenFile("Broken.xlsx", "PK, but no workbook");
        home.givenFile("Huge.xlsx", QByteArray(20'000'001, ' '));
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
        program->settle();
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    QJsonObject opened() { return program->state()["open"].toObject(); }
    QString note() { return opened()["note"].toString(); }
    QString picked(const char* what)
    {
        return opened().value("picked").toObject().value(what).toString();
    }
    QString idOf(const QString& name) { return program->tree().idAt("My Space/" + name); }
    void open(const QString& name)
    {
        program->tell("open", {{"id", idOf(name)}});
        program->settle();
        ASSERT_TRUE(waitUntil([&] { return opened()["shown"].toBool(); }));
        ASSERT_EQ(opened()["id"].toString(), idOf(name));
    }

    Home home;
    std::unique_ptr<Program> program;
};

TEST_F(Sheets, openFromTheirCardsAndCloseBackIntoThem)
{
    const QJsonObject node = program->tree().at("My Space/Costs.xlsx");
    program->mouse("double", program->onScreen(node));
    ASSERT_TRUE(waitUntil([&] { return opened()["shown"].toBool(); }));
    program->settle();
    EXPECT_EQ(opened()["kind"].toString(), "file");
    EXPECT_EQ(opened()["badge"].toString(), "XLS");
    EXPECT_EQ(opened()["sheets"].toArray(), (QJsonArray{"Costs", "Empty", "Gone"}));
    EXPECT_EQ(opened()["rows"].toInt(), 1000);
    EXPECT_EQ(opened()["notice"].toString(),
        "Preview limited to the first 1,000 rows, 40 columns, and 2,000 characters per cell.");
    program->key("Esc");
    EXPECT_TRUE(opened().isEmpty());
    program->key("Alt+Left");
    ASSERT_TRUE(waitUntil([&] { return opened()["shown"].toBool(); })) << "a place to go back to";
    program->key("Esc");
    program->tell("select", {{"ids", QJsonArray{node["id"]}}});
    program->key("Return");
    ASSERT_TRUE(waitUntil([&] { return opened()["shown"].toBool(); }));
    program->tell("trash", {{"ids", QJsonArray{node["id"]}}});
    program->settle();
    EXPECT_TRUE(opened().isEmpty());
}

TEST_F(Sheets, cellsArePickedAndCopied)
{
    open("Costs.xlsx");
    program->key("Down");
    program->key("Right");
    EXPECT_EQ(picked("place"), "B2");
    EXPECT_EQ(picked("text"), "two\nlines");
    const QJsonArray rect = opened().value("picked").toObject().value("rect").toArray();
    const QPointF next(rect[0].toDouble() + rect[2].toDouble() + 20, rect[1].toDouble() + 15);
    program->mouse("press", next);
    program->mouse("release", next);
    EXPECT_EQ(picked("text"), "420");
    program->key("Shift+Left", 2);
    program->key("Ctrl+C");
    EXPECT_EQ(program->tell("clipboard")["text/plain"].toString(), "Van\t\"two\nlines\"\t420");
    program->wheel(QPointF(600, 400), QPoint(0, -5));
    EXPECT_GT(opened().value("scroll").toArray().at(1).toInt(), 0);
    program->tell("open", {{"id", idOf("Costs.xlsx")}, {"find", "van"}});
    program->settle();
    EXPECT_EQ(opened().value("find").toObject().value("count").toInt(), 1000);
}

TEST_F(Sheets, sayWhatTheyCannotShow)
{
    open("Costs.xlsx");
    program->key("Ctrl+PgDown");
    program->settle();
    ASSERT_TRUE(waitUntil([&] { return note() == "This sheet is empty."; }))
        << note().toStdString();
    program->key("Ctrl+PgDown");
    program->settle();
    const QString gone = "This sheet couldn’t be read. Open the workbook in its app to see it.";
    ASSERT_TRUE(waitUntil([&] { return note() == gone; })) << note().toStdString();
    program->key("Ctrl+PgUp", 2);
    program->settle();
    ASSERT_TRUE(waitUntil([&] { return note().isEmpty(); }));
    open("Broken.xlsx"); // over the one that is open
    EXPECT_EQ(note(), "Couldn’t preview this workbook");
    program->key("Esc");
    open("Huge.xlsx");
    EXPECT_EQ(note(), "This workbook is over 20 MB, too large to read here.");
    program->key("Esc");
    open("Macro.XLSM");
    EXPECT_EQ(picked("text"), "x");
}

TEST_F(Sheets, tellHowManyThereAreBeyondThoseShown)
{
    open("Many.xlsx");
    EXPECT_EQ(opened()["sheets"].toArray().size(), 100);
    EXPECT_EQ(opened()["sheetCount"].toInt(), 130);
    EXPECT_EQ(opened()["counts"].toString(), "First 100 of 130 sheets · 1 row");
}

TEST_F(Sheets, areSearchedAllAtOnce)
{
    const auto find = [this](const char* what) {
        return opened().value("find").toObject().value(what);
    };
    const auto isOn = [&](int sheet, int number, int count) {
        program->settle();
        return waitUntil(
            [&] {
                return opened()["sheet"].toInt() == sheet && find("current").toInt() == number &&
                       find("count").toInt() == count && picked("text") == "goal";
            },
            3000);
    };
    open("Many.xlsx");
    program->key("Ctrl+F");
    program->tell("text", {{"text", "goal"}});
    EXPECT_TRUE(isOn(29, 0, 3)) << "the sheets beyond those shown aren't searched";
    EXPECT_EQ(find("says").toString(), "1 of 3");
    program->key("Return");
    EXPECT_TRUE(isOn(59, 1, 3));
    program->key("Return", 2);
    EXPECT_TRUE(isOn(29, 0, 3)) << "round";
    program->key("Shift+Return");
    EXPECT_TRUE(isOn(89, 2, 3));
    program->key("Backspace", 4);
    program->tell("text", {{"text", "way"}});
    program->settle();
    EXPECT_EQ(find("count").toInt(), 97);
    program->tell("text", {{"text", "no such"}});
    program->settle();
    EXPECT_EQ(find("says").toString(), "Not found");
    program->key("Esc");
    EXPECT_TRUE(find("words").isUndefined());
    EXPECT_TRUE(opened()["shown"].toBool());
}

TEST_F(Sheets, keepTheirButtonsClearOfTheWayToThem)
{
    const QString deep = "A folder with quite a long name/Another one with a long name/";
    home.givenFolder(deep);
    home.givenFile(deep + "A workbook with a long name.xlsx", workbook(1, {"x"}));
    EXPECT_EQ(program->quit(), 0);
    program = std::make_unique<Program>(home, Program::Options{{"--size", "760x480"}, {}});
    program->settle();
    open(deep + "A workbook with a long name.xlsx");
    QJsonArray button;
    ASSERT_TRUE(waitUntil([&] {
        button = opened()["appButton"].toArray();
        return button[2].toInt() > 0;
    }));
    const QJsonArray bar = opened()["bar"].toArray();
    EXPECT_LE(bar[0].toInt() + bar[2].toInt(), button[0].toInt() - button[2].toInt())
        << "the button for finding is there as well";
}

TEST_F(Sheets, standStillWhateverIsInTheirCells)
{
    const auto top = [this] {
        return opened().value("picked").toObject().value("rect").toArray().at(1).toInt();
    };
    const auto isOpen = [this] {
        return opened().value("picked").toObject().value("isOpen").toBool();
    };
    open("Costs.xlsx");
    const int before = top();
    program->key("Right");
    EXPECT_EQ(picked("text"), "two\nlines");
    EXPECT_EQ(top(), before);
    program->key("Space");
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(top(), before);
    program->key("Esc");
    EXPECT_FALSE(isOpen());
    program->key("Right");
    EXPECT_EQ(picked("text"), "420") << "the sheet has the keyboard again";
}

TEST_F(Sheets, openInTheirAppByAButton)
{
    for (const char* name : {"Costs.xlsx", "Broken.xlsx"}) { // what can't be shown, too
        open(name);
        QJsonArray at;
        ASSERT_TRUE(waitUntil([&] {
            at = opened()["appButton"].toArray();
            return at[2].toInt() >= 28;
        })) << "it has come up";
        program->mouse("click", QPointF(at[0].toDouble() + 10, at[1].toDouble() + 10));
        EXPECT_TRUE(program->state()["lastFailure"].toString().startsWith(
            QString("Couldn’t open “%1”").arg(name)))
            << "nothing here opens workbooks";
        EXPECT_EQ(opened()["id"].toString(), idOf(name)) << "and stays open";
    }
}

TEST_F(Sheets, findAgainInAFileThatChanged)
{
    open("Costs.xlsx");
    program->key("Ctrl+F");
    program->tell("text", {{"text", "420"}});
    program->key("Return", 3);
    program->settle();
    const QJsonValue scroll = opened()["scroll"];
    EXPECT_EQ(picked("place"), "C4");
    home.givenFile("Costs.xlsx", workbook(30, {"Van", "420", "420"}));
    ASSERT_TRUE(waitUntil([&] {
        program->settle();
        return opened().value("find").toObject().value("count").toInt() == 60;
    }));
    EXPECT_EQ(picked("place"), "C4") << "nobody is led away";
    EXPECT_EQ(opened().value("find").toObject().value("current").toInt(), 7);
}

TEST_F(Sheets, showTheFileAsItIsNow)
{
    open("Macro.XLSM");
    program->key("Right");
    home.givenFile("Macro.XLSM", workbook(2, {"x", "new"}));
    ASSERT_TRUE(waitUntil([&] {
        program->settle();
        return picked("text") == "new";
    }));
    EXPECT_EQ(picked("place"), "B1");
    home.givenFile("Macro.XLSM", "half");
    ::usleep(1'500'000);
    program->settle();
    EXPECT_EQ(picked("text"), "new") << "what was read stands while the file is being replaced";
}

} // namespace
