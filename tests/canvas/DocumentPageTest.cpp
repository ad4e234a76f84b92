#include "canvas/DocumentPage.h"

#include "pages/PageDocument.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

DocInline words(const QString& text, const DocMarks& marks = {})
{
    return {DocInline::Text{text, marks}};
}

DocInline linked(const QString& text, const QString& to)
{
    DocMarks marks;
    marks.link = to;
    return words(text, marks);
}

DocInline reference(int number)
{
    DocMarks marks;
    marks.sup = true;
    return words(QString("[%1]").arg(number), marks);
}

DocBlock paragraph(DocInlines inlines, int level = 0)
{
    return {DocBlock::Paragraph{level, std::move(inlines)}};
}

DocBlock note(int number, const QString& text)
{
    return {DocBlock::Item{true, 0, number, {words(text + ' '), linked(QString(u'↑'), "#")}}};
}

// Each block of the text: its kind, how deep it is, its words.
QStringList lines(const FlatText& text)
{
    QStringList found;
    text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        found.append(QString("%1/%2 %3")
                         .arg(static_cast<int>(block.what().kind))
                         .arg(block.what().depth)
                         .arg(text.text(block.start, block.end)));
        return true;
    });
    return found;
}

QStringList links(const FlatText& text)
{
    QStringList found;
    text.eachRun(0, text.length(), [&](Units, QStringView, const CharStyleRef& style) {
        if (style && style->link)
            found.append(style->link->href);
    });
    return found;
}

} // namespace

TEST(DocumentPage, blocksBecomeThoseOfAPage)
{
    DocMarks bold;
    bold.bold = bold.sub = true;
    const DocumentPage page(
        {paragraph({words("Title")}, 1), paragraph({words("a "), words("b", bold)}),
            {DocBlock::Item{false, 0, 1, {words("dot")}}},
            {DocBlock::Item{true, 1, 3, {words("three")}}},
            {DocBlock::Continuation{1, {words("more")}}},
            {DocBlock::Task{true, 0, {words("done"), {DocInline::LineBreak{}}, words("!")}}},
            {DocBlock::Quote{{paragraph({words("said")})}}}, {DocBlock::Code{"x\ny"}},
            {DocBlock::Rule{}}, {DocBlock::Aside{"small"}},
            paragraph({{DocInline::Checkbox{true}}, words(" yes")})},
        "1");
    const auto kind = [](Block block) { return QString::number(static_cast<int>(block)); };
    const QString brk(QChar(0x2028));
    EXPECT_EQ(lines(page.text()),
        (QStringList{kind(Block::H1) + "/0 Title", kind(Block::Paragraph) + "/0 a b",
            kind(Block::Bullet) + "/0 dot", kind(Block::Ordered) + "/1 three",
            kind(Block::Paragraph) + "/2 more", kind(Block::Done) + "/0 done" + brk + "!",
            kind(Block::Quote) + "/0 said", kind(Block::Code) + "/0 x" + brk + "y",
            kind(Block::Divider) + "/0 ", kind(Block::Paragraph) + "/0 small",
            kind(Block::Paragraph) + "/0 " + QString(u'☑') + " yes"}));
    EXPECT_EQ(page.text().styleAt(8)->marks, Marks(Mark::Bold) | Mark::Subscript);
}

TEST(DocumentPage, tablesKeepTheirGridAndMarks)
{
    DocMarks sup;
    sup.sup = true;
    DocRow head{true, {DocCell{2, 1, {paragraph({words("wide", sup)})}}}};
    DocRow row{
        false, {DocCell{1, 1, {paragraph({words("a")}), paragraph({words("b")})}}, DocCell{}}};
    const DocumentPage page({{DocBlock::Table{{head, row}}}, {DocBlock::Table{}}}, "1");
    ASSERT_EQ(page.text().blockCount(), 1) << "the empty table isn't there";
    const auto style = page.text().styleAt(0);
    ASSERT_TRUE(style && style->attachment);
    const PageNodes rows = tableRows(nodeOf(*style->attachment));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].content[0].type, PageNode::Type::TableHeader);
    EXPECT_EQ(rows[0].content[0].cell->colspan, 2);
    EXPECT_EQ(rows[0].content[0].content[0].content[0].marks, Marks(Mark::Superscript));
    EXPECT_EQ(allWords(rows[1].content[0].content), "a\nb");
    // Copied, it is a table still.
    const PageNodes copied = nodesFromText(page.text());
    EXPECT_EQ(tableRows(copied[0]).size(), 2u);
}

TEST(DocumentPage, linksInsideLeadToTheirPlaces)
{
    const DocumentPage page({paragraph({linked("1. First", "#_Toc1"), linked("\t7", "#_Toc1")}),
                                paragraph({linked("there", "https://example.com/"), reference(1),
                                    words(" and "), reference(2), reference(9)}),
                                paragraph({words("1. First")}, 1), note(1, "one"), note(2, "two")},
        "1");
    EXPECT_EQ(
        links(page.text()), (QStringList{"#1. First\t7", "https://example.com/", "#[1]", "#[2]",
                                QString("#") + u'↑' + '1', QString("#") + u'↑' + '2'}));
    const auto lineAt = [&](const QString& href) {
        const auto place = page.placeOf(href);
        return place ? static_cast<int>(page.text().blockAt(*place).index) : -1;
    };
    EXPECT_EQ(lineAt("#1. First\t7"), 2) << "without the page's number";
    EXPECT_EQ(lineAt("#[2]"), 5) << "behind the line that stands before the notes";
    EXPECT_EQ(lineAt(QString("#") + u'↑' + '2'), 1);
    EXPECT_EQ(lineAt("#nowhere"), -1);
    EXPECT_EQ(lineAt("#[9]"), -1);
    EXPECT_EQ(lineAt("#"), -1);
}

TEST(DocumentPage, referencesThatTouchOtherRaisedWordsLeadToTheirNotes)
{
    DocMarks raised;
    raised.sup = true;
    const DocumentPage page(
        {paragraph({words("a"), words("2[1][2] [x] [3", raised)}), note(1, "one"), note(2, "two")},
        "1");
    EXPECT_EQ(page.text().text(0, page.text().block(0).end), "a2[1][2] [x] [3");
    EXPECT_EQ(links(page.text()).first(2), (QStringList{"#[1]", "#[2]"}));
    EXPECT_TRUE(page.placeOf(QString("#") + u'↑' + '2'));
}

TEST(DocumentPage, picturesStandOnLinesOfTheirOwnUnderNamesOfTheirOwn)
{
    auto shown = std::make_shared<DocPicture>();
    shown->data = "bytes";
    auto lost = std::make_shared<DocPicture>();
    const DocumentPage page({paragraph({words("a"), {DocInline::Picture(shown)}, words("b"),
                                {DocInline::Picture(lost)}})},
        "7");
    ASSERT_EQ(page.text().blockCount(), 4);
    const auto picture = [&](qsizetype block) {
        const auto style = page.text().styleAt(page.text().block(block).start);
        return pictureOf(nodeOf(*style->attachment));
    };
    EXPECT_EQ(page.picture(picture(1).src), "bytes");
    EXPECT_EQ(picture(3).alt, "This picture is in the original file");
    for (const char* other : {"", "picture:7/", "picture:7/1", "picture:8/0", "picture:7/-1"})
        EXPECT_TRUE(page.picture(other).isEmpty()) << other;
}
