#include "pages/PageDocument.h"
#include "pages/Json.h"
#include "pages/RandomPages.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

QByteArray saved(const QByteArray& json)
{
    return docFromText(textFromJSON(json), docAttrs(json));
}

// The page of these blocks, as it is saved after having been opened.
QByteArray savedBlocks(const QByteArray& blocks)
{
    return saved("{\"type\":\"doc\",\"content\":[" + blocks + "]}");
}

QByteArray page(const QByteArray& blocks)
{
    return "{\"type\":\"doc\",\"content\":[" + blocks + "]}";
}

QByteArray paragraph(const QByteArray& words)
{
    return "{\"type\":\"paragraph\",\"content\":[{\"type\":\"text\",\"text\":\"" + words + "\"}]}";
}

// Where two long texts part, with a little around it.
std::string firstDifference(const QByteArray& left, const QByteArray& right)
{
    const auto end = std::mismatch(left.begin(), left.end(), right.begin(), right.end()).first;
    const qsizetype from = std::max<qsizetype>(end - left.begin() - 300, 0);
    return "\n" + left.mid(from, 500).toStdString() + "\n" + right.mid(from, 500).toStdString();
}

const QByteArray closing = ",{\"type\":\"paragraph\"}";

} // namespace

TEST(Json, isReadOnceAndWrittenInOneForm)
{
    const auto canonical = [](const QByteArray& json) {
        const auto tree = JsonTree::parse(json);
        return tree ? tree->root().canonical() : QByteArray("unreadable");
    };
    EXPECT_EQ(canonical(R"( {"b": 1.50, "a" : [true, null, "\u00e9\/\n\u0001"], "b":-0e1} )"),
        "{\"a\":[true,null,\"é/\\n\\u0001\"],\"b\":-0e1}");
    // By UTF-16 units a surrogate pair comes before U+FF61.
    EXPECT_EQ(canonical(R"({"｡":1,"🍳":2})"), R"({"🍳":2,"｡":1})");
    for (const char* bad :
        {"", "{", "[1,]", "[1] 2", "{\"a\":1,}", "\"\xff\"", "nul", "[01]", "{\"n\xf4"})
        EXPECT_EQ(canonical(bad), "unreadable") << bad;
    EXPECT_EQ(JsonTree::parse("[\"\\ufeffa\"]")->root().firstChild().string(), u"\ufeffa");
    // Half of a surrogate pair couldn't be read again.
    EXPECT_EQ(canonical(R"({"\uDC00":"a\udfff \ud83c\udf73"})"), R"({"�":"a� 🍳"})");
    EXPECT_EQ(canonical(QByteArray(1'001, '[') + QByteArray(1'001, ']')), "unreadable");
    EXPECT_EQ(canonical(QByteArray(1'000, '[') + QByteArray(1'000, ']')).size(), 2'000);
    EXPECT_EQ(canonical(QByteArray("[1\0]", 4)), "unreadable");
}

TEST(PageDocument, aPageWithOneOfEachComesBack)
{
    const QByteArray json =
        R"({"type":"doc","attrs":{"cover":"tone:sky","font":"serif","mine":[1.0]},"content":[{"type":"heading","attrs":{"level":2},"content":[{"type":"text","text":"Plan"}]},{"type":"paragraph","attrs":{"indent":1},"content":[{"type":"text","text":"bold","marks":[{"type":"bold"}]},{"type":"hardBreak"},{"type":"text","text":"site","marks":[{"type":"link","attrs":{"class":"c","href":"https://example.org/","target":"_blank"}}]},{"type":"mention","attrs":{"color":null,"href":null,"icon":null,"id":"N1","kind":"page","label":"Budget","mentionSuggestionChar":"@"}}]},{"type":"orderedList","attrs":{"start":3},"content":[{"type":"listItem","content":[{"type":"paragraph","content":[{"type":"text","text":"third"}]},{"type":"bulletList","content":[{"type":"listItem","content":[{"type":"paragraph"}]}]}]}]},{"type":"taskList","content":[{"type":"taskItem","attrs":{"checked":true},"content":[{"type":"paragraph","content":[{"type":"text","text":"done"}]}]}]},{"type":"blockquote","content":[{"type":"paragraph","content":[{"type":"text","text":"said"}]}]},{"type":"codeBlock","attrs":{"language":"python"},"content":[{"text":"a = 1\nb = 2","type":"text"}]},{"type":"horizontalRule"},{"attrs":{"alt":null,"src":"data:image/png;base64,AAAA","title":null},"type":"image"},{"type":"paragraph"}]})";
    EXPECT_EQ(saved(json), json);
    const FlatText text = textFromJSON(json);
    EXPECT_EQ(text.text(),
        u"Plan\nbold\u2028site\uFFFC\nthird\n\ndone\nsaid\na = 1\u2028b = 2\n\n\uFFFC\n\n");
    EXPECT_EQ(text.block(3).what().depth, 1);
    EXPECT_EQ(pageWords(json), u"Plan\nbold\nsiteBudget\nthird\n\ndone\nsaid\na = 1\nb = 2\n\n\n");
}

TEST(PageDocument, isTheIdentityAfterTheFirstPass)
{
    const unsigned first = seedOrRandom();
    for (unsigned seed = first; seed < first + 3'000; ++seed) {
        RandomPages::Can can;
        can.damaged = seed % 2 == 1;
        const QByteArray json = RandomPages(seed, can).json();
        SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(seed));
        const QByteArray once = saved(json);
        ASSERT_TRUE(JsonTree::parse(once)) << once.constData();
        ASSERT_EQ(saved(once), once) << firstDifference(saved(once), once);
        if (can.damaged)
            continue;
        // Whatever isn't ours stands in it byte for byte, and no word is missing.
        const auto tree = pageTree(json);
        for (const PageNode& node : tree->content)
            if (node.type == PageNode::Type::Other) {
                ASSERT_TRUE(once.contains(node.raw)) << node.raw.constData();
            }
        const auto bare = [](QString words) { return words.remove(u'\n'); };
        ASSERT_EQ(bare(pageWords(once)), bare(pageWords(json)));
    }
}

TEST(PageDocument, oddPagesAreSetRight)
{
    EXPECT_EQ(savedBlocks(""), emptyPage);
    for (const char* bad : {"", "[]", "7", "{\"content\":7}", "{"})
        EXPECT_EQ(saved(bad), emptyPage) << bad;
    EXPECT_EQ(
        savedBlocks(
            R"({"type":"heading","attrs":{"level":9}},{"type":"heading","attrs":{"level":0}})"),
        page(R"({"type":"heading","attrs":{"level":6}},{"type":"heading","attrs":{"level":1}})" +
             closing));
    // Two lists in a row are one, with the first one's number.
    const QByteArray one = "{\"type\":\"listItem\",\"content\":[" + paragraph("a") + "]}";
    EXPECT_EQ(savedBlocks("{\"type\":\"orderedList\",\"attrs\":{\"start\":4},\"content\":[" + one +
                          "]},{\"type\":\"orderedList\",\"content\":[" + one + "]}"),
        page("{\"type\":\"orderedList\",\"attrs\":{\"start\":4},\"content\":[" + one + "," + one +
             "]}" + closing));
    // A quote in a quote is one quote; its depth is the quote's.
    EXPECT_EQ(savedBlocks("{\"type\":\"blockquote\",\"attrs\":{\"indent\":2},\"content\":[{"
                          "\"type\":\"blockquote\",\"content\":[" +
                          paragraph("a") + "]}]}"),
        page("{\"type\":\"blockquote\",\"attrs\":{\"indent\":2},\"content\":[" + paragraph("a") +
             "]}" + closing));
    // An item that begins with a list: that comes first, the empty item after it.
    const FlatText text =
        textFromJSON(page("{\"type\":\"bulletList\",\"content\":[{\"type\":\"listItem\","
                          "\"content\":[{\"type\":\"bulletList\",\"content\":[" +
                          one + "]}]}]}"));
    EXPECT_EQ(text.text(), u"a\n\n\n");
    EXPECT_EQ(text.block(0).what().depth, 1);
    EXPECT_EQ(text.block(1).what().kind, Block::Bullet);
    // A line end in a text is a break, never another block.
    EXPECT_EQ(savedBlocks(R"({"type":"paragraph","content":[{"type":"text","text":"a\r\nb"}]})"),
        page(
            R"({"type":"paragraph","content":[{"type":"text","text":"a"},{"type":"hardBreak"},{"type":"text","text":"b"}]})"));
}

TEST(PageDocument, objectsInTheTextStandForThemselves)
{
    const QByteArray picture = R"({"attrs":{"alt":null,"src":"x","title":null},"type":"image"})";
    const QByteArray callout = R"({"content":[{"text":"note","type":"text"}],"type":"callout"})";
    FlatText text = textFromJSON(page(picture + "," + callout + "," + paragraph("ab")));
    EXPECT_EQ(text.text(), u"\uFFFC\nnote\nab\n");

    // Put into the middle of words, it splits them.
    FlatText pasted = text;
    pasted.replace(8, 8, text.slice(0, 1));
    EXPECT_EQ(docFromText(pasted), page(picture + "," + callout + "," + paragraph("a") + "," +
                                        picture + "," + paragraph("b")));
    // Words typed beside it follow it; deleted, only they stay.
    FlatText beside = text;
    beside.replace(1, 1, FlatText(u"typed"));
    EXPECT_EQ(docFromText(beside),
        page(picture + "," + paragraph("typed") + "," + callout + "," + paragraph("ab")));
    beside.replace(0, 1, {});
    EXPECT_EQ(
        docFromText(beside), page(paragraph("typed") + "," + callout + "," + paragraph("ab")));
    // Typing into what isn't ours changes nothing of it.
    FlatText typed = text;
    typed.replace(3, 3, FlatText(u"x\uFFFC"));
    EXPECT_EQ(docFromText(typed), page(picture + "," + callout + "," + paragraph("ab")));
    // Two mentions of one item are two; one that stands for nothing is its label.
    FlatTextBuilder builder;
    const auto mention = [](const QString& id) {
        auto style = std::make_shared<CharStyle>();
        style->mention = std::make_shared<const Mention>(Mention{id, "B"});
        return style;
    };
    builder.add(u"\uFFFC\uFFFC", mention("N1"));
    builder.add(u"\uFFFC\uFFFC");
    builder.add(u"\uFFFC", mention(""));
    builder.closeBlock({});
    const PageNodes nodes = nodesFromText(builder.take());
    ASSERT_EQ(nodes.front().content.size(), 3u);
    EXPECT_EQ(nodes.front().content[1].name, "N1");
    EXPECT_EQ(nodes.front().content[2], PageNode::ofText("B"));
}

TEST(PageDocument, settingsKeepWhatTheyDontKnow)
{
    const QByteArray attrs =
        R"({"cover":"tone:mint","font":"mono","smallText":true,"theirs":{"a":1.0}})";
    PageSettings settings = pageSettings(attrs);
    EXPECT_EQ(settings, (PageSettings{PageSettings::Font::Mono, true, false, false, "tone:mint"}));
    settings.locked = true;
    settings.font = PageSettings::Font::Standard;
    EXPECT_EQ(withSettings(attrs, settings),
        R"({"cover":"tone:mint","font":null,"fullWidth":null,"locked":true,"smallText":true,"theirs":{"a":1.0}})");
    EXPECT_EQ(pageSettings(R"({"font":"comic"})"), PageSettings());
}

TEST(PageDocument, wordsAreCutBetweenCharacters)
{
    QByteArray words;
    for (int i = 0; i < 199'999; ++i)
        words += 'a';
    EXPECT_EQ(pageWords(page(paragraph(words + "👩‍👩‍👧bc"))).right(9),
        QString("a👩‍👩‍👧"));
}

TEST(PageDocument, pagesTooDeepToBeReadOpenAsEmptyOnes)
{
    const auto nested = [](const QByteArray& open, const QByteArray& close, int levels) {
        return R"({"type":"doc","content":[)" + open.repeated(levels) +
               R"({"type":"paragraph","content":[{"type":"text","text":"x"}]})" +
               close.repeated(levels) + "]}";
    };
    constexpr int levels = 100'000, deepest = 490; // two levels of JSON each
    for (const QByteArray type : {"blockquote", "bulletList", "listItem", "table", "callout"}) {
        SCOPED_TRACE(type.toStdString());
        const QByteArray open = "{\"type\":\"" + type + "\",\"content\":[";
        EXPECT_EQ(pageWords(docFromText(textFromJSON(nested(open, "]}", levels)))), "");
        EXPECT_FALSE(pageTree(nested(open, "]}", levels)));
        const QByteArray page = docFromText(textFromJSON(nested(open, "]}", deepest)));
        EXPECT_EQ(docFromText(textFromJSON(page)), page);
    }
    EXPECT_TRUE(pageWords(nested("{\"type\":\"blockquote\",\"content\":[", "]}", deepest)) == "x");
    EXPECT_FALSE(pageTree(QByteArray(levels, '[')));
    EXPECT_FALSE(pageTree(QByteArray("{\"a\":").repeated(levels)));
}
