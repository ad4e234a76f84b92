// The words of a page as they are drawn, found, spoken, followed and copied.
#include "interface/page/CodeTokens.h"
#include "interface/page/PageCopy.h"
#include "interface/page/PageTargets.h"
#include "interface/page/ShownText.h"
#include "interface/page/SpokenPage.h"
#include "pages/PageDocument.h"
#include "support/Printing.h"

#include <QMimeData>
#include <gtest/gtest.h>

using namespace corvelle;

namespace {

const QByteArray wordsPage = R"({"type":"doc","content":[
    {"type":"heading","attrs":{"level":2},"content":[{"type":"text","text":"Plan"}]},
    {"type":"paragraph","content":[{"type":"text","text":"See "},{"type":"mention","attrs":{"id":"n1","label":"The Budget"}},
        {"type":"text","text":" and "},{"type":"text","text":"the ","marks":[{"type":"link","attrs":{"href":"https://example.org/"}}]},
        {"type":"text","text":"site","marks":[{"type":"bold"},{"type":"link","attrs":{"href":"https://example.org/"}}]},
        {"type":"text","text":". STRASSE"}]},
    {"type":"table","content":[{"type":"tableRow","content":[
        {"type":"tableCell","content":[{"type":"paragraph","content":[{"type":"text","text":"one"}]}]},
        {"type":"tableCell","content":[{"type":"paragraph","content":[{"type":"mention","attrs":{"id":"n2","label":"in a cell"}}]}]}]}]},
    {"type":"embed","attrs":{"id":"n3","kind":"page","label":"A card"}},
    {"type":"image","attrs":{"src":"x.png","alt":"A picture"}},
    {"type":"bulletList","content":[{"type":"listItem","content":[{"type":"paragraph","content":[{"type":"text","text":"last"}]}]}]}]})";

} // namespace

TEST(PageFind, looksIntoTextLabelsCellsAndCards)
{
    const FlatText text = textFromJSON(wordsPage);
    EXPECT_EQ(findInPage(text, "plan"), (std::vector<TextRange>{{{}, 0, 4}}));
    EXPECT_EQ(findInPage(text, "budget"), (std::vector<TextRange>{{{}, 9, 10}}))
        << "a label is found as its mention";
    EXPECT_EQ(findInPage(text, "see the"), (std::vector<TextRange>{{{}, 5, 10}}));
    EXPECT_EQ(findInPage(text, "the site"), (std::vector<TextRange>{{{}, 15, 23}}))
        << "over a change of marks";
    EXPECT_EQ(findInPage(text, "ONE"), (std::vector<TextRange>{{{{33, 0}}, 0, 3}}));
    EXPECT_EQ(findInPage(text, "cell"), (std::vector<TextRange>{{{{33, 1}}, 0, 1}}));
    EXPECT_EQ(findInPage(text, "card"), (std::vector<TextRange>{{{}, 35, 36}}));
    EXPECT_TRUE(findInPage(text, "").empty());
    EXPECT_TRUE(findInPage(text, "nowhere").empty());
    EXPECT_EQ(findInPage(FlatText(u"aaaa"), "aa").size(), 2u) << "what is found doesn't overlap";
}

TEST(PageTargets, areTheMentionsLinksAndCardsInOrder)
{
    std::vector<std::pair<QString, TextRange>> found;
    for (const TargetInPage& target : pageTargets(textFromJSON(wordsPage)))
        found.emplace_back(
            target.target.link ? target.target.link->href : target.target.item, target.range);
    EXPECT_EQ(found, (std::vector<std::pair<QString, TextRange>>{{"n1", {{}, 9, 10}},
                         {"https://example.org/", {{}, 15, 23}}, {"n2", {{{33, 1}}, 0, 1}},
                         {"n3", {{}, 35, 36}}}))
        << "a link is one, whatever marks its words have";
}

