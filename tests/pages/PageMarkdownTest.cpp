#include "pages/PageMarkdown.h"
#include "pages/PageDocument.h"
#include "pages/RandomPages.h"
#include "support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

// The blocks as the page's JSON, which says everything.
std::string read(const QString& markdown)
{
    PageNodes nodes;
    for (auto& block : PageMarkdown::parse(markdown))
        nodes.push_back(std::move(block.node));
    std::string json = pageJson(nodes).toStdString();
    const auto drop = [&json](const std::string& what) {
        for (size_t at = json.find(what); at != std::string::npos; at = json.find(what))
            json.erase(at, what.size());
    };
    drop("\"type\":");
    return json.substr(17, json.size() - 18);
}

QString again(const QString& markdown)
{
    return PageMarkdown::markdownFromNodes(PageMarkdown::docFromMarkdown(markdown));
}

} // namespace

TEST(PageMarkdown, blocksAreFoundInTheirOrder)
{
    EXPECT_EQ(read("---\n"), R"([{"horizontalRule"}])");
    EXPECT_EQ(read("---\ntitle: x\n---\na"),
        R"([{"codeBlock","attrs":{"language":"frontmatter"},"content":[{"text":"title: x","text"}]},{"paragraph","content":[{"text","text":"a"}]}])");
    EXPECT_EQ(read("    a\n\n\tb\n"), R"([{"codeBlock","content":[{"text":"a\n\nb","text"}]}])");
    EXPECT_EQ(read("~~~ c++\n```\n"),
        R"([{"codeBlock","attrs":{"language":"c++"},"content":[{"text":"```","text"}]}])");
    EXPECT_EQ(read("## a #\n#b\n-\n- - -"),
        R"([{"heading","attrs":{"level":2},"content":[{"text","text":"a"}]},{"heading","attrs":{"level":2},"content":[{"text","text":"#b"}]},{"horizontalRule"}])");
    EXPECT_EQ(read("> a\n>\n>> b\nc"),
        R"([{"blockquote","content":[{"paragraph","content":[{"text","text":"a"}]},{"blockquote","content":[{"paragraph","content":[{"text","text":"b"}]}]}]},{"paragraph","content":[{"text","text":"c"}]}])");
    EXPECT_EQ(read("a  \nb\\\nc\nd\\\\\ne"),
        R"([{"paragraph","content":[{"text","text":"a"},{"hardBreak"},{"text","text":"b"},{"hardBreak"},{"text","text":"c d\\ e"}]}])");
    EXPECT_EQ(read("x\na | b\n--|:--:\n1 | 2 \\| 3\n"),
        R"([{"paragraph","content":[{"text","text":"x"}]},{"table","content":[{"tableRow","content":[{"tableHeader","attrs":{"colspan":1,"rowspan":1},"content":[{"paragraph","content":[{"text","text":"a"}]}]},{"tableHeader","attrs":{"align":"center","colspan":1,"rowspan":1},"content":[{"paragraph","content":[{"text","text":"b"}]}]}]},{"tableRow","content":[{"tableCell","attrs":{"colspan":1,"rowspan":1},"content":[{"paragraph","content":[{"text","text":"1"}]}]},{"tableCell","attrs":{"align":"center","colspan":1,"rowspan":1},"content":[{"paragraph","content":[{"text","text":"2 | 3"}]}]}]}]}])");
    // A barred bar is never one between cells, in any of its lines.
    EXPECT_EQ(
        read("a \\\\| b\n--|\n"), R"([{"paragraph","content":[{"text","text":"a \\| b --|"}]}])");
    EXPECT_EQ(read("| a |"), R"([{"paragraph","content":[{"text","text":"| a |"}]}])");
}

TEST(PageMarkdown, listsNestBreakAndGoOn)
{
    EXPECT_EQ(read("1) a\n2. b"),
        R"([{"orderedList","content":[{"listItem","content":[{"paragraph","content":[{"text","text":"a"}]}]},{"listItem","content":[{"paragraph","content":[{"text","text":"b"}]}]}]}])");
    EXPECT_EQ(read("- [ ] a\n- b"),
        R"([{"taskList","content":[{"taskItem","attrs":{"checked":false},"content":[{"paragraph","content":[{"text","text":"a"}]}]}]},{"bulletList","content":[{"listItem","content":[{"paragraph","content":[{"text","text":"b"}]}]}]}])");
    EXPECT_EQ(read("7. a\n   b\n\n   ```\n   x\n\n  y\n   ```\n   - c\n"),
        R"([{"orderedList","attrs":{"start":7},"content":[{"listItem","content":[{"paragraph","content":[{"text","text":"a b"}]},{"codeBlock","content":[{"text":"x\n\ny","text"}]},{"bulletList","content":[{"listItem","content":[{"paragraph","content":[{"text","text":"c"}]}]}]}]}]}])");
    // An item may begin on the line below its marker; that line's blanks ask for no break.
    for (const char* below : {"-\n  a", "-   \n  a", "- a"})
        EXPECT_EQ(read(below), read("- a")) << below;
    EXPECT_EQ(read("- \\\n  a"),
        R"([{"bulletList","content":[{"listItem","content":[{"paragraph","content":[{"hardBreak"},{"text","text":"a"}]}]}]}])");
    // Behind more than four blanks the item's column is the one right behind its marker.
    EXPECT_EQ(read("1.     a\n\n   b\n\n       c"),
        R"([{"orderedList","content":[{"listItem","content":[{"paragraph","content":[{"text","text":"a"}]},{"paragraph","content":[{"text","text":"b"}]},{"codeBlock","content":[{"text":"c","text"}]}]}]}])");
    EXPECT_EQ(read("- a\n\n  b\n\nc"),
        R"([{"bulletList","content":[{"listItem","content":[{"paragraph","content":[{"text","text":"a"}]},{"paragraph","content":[{"text","text":"b"}]}]}]},{"paragraph","content":[{"text","text":"c"}]}])");
}

TEST(PageMarkdown, wordsAndTheirMarks)
{
    const auto words = [](const QString& markdown) {
        const std::string all = read(markdown);
        const std::string before = R"([{"paragraph","content":[)";
        return all.substr(before.size(), all.size() - before.size() - 3);
    };
    EXPECT_EQ(words("**a*"), R"({"text","text":"*"},{"text","text":"a","marks":[{"italic"}]})");
    EXPECT_EQ(words("a_b_c ~one~ ~~two~~"),
        R"({"text","text":"a_b_c ~one~ "},{"text","text":"two","marks":[{"strike"}]})");
    EXPECT_EQ(words("***a** b*"),
        R"({"text","text":"a","marks":[{"bold"},{"italic"}]},{"text","text":" b","marks":[{"italic"}]})");
    EXPECT_EQ(words("<u>a `` ` `` </U>\\*<x>"),
        R"({"text","text":"a ","marks":[{"underline"}]},{"text","text":"`","marks":[{"underline"},{"code"}]},{"text","text":" ","marks":[{"underline"}]},{"text","text":"*<x>"})");
    EXPECT_EQ(words("[x](node:abc?page=2) [@B\\]](node:d)"),
        R"({"mention","attrs":{"color":null,"href":null,"icon":null,"id":"abc","kind":"page","label":"x","mentionSuggestionChar":"@"}},{"text","text":" "},{"mention","attrs":{"color":null,"href":null,"icon":null,"id":"d","kind":"page","label":"B]","mentionSuggestionChar":"@"}})");
    const PageNodes nodes =
        PageMarkdown::docFromMarkdown(u"[a *b* [c](<d e> 'f')](g(h)) [](x) [y]( z \"no [i](j ((k)")
            .front()
            .content;
    ASSERT_EQ(nodes.size(), 5u);
    EXPECT_EQ(nodes[0].link->href, "g(h)");
    EXPECT_EQ(nodes[1].marks, Mark::Italic);
    EXPECT_EQ(nodes[3].link->href, "d e");
    EXPECT_EQ(nodes[4].text, " [](x) [y]( z \"no [i](j ((k)");
}

TEST(PageMarkdown, whatIsWrittenReadsBack)
{
    for (const char* text : {"1\\. not a list", "\\# no heading", "\\- no item",
             "\\=== ", "2024\\. x", "# a \\#", "# \\##", "`` ` ``", "`````\n````\n`````",
             "a\\\n\\- b", "| a\\|b |\n| --- |\n| `c\\|d` |", "- \\[ ] x", "\\[a\\](b)",
             "[a\\]](b)", "[a](<b c>)", "a\\<br>b", "a***b***c", "[a](b\\`) [@c](node:d) \\`",
             "```a  b\nc\n```", "~~~ ~`\na\n~~~", "` a`", "` ` a", "`  \u00a0  `", "# \u00a0a",
             "---\na: b\n---\n\nc"}) {
        const QString once = again(text);
        EXPECT_EQ(once, QString(text).trimmed());
    }
    EXPECT_EQ(again("# a\u00a0##\u00a0 "), "# a");
    EXPECT_EQ(again("# a \\#\u00a0"), "# a \\#\u00a0");
    EXPECT_EQ(again("[\\@a](node:b)"), "[@a](node:b)");
    EXPECT_EQ(again("x\n\n\u00a0\\--|--"), "x\n\n\u00a0\\--|--");
    EXPECT_EQ(again("\u00a0a\u00a0"), "\u00a0a\u00a0");
    PageNode code = PageNode::of(PageNode::Type::CodeBlock);
    code.text = "a\n````";
    EXPECT_EQ(PageMarkdown::markdownFromNode(code), "`````\na\n````\n`````");
    code.name = "frontmatter";
    EXPECT_EQ(PageMarkdown::markdownFromNodes({code}), "`````frontmatter\na\n````\n`````");
}

