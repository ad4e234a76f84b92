// Documents of other programs open in the window to be read.
#include "documents/ZipWriter.h"
#include "e2e/Program.h"
#include "support/Printing.h"

namespace {

const QByteArray relationships =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"r1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/"
    "relationships/%1\" Target=\"%2\"/></Relationships>";

QByteArray paragraph(const QByteArray& words, const QByteArray& style = {})
{
    return "<w:p><w:pPr>" + (style.isEmpty() ? "" : "<w:pStyle w:val=\"" + style + "\"/>") +
           "</w:pPr><w:r><w:t>" + words + "</w:t></w:r></w:p>";
}

// A Word file of our own: contents that lead to the chapters, a footnote, and enough to scroll.
QByteArray wordFile(const QByteArray& before = {})
{
    QByteArray body =
        before +
        "<w:p><w:hyperlink w:anchor=\"_Toc1\"><w:r><w:t>The last chapter</w:t><w:tab/>"
        "<w:t>9</w:t></w:r></w:hyperlink></w:p>"
        "<w:p><w:r><w:t>Noted</w:t></w:r><w:r><w:footnoteReference w:id=\"2\"/></w:r></w:p>";
    for (int i = 0; i < 120; ++i)
        body += paragraph("Paragraph " + QByteArray::number(i));
    body += paragraph("The last chapter", "Heading1") + paragraph("needle");
    const auto part = [](const QByteArray& name, const QByteArray& content) {
        return "<w:" + name +
               " xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">" +
               content + "</w:" + name + ">";
    };
    corvelle::ZipWriter zip(QDateTime(QDate(2026, 1, 2), QTime(3, 4)));
    zip.add("_rels/.rels",
        QString::fromLatin1(relationships).arg("officeDocument", "word/document.xml").toLatin1());
    zip.add("word/_rels/document.xml.rels",
        QString::fromLatin1(relationships).arg("footnotes", "footnotes.xml").toLatin1());
    zip.add("word/document.xml", part("document", "<w:body>" + body + "</w:body>"));
    zip.add("word/footnotes.xml",
        part("footnotes", "<w:footnote w:id=\"2\">" + paragraph("the note") + "</w:footnote>"));
    return zip.finish();
}

class Document : public testing::Test
{
protected:
    void open(const QString& name, const QByteArray& bytes)
    {
        home.givenFile(name, bytes);
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1200x800"}, {}});
        program->settle();
        program->tell("open", {{"id", program->tree().idAt("My Space/" + name)}});
        program->settle();
        ::usleep(400'000); // it has come up
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    QJsonObject opened() { return program->state()["open"].toObject(); }
    void press(const QString& address)
    {
        ASSERT_TRUE(waitUntil([&] { return !placeOf(address).isEmpty(); }, 10'000))
            << address.toStdString();
        const QJsonArray place = placeOf(address);
        const QPointF at(place[0].toDouble() + place[2].toDouble() / 2,
            place[1].toDouble() + place[3].toDouble() / 2);
        program->mouse("press", at);
        program->mouse("release", at);
        program->settle();
    }
    QJsonArray placeOf(const QString& address)
    {
        for (const QJsonValue& target : opened()["targets"].toArray())
            if (target["address"].toString() == address)
                return target["place"].toArray();
        return {};
    }
    QString copied()
    {
        program->key("Ctrl+A");
        program->key("Ctrl+C");
        return program->tell("clipboard").toObject()["text/plain"].toString();
    }

    Home home;
    std::unique_ptr<Program> program;
};

TEST_F(Document, aWordFileIsReadFoundInAndFollowed)
{
    open("report.docx", wordFile());
    EXPECT_TRUE(opened()["shown"].toBool());
    press("#The last chapter\t9");
    const double chapter = opened()["scroll"].toDouble();
    EXPECT_GT(chapter, 1'000) << "the heading that the contents name";
    program->key("Home");
    press("#[1]");
    EXPECT_GT(opened()["scroll"].toDouble(), 1'000) << "the note at the end";
    press(QString("#") + QChar(0x2191) + "1");
    EXPECT_LT(opened()["scroll"].toDouble(), 200) << "and back";
    program->tell("open", {{"id", opened()["id"]}, {"find", "needle"}});
    program->settle();
    EXPECT_EQ(opened()["find"].toObject()["count"].toInt(), 1);
    program->key("Escape");
    EXPECT_TRUE(copied().startsWith("The last chapter\t9\nNoted[1]\nParagraph 0"));

    const QJsonArray app = opened()["appButton"].toArray();
    program->mouse("click", QPointF(app[0].toDouble() + 10, app[1].toDouble() + 10));
    EXPECT_TRUE(program->state()["lastFailure"].toString().startsWith(
        QString::fromUtf8("Couldn’t open “report.docx”")))
        << "nothing here opens documents";

    // Larger and as it was.
    const double range = opened()["scrollRange"].toDouble();
    program->key("Ctrl++", 5);
    EXPECT_GT(opened()["scrollRange"].toDouble(), 1.3 * range);
    program->key("Ctrl+0");
    EXPECT_NEAR(opened()["scrollRange"].toDouble(), range, 0.02 * range);
    program->key("Escape", 2);
    EXPECT_TRUE(program->state()["open"].isNull());
}

// A table with a table in its last cell.
QByteArray fileWithTables()
{
    const auto cell = [](const QByteArray& content) { return "<w:tc>" + content + "</w:tc>"; };
    const auto table = [](const QByteArrayList& rows) {
        return "<w:tbl><w:tr>" + rows.join("</w:tr><w:tr>") + "</w:tr></w:tbl>";
    };
    const QByteArray inner = table({cell(paragraph("the needle"))});
    return wordFile(
        table({cell(paragraph("alpha beta") + paragraph("gamma")) + cell(paragraph("b")),
            cell(paragraph("c")) + cell(inner + paragraph("below"))}));
}

TEST_F(Document, theCellsOfTablesAreSelectedCopiedAndFoundIn)
{
    open("tables.docx", fileWithTables());
    const auto clipboard = [&](const char* type) {
        program->key("Ctrl+C");
        return program->tell("clipboard").toObject()[type].toString();
    };
    const QPointF first(285, 172), below(285, 230); // in the first column
    program->tell("mouse", {{"type", "double"}, {"x", first.x()}, {"y", first.y()}});
    EXPECT_EQ(clipboard("text/plain"), "alpha");
    program->key("Shift+End");
    EXPECT_EQ(clipboard("text/plain"), "alpha beta");
    program->mouse("press", first);
    program->mouse("move", below);
    program->mouse("release", below);
    EXPECT_EQ(clipboard("text/plain"), "\"alpha beta\ngamma\"\nc");
    EXPECT_TRUE(clipboard("text/html").contains("<table"));
    program->tell("open", {{"id", opened()["id"]}, {"find", "needle"}});
    program->settle();
    EXPECT_EQ(opened()["find"].toObject()["count"].toInt(), 2) << "one in the table in the table";
}

TEST_F(Document, oneThatIsDamagedSaysSoAndStaysOpenForWhatComes)
{
    open("report.docx", wordFile().first(700));
    EXPECT_TRUE(
        copied().startsWith(QString::fromUtf8("Couldn’t read this document\nIt may be damaged")));
    home.givenFile("report.docx", wordFile());
    EXPECT_TRUE(waitUntil([&] { return copied().contains("needle"); }, 10'000))
        << "it follows the file";
}

} // namespace
