#include "documents/DocFlattening.h"
#include "documents/DocLinks.h"
#include "documents/DocxFixture.h"
#include "documents/WordWords.h"
#include "support/Printing.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

struct BodyCase
{
    const char* what;
    QByteArray body, expected;
};

void expectDumps(std::initializer_list<BodyCase> cases, const DocxParts& parts = {})
{
    for (const BodyCase& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(dumpOfDocx(c.body, parts), c.expected);
    }
}

// Words with their marks: "b:bold i:italic s:strike u:underline ^:sup _:sub" and a link behind ">".
QString marked(const DocInlines& inlines)
{
    QString all;
    for (const DocInline& each : inlines) {
        const auto* text = std::get_if<DocInline::Text>(&each.value);
        if (!text) {
            all += std::holds_alternative<DocInline::LineBreak>(each.value) ? u"|"_s : u"#"_s;
            continue;
        }
        const DocMarks& m = text->marks;
        all += u'(' + QString(m.bold ? u"b"_s : u""_s) + (m.italic ? u"i"_s : u""_s) +
               (m.strike ? u"s"_s : u""_s) + (m.underline ? u"u"_s : u""_s) +
               (m.sup ? u"^"_s : u""_s) + (m.sub ? u"_"_s : u""_s) + u':' + text->text +
               (m.link.isNull() ? QString() : u'>' + m.link) + u')';
    }
    return all;
}

QString markedDocx(const QByteArray& body, const DocxParts& parts = {})
{
    const auto blocks = DocxReader::blocks(ZipArchive(docxOf(body, parts)));
    if (!blocks || blocks->empty())
        return u"(nothing)"_s;
    const auto* paragraph = std::get_if<DocBlock::Paragraph>(&blocks->front().value);
    return paragraph ? marked(paragraph->inlines) : u"(no paragraph)"_s;
}

QByteArray styled(const char* id)
{
    return QByteArray("<w:pStyle w:val=\"") + id + "\"/>";
}

QByteArray numbered(int id, int level)
{
    return "<w:numPr><w:ilvl w:val=\"" + QByteArray::number(level) + "\"/><w:numId w:val=\"" +
           QByteArray::number(id) + "\"/></w:numPr>";
}

QByteArray fieldChar(const char* kind)
{
    return QByteArray("<w:r><w:fldChar w:fldCharType=\"") + kind + "\"/></w:r>";
}

QByteArray instruction(const QByteArray& text)
{
    return "<w:r><w:instrText>" + text + "</w:instrText></w:r>";
}

QByteArray field(const QByteArray& instructions, const QByteArray& result)
{
    return fieldChar("begin") + instruction(instructions) + fieldChar("separate") + result +
           fieldChar("end");
}

// Levels 0 to 6 of numbers (1) and bullets (2), and a style that takes numbers.
DocxParts lists()
{
    DocxParts parts;
    for (const auto& [id, format] : {std::pair("1", "decimal"), std::pair("2", "bullet")}) {
        parts.numbering += QByteArray("<w:abstractNum w:abstractNumId=\"") + id + "\">";
        for (int level = 0; level < 7; ++level)
            parts.numbering += "<w:lvl w:ilvl=\"" + QByteArray::number(level) +
                               "\"><w:numFmt w:val=\"" + format + "\"/></w:lvl>";
        parts.numbering += QByteArray("</w:abstractNum><w:num w:numId=\"") + id +
                           "\"><w:abstractNumId w:val=\"" + id + "\"/></w:num>";
    }
    parts.numbering +=
        "<w:abstractNum w:abstractNumId=\"3\"><w:lvl w:ilvl=\"1\"><w:pStyle w:val=\"Listed\"/>"
        "</w:lvl></w:abstractNum>"
        "<w:abstractNum w:abstractNumId=\"4\"><w:numStyleLink w:val=\"Linked\"/></w:abstractNum>"
        "<w:num w:numId=\"4\"><w:abstractNumId w:val=\"4\"/></w:num>";
    parts.styles =
        "<w:style w:type=\"numbering\" w:styleId=\"Linked\"><w:pPr><w:numPr><w:numId "
        "w:val=\"2\"/></w:numPr></w:pPr></w:style>"
        "<w:style w:type=\"paragraph\" w:styleId=\"a7\"><w:name w:val=\"heading 2\"/></w:style>"
        "<w:style w:type=\"paragraph\" w:styleId=\"fn\"><w:name w:val=\"footnote text\"/></w:style>"
        "<w:style w:type=\"character\" w:styleId=\"x\"><w:name w:val=\"Strong\"/></w:style>";
    return parts;
}

} // namespace

