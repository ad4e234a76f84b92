#include "pages/MarkdownMerge.h"
#include "pages/Alignment.h"
#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"
#include "pages/RandomPages.h"
#include "support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

// The page that an editor of the file has before it.
PageNodes opened(const QString& markdown)
{
    return pageTree(docFromText(textFromNodes(PageMarkdown::docFromMarkdown(markdown))))->content;
}

// Without empty paragraphs, which Markdown doesn't hold.
PageNodes filled(PageNodes nodes)
{
    std::erase_if(nodes, [](const PageNode& node) {
        return node.type == PageNode::Type::Paragraph && node.content.empty();
    });
    return nodes;
}

PageNode paragraphOf(const QString& words)
{
    PageNode node = PageNode::of(PageNode::Type::Paragraph);
    node.content.push_back(PageNode::ofText(words));
    return node;
}

int common(const std::vector<int>& old, const std::vector<int>& fresh)
{
    const std::vector<qsizetype> found = alignment(old, fresh);
    qsizetype last = -1;
    int count = 0;
    for (size_t i = 0; i < found.size(); ++i) {
        if (found[i] < 0)
            continue;
        EXPECT_GT(found[i], last);
        EXPECT_EQ(old[static_cast<size_t>(found[i])], fresh[i]);
        last = found[i];
        ++count;
    }
    return count;
}

} // namespace

TEST(Alignment, findsAsMuchAsThereIsByEachOfItsWays)
{
    EXPECT_EQ(common({1, 2, 3, 4}, {1, 9, 3, 4}), 3);
    EXPECT_EQ(common({}, {1}), 0);
    std::mt19937 random(seedOrRandom());
    for (int i = 0; i < 300; ++i) {
        std::vector<int> old, fresh;
        for (unsigned n = random() % 30; n > 0; --n)
            old.push_back(static_cast<int>(random() % 6));
        fresh = old;
        for (unsigned n = random() % 6; n > 0; --n)
            fresh.insert(fresh.begin() + static_cast<ptrdiff_t>(random() % (fresh.size() + 1)),
                static_cast<int>(random() % 6));
        EXPECT_EQ(common(old, fresh), static_cast<int>(old.size()));
    }
    // Too large for the table: by edits, and beyond those by position.
    std::vector<int> large, edited, other;
    for (int i = 0; i < 3'000; ++i) {
        large.push_back(i);
        if (i % 10 != 5)
            edited.push_back(i);
        if (i % 10 == 7)
            edited.push_back(-i);
        other.push_back(i % 2 ? i : -i - 1);
    }
    EXPECT_EQ(common(large, edited), 2'700);
    EXPECT_EQ(common(large, other), 1'500);
}

TEST(MarkdownMerge, editsChangeTheirOwnLinesAlone)
{
    const QString file = "\n\nTitle\n===\nfirst   line\r\nsecond\r\n\n\n* one\n\n* two\n***\n| a|b "
                         "|\n|--|--|\n|1|2|\nend  ";
    const MarkdownMerge merge(file);
    PageNodes page = opened(file);
    EXPECT_EQ(merge.rewrite(page), file) << "nothing was edited";
    ASSERT_EQ(page.size(), 6u) << "with the closing paragraph";
    page[1] = paragraphOf("edited");
    EXPECT_EQ(
        merge.rewrite(page), QString(file).replace("first   line\r\nsecond\r\n", "edited\r\n"));
    page[1] = paragraphOf("two");
    page.insert(page.begin() + 2, paragraphOf("more"));
    EXPECT_EQ(merge.rewrite(page),
        QString(file).replace("first   line\r\nsecond\r\n\n\n", "\r\ntwo\r\n\r\nmore\r\n\r\n"));
    page = opened(file);
    page.erase(page.begin() + 4);
    const QString cut = *merge.rewrite(page);
    EXPECT_TRUE(cut.startsWith("\n\nTitle\n===\nfirst   line\r\n") && cut.endsWith("\n***"))
        << cut.toStdString();

    const MarkdownMerge ends(QString("a\n\nb\n\n\n"));
    EXPECT_EQ(ends.rewrite({paragraphOf("a"), paragraphOf("c")}), "a\n\nc\n\n\n");
    EXPECT_EQ(ends.rewrite({paragraphOf("a")}), "a\n");
    EXPECT_EQ(ends.rewrite(PageNodes{}), "");
    for (const QString loose : {"a \r", "a\n\nb\r"}) // of no line
        EXPECT_EQ(MarkdownMerge(loose).rewrite(opened(loose)), loose);
    EXPECT_EQ(MarkdownMerge(QString()).rewrite({paragraphOf("a")}), "a\n");
    // A new list before one of its kind would join it: then both are written as one.
    EXPECT_EQ(MarkdownMerge(QString("# a\n---\n"))
                  .rewrite({PageMarkdown::docFromMarkdown(u"# a")[0], paragraphOf("x"),
                      PageNode::of(PageNode::Type::HorizontalRule)}),
        "# a\n\nx\n\n---\n")
        << "words right above a rule would be a heading";
}

// Files of all endings and spacings, with some blocks edited, taken out and put in.
TEST(MarkdownMerge, whateverIsEditedTheRestKeepsItsBytes)
{
    RandomPages::Can can;
    can.emptyParagraphs = can.indents = can.spans = can.edgeBlanks = can.neighbourLists =
        can.objects = can.unknown = can.listOrder = can.breaksAnywhere = false;
    const unsigned first = seedOrRandom();
    for (unsigned seed = first; seed < first + 1'500; ++seed) {
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
        std::mt19937 random(seed);
        // Each block on lines that nobody else has.
        QString file;
        std::vector<QString> texts;
        for (const PageNode& node : RandomPages(seed, can).page()) {
            texts.push_back(PageMarkdown::markdownFromNode(node));
            QString text = texts.back();
            text += QString(static_cast<qsizetype>(random() % 3) + 2, u'\n');
            if (random() % 3 == 0)
                text.replace("\n", "\r\n");
            file += text;
        }
        if (random() % 2)
            file = file.trimmed();
        const MarkdownMerge merge(file);
        PageNodes page = opened(file);
        ASSERT_EQ(merge.rewrite(page), file);
        std::vector<size_t> edited;
        for (size_t i = 0; i < page.size(); ++i)
            if (random() % 4 == 0) {
                page[i] = paragraphOf("edited " + QString::number(i) + ".");
                edited.push_back(i);
            }
        const auto text = merge.rewrite(page);
        ASSERT_TRUE(text);
        // It reads as the page, and the blocks that weren't edited stand in it as they stood.
        ASSERT_EQ(pageJson(filled(opened(*text))), pageJson(filled(page)));
        const MarkdownMerge again(*text);
        ASSERT_EQ(again.rewrite(page), *text) << "it says what the page says";
        QString rest = *text;
        for (const size_t i : edited)
            rest.replace("edited " + QString::number(i) + ".", QString());
        for (QString& line : rest.split('\n')) {
            if (line.endsWith('\r')) // where the last line of the file got one
                line.chop(1);
            ASSERT_TRUE(line.trimmed().isEmpty() || file.contains(line))
                << line.toStdString() << "\n--- file:\n"
                << file.toStdString() << "\n--- now:\n"
                << text->toStdString();
        }
    }
}