// What Markdown can hold of pages of all kinds comes back whole.
TEST(PageMarkdown, pagesGoToMarkdownAndComeBack)
{
    RandomPages::Can can;
    can.emptyParagraphs = can.indents = can.spans = can.edgeBlanks = can.neighbourLists =
        can.objects = can.unknown = can.listOrder = can.breaksAnywhere = false;
    const unsigned first = qEnvironmentVariableIsSet("CORVELLE_SEED")
                               ? qEnvironmentVariable("CORVELLE_SEED").toUInt()
                               : std::random_device()();
    for (unsigned seed = first; seed < first + 3'000; ++seed) {
        const PageNodes page = RandomPages(seed, can).page();
        const QString markdown = PageMarkdown::markdownFromNodes(page);
        const PageNodes back = PageMarkdown::docFromMarkdown(markdown);
        ASSERT_EQ(pageJson(back), pageJson(page)) << "CORVELLE_SEED=" << seed << "\n"
                                                  << markdown.toStdString();
    }
}

TEST(PageMarkdown, theExportIsForOthers)
{
    PageNode paragraph = PageNode::of(PageNode::Type::Paragraph),
             mention = PageNode::of(PageNode::Type::Mention);
    mention.name = "N1";
    mention.text = "a_b";
    paragraph.content = {mention};
    const PageNodes nodes = {paragraph, pictureNode({"data:image/png;base64,AA", "x*", {}}),
        embedNode({"N2", "page", "", {}, {}})};
    EXPECT_EQ(PageMarkdown::markdownFromDoc(nodes, PageMarkdown::Pictures::Named),
        "[@a\\_b](corvelle://item/N1)\n\n[Picture: x\\*]\n\n[Corvelle](corvelle://item/N2)");
    EXPECT_TRUE(PageMarkdown::markdownFromDoc(nodes, PageMarkdown::Pictures::Kept)
                    .contains("![x\\*](data:image/png;base64,AA)"));
    EXPECT_TRUE(PageMarkdown::holdsPicturesOrEmbeds(nodes[1]) &&
                !PageMarkdown::holdsPicturesOrEmbeds(paragraph));
}