TEST(WordReader, headingsAndItemsFollowFromStylesAndNumbering)
{
    const QByteArray item = numbered(1, 0), bullet = numbered(2, 0);
    expectDumps(
        {
            {"a style's id or its name", p(r("a"), styled("Heading1")) + p(r("b"), styled("a7")),
                "paragraph 1\ta\nparagraph 2\tb\n"},
            {"a heading with numbering stays one", p(r("a"), styled("heading3") + item),
                "paragraph 3\ta\n"},
            {"no seventh level", p(r("a"), styled("Heading7")), "paragraph 0\ta\n"},
            {"a note's style is no item", p(r("a"), styled("fn") + item), "paragraph 0\ta\n"},
            {"numbers go on, deeper ones start again",
                p(r("a"), item) + p(r("b"), numbered(1, 1)) + p(r("c"), item) +
                    p(r("d"), numbered(1, 1)),
                "item ordered 0 1\ta\nitem ordered 1 1\tb\nitem ordered 0 2\tc\n"
                "item ordered 1 1\td\n"},
            {"a paragraph between them starts again", p(r("a"), item) + p(r("b")) + p(r("c"), item),
                "item ordered 0 1\ta\nparagraph 0\tb\nitem ordered 0 1\tc\n"},
            {"an empty one doesn't", p(r("a"), item) + p("") + p(r("c"), item),
                "item ordered 0 1\ta\nitem ordered 0 2\tc\n"},
            {"another kind starts again", p(r("a"), item) + p(r("b"), bullet),
                "item ordered 0 1\ta\nitem bullet 0 1\tb\n"},
            {"the sixth level is plain", p(r("a"), numbered(1, 5)), "paragraph 0\ta\n"},
            {"by its style alone", p(r("a"), styled("Listed")), "item ordered 1 1\ta\n"},
            {"by a number without a level", p(r("a"), "<w:numPr><w:numId w:val=\"2\"/></w:numPr>"),
                "item bullet 0 1\ta\n"},
            {"through a numbering style", p(r("a"), numbered(4, 1)), "item bullet 1 1\ta\n"},
            {"of an unknown number", p(r("a"), numbered(9, 0)), "paragraph 0\ta\n"},
        },
        lists());
}

TEST(WordReader, propertiesOfRunsAreMarks)
{
    EXPECT_EQ(markedDocx(p(r("a", "<w:b/>") + r("b", "<w:b w:val=\"0\"/><w:i w:val=\"true\"/>") +
                           r("c", "<w:strike/><w:u w:val=\"single\"/>") +
                           r("d", "<w:u w:val=\"none\"/><w:vertAlign w:val=\"superscript\"/>") +
                           r("e", "<w:u/><w:vertAlign w:val=\"subscript\"/>"))),
        u"(b:a)(i:b)(su:c)(^:d)(_:e)"_s);
    EXPECT_EQ(markedDocx(p(r("a", "<w:rStyle w:val=\"x\"/>")), lists()), u"(b:a)"_s);
}

