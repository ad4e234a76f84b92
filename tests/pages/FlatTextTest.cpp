#include "pages/FlatText.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace corvelle;

namespace {

unsigned seed()
{
    return qEnvironmentVariableIsSet("CORVELLE_SEED")
               ? qEnvironmentVariable("CORVELLE_SEED").toUInt()
               : std::random_device()();
}

// The same text, as plainly as can be: a style or a block for each unit.
struct Plain
{
    struct Unit
    {
        QChar character;
        Marks marks;
        int depth = 0; // of a newline
        bool operator==(const Unit&) const = default;
    };
    std::vector<Unit> units;
    bool operator==(const Plain&) const = default;
};

Plain plainOf(const FlatText& text)
{
    Plain plain;
    text.eachRun(0, text.length(), [&](Units at, QStringView piece, const CharStyleRef& style) {
        EXPECT_EQ(at, static_cast<Units>(plain.units.size()));
        for (const QChar c : piece)
            plain.units.push_back({c, style ? style->marks : Marks(), 0});
    });
    text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        if (block.end < text.length())
            plain.units[static_cast<size_t>(block.end)].depth = block.what().depth;
        return true;
    });
    return plain;
}

class Random
{
public:
    explicit Random(unsigned seed)
        : m_random(seed)
    {}
    Units below(Units bound)
    {
        return bound <= 0 ? 0 : static_cast<Units>(m_random() % static_cast<size_t>(bound));
    }

    FlatText text(Units most)
    {
        FlatTextBuilder builder;
        for (Units left = below(most + 1); left > 0;) {
            QString piece;
            for (Units i = below(left) + 1; i > 0; --i, --left)
                piece += QChar(u'a' + static_cast<char16_t>(below(26)));
            builder.add(piece, style());
            if (left > 0 && below(3) == 0) {
                --left;
                auto block = std::make_shared<BlockStyle>();
                block->depth = static_cast<int>(below(4));
                builder.closeBlock(block);
            }
        }
        return builder.take();
    }
    CharStyleRef style()
    {
        auto style = std::make_shared<CharStyle>();
        style->marks = Marks::fromInt(static_cast<quint8>(below(4)));
        return style;
    }
    // Ascending steps without overlap; some only change the style.
    Edit edit(const FlatText& text)
    {
        Edit edit;
        for (Units at = below(8); at <= text.length() && edit.steps.size() < 6; at += below(12)) {
            const Units removed = std::min(below(10), text.length() - at);
            if (below(3) == 0 && removed > 0) {
                FlatText same = text.slice(at, at + removed);
                same.setStyle(0, removed, [this](const CharStyleRef&) { return style(); });
                edit.steps.push_back({at, removed, same, true});
            } else {
                edit.steps.push_back({at, removed, this->text(9), false});
            }
            at += removed + 1;
        }
        return edit;
    }

private:
    std::mt19937 m_random;
};

void expectInOrder(const Edit& edit)
{
    Units end = 0;
    for (const Edit::Step& step : edit.steps) {
        EXPECT_GE(step.at, end);
        end = step.at + step.removed;
        if (step.restyles) {
            EXPECT_EQ(step.inserted.length(), step.removed);
        }
    }
}

} // namespace