TEST(SpokenPage, offsetsAndPlacesAgree)
{
    const FlatText text = textFromJSON(wordsPage);
    const SpokenPage spoken(text);
    const QString all = spoken.text(0, spoken.length());
    EXPECT_EQ(all.size(), spoken.length());
    EXPECT_TRUE(all.contains("See The Budget and the site.")) << all.toStdString();
    EXPECT_TRUE(all.contains("A card\nA picture\nlast\n")) << all.toStdString();
    EXPECT_TRUE(all.contains("one\tin a cell") || all.contains("one")) << all.toStdString();
    std::vector<PagePlace> places;
    for (Units place = 0; place < text.length(); ++place)
        if (place != 33 && place != 34) // before and behind the table are its first and last cells
            places.push_back({{}, place});
    for (const Units place : {0, 1, 2, 3})
        places.push_back({{{33, 0}}, place});
    for (const Units place : {0, 1})
        places.push_back({{{33, 1}}, place});
    for (const PagePlace& place : places)
        ASSERT_EQ(spoken.placeOf(spoken.offsetOf(place)), place) << place.at;
    EXPECT_EQ(spoken.text(spoken.offsetOf({{{33, 0}}, 1}), spoken.offsetOf({{{33, 1}}, 1})),
        "ne\tin a cell");
    for (qsizetype from = 0; from < spoken.length(); from += 5)
        ASSERT_EQ(spoken.text(from, from + 9), all.mid(from, 9));
    EXPECT_EQ(SpokenPage(FlatText()).text(0, 5), "\n");
}

TEST(PageCopy, takesBlocksWholeAndPartsOfOneAsWords)
{
    const FlatText text = textFromJSON(wordsPage);
    const auto words = [&](Units from, Units to) {
        return copiedBlocks(nodesBetween(text, from, to), {})->text();
    };
    EXPECT_EQ(words(0, 4), "Plan");
    EXPECT_EQ(nodesBetween(text, 0, 4).front().type, PageNode::Type::Heading)
        << "the whole block is what it is";
    EXPECT_EQ(nodesBetween(text, 0, 2).front().type, PageNode::Type::Paragraph)
        << "a part is words";
    EXPECT_EQ(words(2, 10), "an\nSee The Budget");
    const PageNodes all = nodesBetween(text, 0, text.length());
    EXPECT_EQ(all.back().type, PageNode::Type::BulletList) << "the empty last block isn't copied";
    const auto copied = copiedBlocks(all, {});
    EXPECT_TRUE(copied->html().contains("<h2>Plan</h2>")) << copied->html().toStdString();
    EXPECT_TRUE(copied->data("text/markdown").startsWith("## Plan\n"))
        << copied->data("text/markdown").toStdString();
    EXPECT_TRUE(nodesBetween(text, 3, 3).empty());
}

TEST(CodeTokens, findWhatIsSetOff)
{
    using Kind = CodeToken::Kind;
    const auto tokens = [](const QString& code, const QString& language) {
        std::vector<std::pair<QString, Kind>> found;
        for (const CodeToken& token : codeTokens(code, language))
            found.emplace_back(code.mid(token.from, token.to - token.from), token.kind);
        return found;
    };
    using Found = std::vector<std::pair<QString, Kind>>;
    EXPECT_EQ(tokens("def f(x2, y=1.5): # c\nreturn 'a\\'b'", "Python"),
        (Found{{"def", Kind::Keyword}, {"1.5", Kind::Number}, {"# c", Kind::Comment},
            {"return", Kind::Keyword}, {"'a\\'b'", Kind::Text}}));
    EXPECT_EQ(tokens("int a; /* b\nc */ \"d\" // e", "c++"),
        (Found{{"int", Kind::Keyword}, {"/* b\nc */", Kind::Comment}, {"\"d\"", Kind::Text},
            {"// e", Kind::Comment}}));
    EXPECT_EQ(tokens("don't", "rust"), Found{}) << "an apostrophe opens no text";
    EXPECT_EQ(tokens(u'\'' + QString(3'000, u'.') + u'\'', "js"), Found{})
        << "what doesn't end soon is no text";
    EXPECT_EQ(tokens("Select x", "sql"), (Found{{"Select", Kind::Keyword}}));
    EXPECT_EQ(tokens("int a", "no such language"), Found{});
    EXPECT_EQ(tokens("/* open", "c"), (Found{{"/* open", Kind::Comment}}));
}