// However deep the markers go, the tree stays shallow enough to be stored, and keeps its words.
TEST(PageMarkdown, deepNestingEndsAndKeepsItsWords)
{
    constexpr int levels = 100'000;
    QString staircase;
    for (int level = 0; level < 2'000; ++level)
        staircase += QString(2 * level, u' ') + "- Z\n";
    const QString markers[] = {">", "> ", "- ", "* ", "1. ", "- [ ] ", "> - ", "- > ", "1. > - ",
        "[", "*", "**a ", "_a* ", "<u>", "`", "![", "[a](", "| "};
    QStringList texts = {staircase, staircase + "\n" + QString(4'000, u' ') + "Z",
        QString("[").repeated(levels) + "Z" + QString("](y)").repeated(levels),
        QString("<u>*").repeated(levels) + "Z" + QString("*</u>").repeated(levels),
        QString("> - Z\n\n").repeated(levels / 10), QString("- Z\n   > y\n").repeated(levels / 10)};
    for (const QString& marker : markers)
        texts.append(marker.repeated(levels) + "Z");
    for (const QString& text : texts) {
        SCOPED_TRACE(text.left(24).toStdString());
        const PageNodes nodes = PageMarkdown::docFromMarkdown(text);
        const QByteArray json = pageJson(nodes);
        EXPECT_TRUE(json.contains('Z'));
        EXPECT_TRUE(pageTree(json).has_value());
        const QByteArray page = docFromText(textFromJSON(json));
        EXPECT_TRUE(page.contains('Z'));
        EXPECT_EQ(docFromText(textFromJSON(page)), page);
        const QString again = PageMarkdown::markdownFromNodes(nodes);
        EXPECT_TRUE(pageJson(PageMarkdown::docFromMarkdown(again)).contains('Z'));
    }
}

// One long row among many short ones costs neither to read nor to write what they would fill.
TEST(PageMarkdown, tablesAreBounded)
{
    const QString many = QString("a|").repeated(3'000);
    const QString text = "|" + many + "\n|" + QString("--|").repeated(3'000) + "\n" +
                         QString("|b|\n").repeated(50'000) + "|" + many;
    const PageNodes nodes = PageMarkdown::docFromMarkdown(text);
    const PageNodes& rows = nodes.front().content;
    ASSERT_EQ(rows.size(), 50'002u);
    EXPECT_EQ(rows.front().content.size(), 1'000u);
    EXPECT_TRUE(pageWords({rows.back()}).endsWith(many.last(4'001).chopped(1)))
        << "what is left of the line stands in its last cell";
    size_t cells = 0;
    for (const PageNode& row : rows)
        cells += row.content.size();
    EXPECT_LT(cells, 200'000u);
    EXPECT_LT(PageMarkdown::markdownFromNodes(nodes).size(), 2'000'000);

    const PageNodes small = PageMarkdown::docFromMarkdown(u"|a|b|\n|--|--|\n|c|\n|d|e|f|");
    ASSERT_EQ(small.front().type, PageNode::Type::Table);
    for (const PageNode& row : small.front().content)
        EXPECT_EQ(row.content.size(), 3u) << "else all rows are as long as the longest";
}