TEST(FlatText, editsByTheThousandGiveWhatAPlainTextGives)
{
    const unsigned first = seed();
    SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(first));
    Random random(first);
    FlatText text = random.text(6'000);
    Plain plain = plainOf(text);
    for (int i = 0; i < 1'500; ++i) {
        const Units length = text.length(), from = random.below(length + 1);
        const Units to = std::min(length, from + random.below(random.below(8) ? 20 : 2'500));
        const auto begin = plain.units.begin();
        if (random.below(4) == 0) {
            const CharStyleRef style = random.style();
            text.setStyle(from, to, [&](const CharStyleRef&) { return style; });
            for (auto unit = begin + from; unit != begin + to; ++unit)
                unit->marks = style->marks;
        } else {
            const FlatText put = random.text(length > 12'000 ? 10 : random.below(8) ? 20 : 3'000);
            const FlatText before = text;
            text.replace(from, to, put);
            EXPECT_EQ(before.length(), length) << "a copy keeps what it was";
            const Plain other = plainOf(put);
            plain.units.erase(begin + from, begin + to);
            plain.units.insert(plain.units.begin() + from, other.units.begin(), other.units.end());
        }
        if (i % 25 == 0) {
            ASSERT_EQ(plainOf(text), plain);
            const Units a = random.below(text.length() + 1),
                        b = a + random.below(text.length() - a + 1);
            const Plain part{{plain.units.begin() + a, plain.units.begin() + b}};
            ASSERT_EQ(plainOf(text.slice(a, b)), part);
        }
    }
    // Every way to ask for a block gives the same.
    qsizetype index = 0;
    text.eachBlock(0, [&](const FlatText::BlockAt& each) {
        for (const auto& found :
            {text.block(index), text.blockAt(each.start), text.blockAt(each.end)}) {
            EXPECT_EQ(found.index, index);
            EXPECT_EQ(found.start, each.start);
            EXPECT_EQ(found.end, each.end);
            EXPECT_EQ(found.what(), each.what());
        }
        ++index;
        return true;
    });
    EXPECT_EQ(index, text.blockCount());
    EXPECT_EQ(text.blockAt(text.length()).index, text.blockCount() - 1);
}

TEST(FlatText, blocksEndAtNewlinesAloneAndTheEmptyTextIsOne)
{
    EXPECT_EQ(FlatText().blockCount(), 1);
    EXPECT_EQ(FlatText().blockAt(0).what().kind, Block::Paragraph);
    FlatTextBuilder builder;
    builder.add(u"a\r\nb\rc\nd\u2029e\u2028f");
    builder.closeBlock({});
    FlatText text = builder.take();
    EXPECT_EQ(text.text(), u"a\u2028b\u2028c\u2028d\u2028e\u2028f\n");
    EXPECT_EQ(text.blockCount(), 1);
    text.replace(text.length(), text.length(), FlatText(u"behind"));
    EXPECT_EQ(text.blockCount(), 2);
    EXPECT_EQ(text.block(1).start, 12);
    auto quote = std::make_shared<BlockStyle>();
    quote->kind = Block::Quote;
    text.setBlockStyle(0, quote);
    EXPECT_EQ(text.block(0).what().kind, Block::Quote);
    EXPECT_EQ(text.block(0).end, 11);
}

TEST(FlatText, editsAreAppliedTakenBackAndComposed)
{
    const unsigned first = seed();
    SCOPED_TRACE("CORVELLE_SEED=" + std::to_string(first));
    Random random(first);
    for (int i = 0; i < 3'000; ++i) {
        const FlatText before = random.text(60);
        const Edit one = random.edit(before);
        const FlatText between = applied(one, before);
        ASSERT_TRUE(applied(inverted(one, before), between) == before);
        const Edit two = random.edit(between);
        const FlatText after = applied(two, between);
        const Edit both = composed(one, two);
        expectInOrder(both);
        ASSERT_TRUE(applied(both, before) == after) << "case " << i;
        ASSERT_TRUE(applied(inverted(both, before), after) == before);
    }
}

TEST(FlatText, placesFollowEditsAndStayInOrder)
{
    const FlatText before(u"0123456789");
    Edit edit;
    edit.steps = {{2, 0, FlatText(u"ab"), false}, {4, 3, FlatText(u"x"), false},
        {8, 1, FlatText(u"8"), true}};
    EXPECT_EQ(mapped(1, edit, Bias::After), 1);
    EXPECT_EQ(mapped(2, edit, Bias::Before), 2);
    EXPECT_EQ(mapped(2, edit, Bias::After), 4);
    EXPECT_EQ(mapped(5, edit, Bias::After), 6) << "what was removed is where it was";
    EXPECT_EQ(mapped(7, edit, Bias::Before), 7);
    EXPECT_EQ(mapped(8, edit, Bias::Before), 8) << "a change of style moves nothing";

    Random random(seed());
    for (int i = 0; i < 500; ++i) {
        const FlatText text = random.text(60);
        const Edit some = random.edit(text);
        const Units length = applied(some, text).length();
        Units last = 0;
        for (Units place = 0; place <= text.length(); ++place)
            for (const Bias bias : {Bias::Before, Bias::After}) {
                const Units to = mapped(place, some, bias);
                ASSERT_TRUE(last <= to && to <= length);
                last = to;
            }
    }
}
