#include "documents/DocumentText.h"
#include "documents/DocxFixture.h"
#include "documents/RtfText.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

// The preview without the sentence that ends each.
QByteArray previewOf(const QString& extension, const QByteArray& bytes)
{
    DocBlocks blocks = DocumentText::preview(extension, bytes);
    EXPECT_EQ(dumpOf(blocks.back()),
        "aside\tText preview · Layout, artwork, and embedded media are available in the original "
        "file. Long documents are limited for preview.\n");
    blocks.pop_back();
    return dumpOf(blocks);
}

QByteArray zipOf(std::initializer_list<std::pair<QString, QByteArray>> files)
{
    ZipWriter zip(QDateTime{});
    for (const auto& [name, data] : files)
        zip.add(name, data);
    return zip.finish();
}

QByteArray slide(const QByteArray& words)
{
    return "<p:sld><a:p><a:pPr lvl=\"1\"/><a:r><a:t>" + words + "</a:t></a:r></a:p></p:sld>";
}

const QByteArray nothing = "paragraph 0\tThis document has no readable text.\n";

} // namespace

TEST(RtfText, keywordsBecomeText)
{
    const struct
    {
        const char* rtf;
        QStringView expected;
    } cases[] = {
        {"{\\rtf1 one\\par two\\line three}", u"one\ntwo\nthree"},
        {"{\\rtf1{\\fonttbl{\\f0 Arial;}}{\\info{\\title T}}{\\*\\generator G;}a}", u"a"},
        {"{\\rtf1 {\\b bold}{\\header h{\\b x}}\\b0  b}", u"bold b"},
        {"{\\rtf1 \\ldblquote a\\rdblquote\\emdash\\bullet\\rquote s}", u"“a”—•’s"},
        {"{\\rtf1 caf\\'e9 \\'93q\\'94 \x80\\'zz}", u"café “q” €zz"},
        {"{\\rtf1 \\u8217?\\u-10179\\'3f\\u-8704 ?\\uc0\\u233 x{\\uc2\\u233 ab}c}", u"’😀éxéc"},
        {"{\\rtf1 a\\\\b\\{c\\}\\~d\r\ne}", u"a\\b{c}\u00A0de"},
        {"{\\rtf1 a\\bin4 }}}}b}", u"ab"},
        {"{\\rtf1{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt link}}}", u"link"},
        {"{\\rtf1 a}}}}b\\", u"ab"},
        {"{\\rtf1 a{\\v b{c}\\v0 d}e\\v f\\plain g}", u"adeg"},
        {"{\\rtf1\\ansicpg1250 \\'9d\\'e8}", u"ťč"},
        {"{\\rtf1{\\fonttbl{\\f0\\fcharset0 A;}{\\f3\\fcharset128 B;}}"
         "\\f0 \\'e9{\\f3 \\'93\\'fa\\'83\\'5c\\'83X}\\'e9}",
            u"é日ソスé"},
        {"{\\rtf1\\ansicpg77777 \\'e9}", u"é"},
        {"{\\rtf1 a\\nestcell b\\nestrow{\\nonesttables no\\par}c\\row}", u"a\tb\nc\n"},
        {" {\\rtf1 a}", u""},
        {"words", u""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rtfText(QByteArrayView(c.rtf)), c.expected.toString()) << c.rtf;
    EXPECT_EQ(rtfText("{\\rtf1" + QByteArray(1'000'000, '{') + "a"), u"a"_s);
}

TEST(DocumentText, richTextIsAParagraphForEachLine)
{
    EXPECT_EQ(previewOf(u"rtf"_s, "{\\rtf1 one\\par\\par  two }"),
        "paragraph 0\tone\nparagraph 0\ttwo\n");
    EXPECT_EQ(previewOf(u"rtf"_s, "none"), nothing);
}

TEST(DocumentText, slidesComeInTheOrderOfTheDeck)
{
    const auto deck = [](const QByteArray& presentation) {
        return zipOf({{u"ppt/slides/slide2.xml"_s, slide("two")},
            {u"ppt/slides/slide10.xml"_s, slide("ten")}, {u"ppt/slides/slide1.xml"_s, "<p:sld/>"},
            {u"ppt/slides/slideX.xml"_s, slide("x")}, {u"ppt/presentation.xml"_s, presentation},
            {u"ppt/_rels/presentation.xml.rels"_s,
                "<Relationship Target='slides/slide10.xml' Id='r10'/>"
                "<Relationship Id=\"r2\" Target=\"/ppt/slides/slide2.xml\" />"}});
    };
    EXPECT_EQ(previewOf(u"pptx"_s, deck("<p:sldIdLst><p:sldId id=\"1\" r:id=\"r10\"/>"
                                        "<p:sldId id=\"2\" r:id=\"r2\"/></p:sldIdLst>")),
        "section\t\nparagraph 2\tSlide 1\nparagraph 0\tten\n"
        "section\t\nparagraph 2\tSlide 2\nparagraph 0\ttwo\n");
    EXPECT_EQ(previewOf(u"pptx"_s, deck("")),
        "section\t\nparagraph 2\tSlide 1\n"
        "paragraph 0\tThis slide has no text. Open the original to see its artwork.\n"
        "section\t\nparagraph 2\tSlide 2\nparagraph 0\ttwo\n"
        "section\t\nparagraph 2\tSlide 3\nparagraph 0\tten\n");
}

TEST(DocumentText, openDocumentsAreReadByTheirParagraphs)
{
    const auto document = [](const QByteArray& content) {
        return zipOf({{u"content.xml"_s, content}});
    };
    EXPECT_EQ(previewOf(u"odt"_s,
                  document("<text:h a='>'>x</text:h><text:p>a<text:tab/>b<text:line-break/>c"
                           "<text:s text:c=\"3\"/>d <b>&lt;&#233;&#xE9;&amp;lt;&nope;</b></text:p>"
                           "<text:page/><text:p></text:p><text:p>cut off")),
        "paragraph 0\t'>x\nparagraph 0\ta\\tb\\nc d <éé&lt;&nope;\n");
    EXPECT_EQ(previewOf(u"odp"_s, document("<draw:page n='1'><text:h>one</text:h></draw:page>"
                                           "<draw:page><draw:frame/></draw:page>")),
        "section\t\nparagraph 2\tSlide 1\nparagraph 0\tone\nsection\t\nparagraph 2\tSlide 2\n"
        "paragraph 0\tThis slide has no text. Open the original to see its artwork.\n");
    EXPECT_EQ(previewOf(u"odt"_s, "no zip"), nothing);
}

TEST(DocumentText, longDocumentsAreCut)
{
    const auto countOf = [](const QByteArray& paragraph, int times) {
        return DocumentText::preview(
            u"odt"_s, zipOf({{u"content.xml"_s, paragraph.repeated(times)}}));
    };
    EXPECT_EQ(countOf("<text:p>a</text:p>", 3'000).size(), 2'001u);
    const DocBlocks long_ = countOf("<text:p>" + QByteArray(20'000, 'a') + "</text:p>", 100);
    EXPECT_EQ(long_.size(), 21u);
    EXPECT_EQ(plainText(long_.front()).size(), 10'000);
}