TEST(WordReader, blanksCollapseAcrossRuns)
{
    const QByteArray bold = "<w:b/>", br = "<w:r><w:br/></w:r>";
    const struct
    {
        QByteArray runs;
        QStringView expected;
    } cases[] = {
        {r("  a  b  "), u"(:a b)"},
        {r("a ") + r(" b"), u"(:a b)"},
        {r("a ") + r("b", bold), u"(:a )(b:b)"},
        {r("a") + r(" b", bold), u"(:a)(b: b)"},
        {r("a") + r(" ", bold) + r("b"), u"(:a b)"},
        {r("a ") + br + r(" b"), u"(:a )|(:b)"},
        {r("a\t \xC2\xA0 b"), u"(:a\t \u00A0 b)"},
        {r(" ") + r("a"), u"(:a)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(markedDocx(p(c.runs)), c.expected.toString()) << c.runs.toStdString();
}

TEST(WordReader, onlyTextWrappingBreaksLines)
{
    expectDumps({
        {"breaks",
            p(r("a") +
                "<w:r><w:br/><w:br w:type=\"textWrapping\"/><w:br w:type=\"page\"/>"
                "<w:br w:type=\"column\"/></w:r>" +
                r("b")),
            "paragraph 0\ta\\n\\nb\n"},
        {"hyphens and tabs",
            p("<w:r><w:t>a</w:t><w:noBreakHyphen/><w:tab/><w:softHyphen/><w:t>b\\</w:t></w:r>"),
            "paragraph 0\ta\u2011\\t\u00ADb\\\\\n"},
        {"unknown elements", p("<w:ruby>" + r("a") + "</w:ruby>" + r("b")), "paragraph 0\tb\n"},
    });
}

TEST(WordReader, changesAreAccepted)
{
    const QByteArray deletedMark = "<w:rPr><w:del w:id=\"1\"/></w:rPr>";
    expectDumps({
        {"insertions stay, deletions go",
            p("<w:ins>" + r("a") +
                "</w:ins><w:del><w:r><w:delText>x</w:delText></w:r></w:del>"
                "<w:moveFrom>" +
                r("y") + "</w:moveFrom><w:moveTo>" + r("b") + "</w:moveTo>"),
            "paragraph 0\tab\n"},
        {"a deleted mark joins the next paragraph",
            p(r("a"), deletedMark) + p(r("b"), deletedMark) + p(r("c"), styled("Heading1")),
            "paragraph 1\tabc\n"},
        {"without a next paragraph nothing is lost", p(r("a"), deletedMark), "paragraph 0\ta\n"},
        {"nor at the end of a cell",
            "<w:tbl><w:tr><w:tc>" + p(r("a"), deletedMark) + "</w:tc><w:tc>" + p(r("b")) +
                "</w:tc></w:tr></w:tbl>",
            "table\t\n  cell 1 1 spans 1 1\t\n    paragraph 0\ta\n"
            "  cell 1 2 spans 1 1\t\n    paragraph 0\tb\n"},
        {"a deleted row",
            "<w:tbl><w:tr><w:trPr><w:del/></w:trPr><w:tc>" + p(r("a")) + "</w:tc></w:tr></w:tbl>",
            "table\t\n"},
    });
}

TEST(WordReader, mergedCellsBelongToTheirFirst)
{
    const auto cell = [](const char* words, const QByteArray& properties = {}) {
        return "<w:tc><w:tcPr>" + properties + "</w:tcPr>" + p(r(words)) + "</w:tc>";
    };
    const auto row = [](const QByteArray& cells, const QByteArray& properties = {}) {
        return "<w:tr><w:trPr>" + properties + "</w:trPr>" + cells + "</w:tr>";
    };
    const QByteArray begins = "<w:vMerge w:val=\"restart\"/>", goesOn = "<w:vMerge/>",
                     wide = "<w:gridSpan w:val=\"2\"/>";
    expectDumps({
        {"down and across",
            "<w:tbl>" + row(cell("a", wide) + cell("b", begins), "<w:tblHeader/>") +
                row(cell("c") + cell("d") + cell("e", goesOn)) +
                row(cell("f", wide) + cell("g", "<w:vMerge w:val=\"continue\"/>")) +
                row(cell("h") + cell("i") + cell("j")) +
                row(cell("k") + cell("l") + cell("m", goesOn)) + "</w:tbl>",
            "table\t\n"
            "  cell 1 1 spans 1 2 header\t\n    paragraph 0\ta\n"
            "  cell 1 2 spans 3 1 header\t\n    paragraph 0\tb\n"
            "  cell 2 1 spans 1 1\t\n    paragraph 0\tc\n"
            "  cell 2 2 spans 1 1\t\n    paragraph 0\td\n"
            "  cell 3 1 spans 1 2\t\n    paragraph 0\tf\n"
            "  cell 4 1 spans 1 1\t\n    paragraph 0\th\n"
            "  cell 4 2 spans 1 1\t\n    paragraph 0\ti\n"
            "  cell 4 3 spans 1 1\t\n    paragraph 0\tj\n"
            "  cell 5 1 spans 1 1\t\n    paragraph 0\tk\n"
            "  cell 5 2 spans 1 1\t\n    paragraph 0\tl\n"
            "  cell 5 3 spans 1 1\t\n    paragraph 0\tm\n"},
        {"what goes on from nothing stays", "<w:tbl>" + row(cell("a", goesOn)) + "</w:tbl>",
            "table\t\n  cell 1 1 spans 1 1\t\n    paragraph 0\ta\n"},
        {"a span beyond reason",
            "<w:tbl>" + row(cell("a", "<w:gridSpan w:val=\"2000000000\"/>")) + "</w:tbl>",
            "table\t\n  cell 1 1 spans 1 1000\t\n    paragraph 0\ta\n"},
        {"without rows", "<w:tbl/>", "table\t\n"},
    });
}

TEST(WordReader, textBoxesFollowTheirParagraph)
{
    const QByteArray box =
        "<w:r><mc:AlternateContent><mc:Choice>" + p(r("choice")) +
        "</mc:Choice><mc:Fallback><w:pict><v:shape><v:textbox><w:txbxContent>" + p(r("in")) +
        "<w:tbl><w:tr><w:tc>" + p(r("cell")) +
        "</w:tc></w:tr></w:tbl></w:txbxContent></v:textbox></v:shape></w:pict></mc:Fallback>"
        "</mc:AlternateContent></w:r>";
    expectDumps({{"a box between words", p(r("a") + box + r("b")) + p(r("c")),
        "paragraph 0\tab\nparagraph 0\tin\n"
        "table\t\n  cell 1 1 spans 1 1\t\n    paragraph 0\tcell\nparagraph 0\tc\n"}});
}

TEST(WordReader, linksComeFromElementsAndFields)
{
    DocxParts parts;
    parts.rels = "<Relationship Id=\"r1\" Type=\"x/hyperlink\" Target=\"http://e.org/a#old\"/>";
    const auto link = [](const QByteArray& attributes) {
        return "<w:hyperlink " + attributes + ">" + r("t") + "</w:hyperlink>";
    };
    const struct
    {
        QByteArray inner;
        QStringView expected;
    } cases[] = {
        {link("r:id=\"r1\""), u"(:t>http://e.org/a#old)"},
        {link("r:id=\"r1\" w:anchor=\"new\""), u"(:t>http://e.org/a#new)"},
        {link("w:anchor=\"new\""), u"(:t>#new)"},
        {link("r:id=\"r9\""), u"(:t)"},
        {field(" HYPERLINK \"http://e.org\" \\o \"tip\"", r("a") + r("b", "<w:b/>")) + r("c"),
            u"(:a>http://e.org)(b:b>http://e.org)(:c)"},
        {field(" HYPERLINK \\l \"Top\" ", r("t")), u"(:t>#Top)"},
        {field("HYPERLINK \"http://e.org\" \\l \"Top\"", r("t")), u"(:t>http://e.org#Top)"},
        {field("HYPER", "") + fieldChar("begin") + instruction("HYPER") +
                instruction("LINK \"x\"") + fieldChar("separate") + r("t") + fieldChar("end"),
            u"(:t>x)"},
        {field("HYPERLINK \"outer\"", r("a") + field("PAGE", r("b")) + r("c")), u"(:abc>outer)"},
        {fieldChar("begin") + instruction("HYPERLINK \"outer\"") + field("REF x", "") +
                fieldChar("separate") + r("t") + fieldChar("end"),
            u"(:t>outer)"},
        {fieldChar("separate") + fieldChar("end") + r("t"), u"(:t)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(markedDocx(p(c.inner), parts), c.expected.toString()) << c.inner.toStdString();
}

TEST(WordReader, boxesToCheckComeFromFieldsAndControls)
{
    const auto form = [](const char* boxProperties) {
        return "<w:r><w:fldChar w:fldCharType=\"begin\"><w:ffData><w:checkBox>" +
               QByteArray(boxProperties) + "</w:checkBox></w:ffData></w:fldChar></w:r>" +
               instruction(" FORMCHECKBOX ") + fieldChar("end");
    };
    const auto control = [](const char* inner) {
        return "<w:sdt><w:sdtPr><w14:checkbox>" + QByteArray(inner) +
               "</w14:checkbox></w:sdtPr><w:sdtContent>" + r("box") + "</w:sdtContent></w:sdt>";
    };
    expectDumps({
        {"fields",
            p(form("<w:default w:val=\"1\"/>") + form("<w:default/><w:checked w:val=\"0\"/>") +
                form("<w:checked/>") + form("")),
            "paragraph 0\t☑☐☑☐\n"},
        {"controls",
            p(control("<w14:checked w14:val=\"1\"/>") + control("<w14:checked/>") +
                control("<w14:checked w14:val=\"0\"/>") + control("") + r(" done")),
            "paragraph 0\t☑☑☐☐ done\n"},
        {"a control by itself", control("<w14:checked/>"), "paragraph 0\t☑\n"},
        {"another control", "<w:sdt><w:sdtContent>" + p(r("a")) + "</w:sdtContent></w:sdt>",
            "paragraph 0\ta\n"},
    });
}

TEST(WordReader, notesStandBehindInTheOrderOfTheirReferences)
{
    DocxParts parts;
    parts.footnotes = "<w:footnote w:id=\"-1\" w:type=\"separator\">" + p(r("line")) +
                      "</w:footnote><w:footnote w:id=\"1\">" + p(r(" one")) + p(r("more")) +
                      "</w:footnote><w:footnote w:id=\"2\">" +
                      p(r("two") + "<w:r><w:endnoteReference w:id=\"1\"/></w:r>") + "</w:footnote>";
    parts.endnotes = "<w:endnote w:id=\"1\">" + p(r("end")) + "</w:endnote>";
    const auto ref = [](int id) {
        return "<w:r><w:footnoteReference w:id=\"" + QByteArray::number(id) + "\"/></w:r>";
    };
    const QByteArray body = p(r("a") + ref(2) + r("b") + ref(1) + r("c") + ref(2) + ref(9));
    expectDumps({{"each once", body,
                    "paragraph 0\ta[1]b[2]c[1][3]\nitem ordered 0 1\ttwo[4] ↑\n"
                    "item ordered 0 2\tone\\nmore ↑\nitem ordered 0 4\tend ↑\n"}},
        parts);
    EXPECT_EQ(markedDocx(body, parts), u"(:a)(^:[1])(:b)(^:[2])(:c)(^:[1][3])"_s);
}

TEST(WordReader, symbolsAreCharacters)
{
    const struct
    {
        const char *font, *code;
        QStringView expected;
    } cases[] = {{"Wingdings", "F0FC", u"✓"}, {"Wingdings 2", "f0fc", u"✓"},
        {"Symbol", "F0B7", u"•"}, {"Symbol", "B3", u"≥"}, {"Symbol", "F044", u""},
        {"Wingdings", "41", u""}, {"Arial", "41", u"A"}, {"", "1F600", u"😀"},
        {"Arial", "D800", u""}, {"Arial", "x", u""}, {"Arial", "", u""}};
    for (const auto& c : cases)
        EXPECT_EQ(symbolText(c.font, c.code), c.expected.toString()) << c.font << " " << c.code;
    expectDumps({{"in a run", p("<w:r><w:sym w:font=\"Wingdings\" w:char=\"F0E0\"/></w:r>"),
        "paragraph 0\t→\n"}});
}

TEST(WordReader, picturesKeepTheirBytesAndGetASize)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImage(2800, 10, QImage::Format_RGB32).save(&buffer, "PNG");
    DocxParts parts;
    parts.rels = "<Relationship Id=\"p\" Type=\"x/image\" Target=\"./media/../media/a.png\"/>"
                 "<Relationship Id=\"w\" Type=\"x/image\" Target=\"/word/media/b.wmf\"/>"
                 "<Relationship Id=\"o\" Type=\"x/image\" Target=\"../../../etc/passwd\"/>"
                 "<Relationship Id=\"l\" Type=\"x/hyperlink\" Target=\"http://e.org\"/>";
    parts.others = {{u"word/media/a.png"_s, png}, {u"word/media/b.wmf"_s, "meta"},
        {u"[Content_Types].xml"_s,
            "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
            "<Default Extension=\"WMF\" ContentType=\"image/x-wmf\"/></Types>"}};
    const auto drawing = [](const char* id, const char* about) {
        return "<w:r><w:drawing><wp:inline><wp:docPr " + QByteArray(about) +
               "><a:hlinkClick r:id=\"l\"/></wp:docPr><a:graphic><a:graphicData><pic:pic>"
               "<pic:blipFill><a:blip r:embed=\"" +
               id +
               "\"/></pic:blipFill></pic:pic></a:graphicData></a:graphic></wp:inline>"
               "</w:drawing></w:r>";
    };
    const QByteArray docx = docxOf(p(drawing("p", "descr=\" \" title=\"A line\"") +
                                       drawing("w", "descr=\"Words\"") + drawing("o", "") +
                                       "<w:r><w:pict><v:shape><v:imagedata r:id=\"p\"/></v:shape>"
                                       "</w:pict></w:r>"),
        parts);
    const auto pictures = [&](Pictures which) {
        std::vector<DocInline::Picture> all;
        const auto blocks = DocxReader::blocks(ZipArchive(docx), which);
        for (const DocInline& each : std::get<DocBlock::Paragraph>(blocks->front().value).inlines)
            all.push_back(std::get<DocInline::Picture>(each.value));
        return all;
    };
    const auto all = pictures(Pictures::Read);
    ASSERT_EQ(all.size(), 4u);
    EXPECT_EQ(all[0]->data, png);
    EXPECT_EQ(QSizeF(all[0]->width, all[0]->height), QSizeF(1400, 5));
    EXPECT_EQ(all[0]->alt, u"A line"_s);
    EXPECT_EQ(all[0]->link, u"http://e.org"_s);
    EXPECT_EQ(all[1]->raw, "meta");
    EXPECT_EQ(all[1]->contentType, u"image/x-wmf"_s);
    EXPECT_FALSE(all[1]->data);
    EXPECT_EQ(all[1]->alt, u"Words"_s);
    EXPECT_FALSE(all[2]->raw);
    EXPECT_EQ(all[3]->contentType, u"image/png"_s);
    EXPECT_FALSE(pictures(Pictures::Skipped)[0]->raw);
}

TEST(WordReader, openTellsWhatTheNodesLeaveOut)
{
    const auto opened = [](const QByteArray& body, const DocxParts& parts = {}) {
        return DocxReader::open(ZipArchive(docxOf(body, parts))).value();
    };
    const auto plain = opened(p(r("a"), "<w:pBdr><w:left w:val=\"single\"/></w:pBdr>"));
    EXPECT_FALSE(
        plain.headers || plain.comments || plain.tracked || plain.equations || plain.charts);
    EXPECT_TRUE(std::get<DNode::Paragraph>(plain.nodes[0].value).look.bar);

    DocxParts parts;
    parts.rels = "<Relationship Id=\"h\" Type=\"x/header\" Target=\"header1.xml\"/>";
    parts.others = {{u"word/header1.xml"_s, wordPart("hdr", p(r("Top")))},
        {u"word/comments.xml"_s, wordPart("comments", "<w:comment/>")}};
    parts.footnotes = "<w:footnote w:id=\"5\">" + p("<m:oMath/>") + "</w:footnote>";
    const auto full = opened(p("<w:ins/><a:graphicData uri=\"x/chart\"/>"), parts);
    EXPECT_TRUE(full.headers && full.comments && full.tracked && full.equations && full.charts);
    EXPECT_TRUE(full.notes.contains(u"footnote:5"_s));
    const auto picture =
        opened(p("<a:graphicData uri=\"x/picture\"/><mc:AlternateContent><mc:Choice><m:oMath/>"
                 "</mc:Choice><mc:Fallback/></mc:AlternateContent>"));
    EXPECT_FALSE(picture.charts || picture.equations);
    const auto code =
        opened(p(r("a", "<w:rFonts w:ascii=\"JetBrains Mono\"/>"), "<w:shd w:fill=\"EEEEEE\"/>"));
    EXPECT_TRUE(std::get<DNode::Paragraph>(code.nodes[0].value).look.code);
}

TEST(WordReader, onlyAMainPartIsNeeded)
{
    EXPECT_FALSE(DocxReader::blocks(ZipArchive("PK")));
    EXPECT_EQ(dumpOfDocx(p(r("a")) + "<w:p>"), "(unreadable)");
    DocxParts broken;
    broken.others = {{u"word/styles.xml"_s, "<w:styles"}, {u"word/numbering.xml"_s, ""},
        {u"word/_rels/document.xml.rels"_s, "<"}, {u"[Content_Types].xml"_s, "x"}};
    EXPECT_EQ(dumpOfDocx(p(r("a"), numbered(1, 0)), broken), "paragraph 0\ta\n");
}

TEST(WordReader, plainTextPutsAnEmptyLineBehindEachBlock)
{
    DocMarks codeMarks;
    codeMarks.code = true;
    const DocInlines code = {{DocInline::Text{u"x"_s, codeMarks}}, {DocInline::LineBreak{}},
        {DocInline::Checkbox{true}}, {std::make_shared<DocPicture>()}};
    const DocBlocks blocks = {{DocBlock::Paragraph{0, code}},
        {DocBlock::Quote{{paragraphOf(u"q"_s)}}}, {DocBlock::Pre{u"a\tb"_s}}};
    EXPECT_EQ(plainText(blocks), u"\u2009x\u2009\n☑\n\nq\n\n\n\na\tb\n\n"_s);
    EXPECT_EQ(DocxReader::text(ZipArchive(docxOf(p(r("a")) + p(r("b"))))), u"a\n\nb\n\n"_s);
}

TEST(DocLinks, aLinkInsideLeadsToAHeadingOrTheOnlySuchParagraph)
{
    DocBlock linked = paragraphOf(u"Contents"_s);
    std::get<DocInline::Text>(std::get<DocBlock::Paragraph>(linked.value).inlines[0].value)
        .marks.link = u"#x"_s;
    const DocBlocks rows = {linked, paragraphOf(u"Intro"_s, 2), paragraphOf(u"intro"_s, 1),
        paragraphOf(u"1.2 The   End"_s, 1), paragraphOf(u"iv) Notes"_s, 3), paragraphOf(u"Once"_s),
        paragraphOf(u"Twice"_s), paragraphOf(u"twice"_s), {DocBlock::Rule{}},
        paragraphOf(u"Mix"_s, 1), paragraphOf(u"Contents"_s)};
    const struct
    {
        QStringView text;
        std::optional<size_t> expected;
    } cases[] = {{u"Intro\t12", 1}, {u"INTRO", 1}, {u"The end \t iv", 3}, {u"1.2\tThe End\t7", 3},
        {u"Notes", 4}, {u"once", 5}, {u"Twice", std::nullopt}, {u"Nowhere", std::nullopt},
        {u"Contents", 10}, {u"mix", 9}, {u"", std::nullopt}, {u"\t3", std::nullopt}};
    for (const auto& c : cases)
        EXPECT_EQ(rowOfLink(rows, c.text.toString()), c.expected)
            << c.text.toString().toStdString();
}
