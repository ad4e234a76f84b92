// A page cut into pieces: heights, places, and what stays still.
#include "interface/page/PageLayout.h"
#include "interface/page/PageView.h"
#include "pages/PageDocument.h"
#include "support/Printing.h"

#include <QTest>
#include <gtest/gtest.h>

#include <random>

using namespace corvelle;

namespace {

FlatText paragraphs(int count, int words = 30)
{
    FlatTextBuilder builder;
    for (int i = 0; i < count; ++i) {
        builder.add(QString("paragraph %1").arg(i) + QString(" word").repeated(words));
        builder.closeBlock({});
    }
    return builder.take();
}

} // namespace

TEST(HeightIndex, agreesWithAddingUp)
{
    std::mt19937 random(7);
    for (const int count : {1, 2, 3, 64, 100, 1'000}) {
        std::vector<double> heights(static_cast<size_t>(count));
        for (double& height : heights)
            height = static_cast<double>(random() % 50);
        HeightIndex index;
        index.assign(heights);
        for (int turn = 0; turn < 200; ++turn) {
            const auto changed = random() % heights.size();
            heights[changed] = static_cast<double>(random() % 50);
            index.setHeight(static_cast<int>(changed), heights[changed]);
            const auto until = random() % (heights.size() + 1);
            double sum = 0;
            for (size_t i = 0; i < until; ++i)
                sum += heights[i];
            ASSERT_DOUBLE_EQ(index.top(static_cast<int>(until)), sum);
            const double y = static_cast<double>(random() % (static_cast<unsigned>(index.total()) + 1));
            const int at = index.at(y);
            ASSERT_LE(index.top(at), y);
            if (at + 1 < count) {
                ASSERT_GT(index.top(at + 1), y);
            }
        }
    }
}

TEST(PageLayout, longBlocksAreCutBehindABlankAndNeverInACharacter)
{
    const ItemLooks items;
    PagePictures pictures;
    PageLayout layout(items, pictures);
    const QString emoji = QString::fromUtf8("😀").repeated(5'000);
    FlatTextBuilder builder;
    builder.add(QString("seven w").repeated(2'000));
    builder.closeBlock({});
    builder.add(emoji);
    builder.closeBlock({});
    const FlatText text = builder.take();
    layout.setPage(text, PageStyle());
    ASSERT_GT(layout.count(), 6);
    Units reached = 0;
    for (int piece = 0; piece < layout.count(); ++piece) {
        const auto& extent = layout.extent(piece);
        const Units from = layout.startOf(piece), to = from + extent.to - extent.from;
        ASSERT_EQ(from, reached) << "nothing is left out";
        ASSERT_LE(to - from, PageLayout::mostUnits);
        const bool endsBlock = text.at(to) == '\n';
        if (extent.block == 0 && !endsBlock) {
            ASSERT_EQ(text.at(to - 1), ' ');
        }
        ASSERT_FALSE(text.at(to).isLowSurrogate());
        for (const Units place : {from, (from + to) / 2, to - 1})
            ASSERT_EQ(layout.pieceOf(extent.block, place - text.block(extent.block).start), piece);
        reached = to + (endsBlock ? 1 : 0);
    }
    EXPECT_EQ(reached, text.length());
}

TEST(PageLayout, aPlaceAndItsRectangleAgree)
{
    const ItemLooks items = [](const QString&) { return ItemLook{}; };
    PagePictures pictures;
    PageLayout layout(items, pictures);
    const FlatText text = textFromJSON(R"({"type":"doc","content":[{"type":"paragraph","content":[
        {"type":"text","text":"Before "},{"type":"mention","attrs":{"id":"a","label":"A label"}},
        {"type":"text","text":" between words that go on for a while until the line has to break at its end, "},
        {"type":"mention","attrs":{"id":"b","label":"another"}},{"type":"text","text":" after"}]}]})");
    for (const auto scheme : {Scheme::Light, Scheme::Dark}) {
        layout.setPage(text, PageStyle(scheme));
        layout.setWidth(400);
        const LaidPiece& piece = layout.laid(0);
        for (Units place = 0; place < text.block(0).length(); ++place) {
            const QRectF rect = piece.rectOf({-1, {place, place + 1}});
            if (text.at(place) == ' ')
                continue; // it may hang over the end of its line
            ASSERT_EQ(piece.placeAt(QPointF(rect.left() + 0.3, rect.center().y())), place) << place;
        }
    }
}

TEST(PageLayout, aLongTableIsCutBetweenRowsThatNoCellJoins)
{
    QByteArray rows;
    const QByteArray words(200, 'x');
    for (int i = 0; i < 300; ++i)
        rows += QByteArray(i ? "," : "") + R"({"type":"tableRow","content":[{"type":"tableCell","attrs":{"colspan":1,"rowspan":)" +
                (i % 40 == 23 ? "9" : "1") + R"(},"content":[{"type":"paragraph","content":[{"type":"text","text":")" +
                words + R"("}]}]},{"type":"tableCell","content":[{"type":"paragraph"}]}]})";
    const ItemLooks items;
    PagePictures pictures;
    PageLayout layout(items, pictures);
    layout.setPage(textFromJSON(R"({"type":"doc","content":[{"type":"table","content":[)" + rows + "]}]}"), PageStyle());
    int next = 0, pieces = 0;
    for (int piece = 0; piece < layout.count() && layout.extent(piece).block == 0; ++piece, ++pieces) {
        ASSERT_EQ(layout.extent(piece).firstRow, next);
        next += layout.extent(piece).rowCount;
        const int inPeriod = next % 40;
        ASSERT_FALSE(inPeriod > 23 && inPeriod < 32) << "row " << next << " is joined to the one above";
        ASSERT_GT(layout.laid(piece).height(), 0);
    }
    EXPECT_EQ(next, 300);
    EXPECT_GT(pieces, 5);
}

// Estimates turn out wrong all the time; what is read must not move by that.
TEST(PageView, whatIsInSightStaysWhereItIs)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    QTest::qWait(1);
    // Very uneven: estimates are far off.
    FlatTextBuilder builder;
    std::mt19937 random(3);
    for (int i = 0; i < 3'000; ++i) {
        builder.add(random() % 3 ? QString("i").repeated(static_cast<int>(random() % 1'500))
                                 : QString("W W").repeated(static_cast<int>(random() % 400)));
        BlockStyle style;
        style.kind = random() % 5 ? Block::Paragraph : Block::H1;
        style.depth = static_cast<int>(random() % 4);
        builder.closeBlock(std::make_shared<BlockStyle>(style));
    }
    view.open({builder.take(), {}, "Title", {}});
    view.scrollTo(view.scrollRange() / 2);
    for (int turn = 0; turn < 300; ++turn) {
        const Units marked = view.placeAt(QPointF(300, 300));
        const double before = view.rectOf(marked).top();
        const double step = static_cast<double>(random() % 400) - 200;
        view.scrollBy(step);
        ASSERT_NEAR(view.rectOf(marked).top(), before - step, 0.01) << "turn " << turn;
    }
    view.scrollTo(view.scrollRange());
    EXPECT_NEAR(view.scrollPlace(), view.scrollRange(), 1) << "the end is reached at once";
    view.scrollTo(0);
    EXPECT_EQ(view.scrollPlace(), 0);
}

TEST(PageView, onlyWhatIsInSightIsLaidOut)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    QElapsedTimer timer;
    const FlatText small = paragraphs(100), large = paragraphs(50'000);
    const auto cost = [&](const FlatText& text) {
        double least = 1e9;
        for (int i = 0; i < 3; ++i) {
            timer.start();
            view.open({text, {}, "Title", {}});
            (void)view.grab();
            least = std::min(least, static_cast<double>(timer.nsecsElapsed()) / 1e6);
        }
        return least;
    };
    const double few = cost(small), many = cost(large);
    EXPECT_LT(many, few + 150) << "50,000 blocks need no more layout than 100";
}

TEST(PageView, selectsByCharacterWordAndBlock)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    FlatTextBuilder builder;
    builder.add(u"First block, with words.");
    builder.closeBlock({});
    builder.add(u"Second block.");
    builder.closeBlock({});
    view.open({builder.take(), {}, {}, {}});
    const QPoint word = view.rectOf(6).center().toPoint(); // in "block"
    QTest::mouseDClick(&view, Qt::LeftButton, {}, word);
    EXPECT_EQ(view.selection(), (std::pair<Units, Units>(6, 11)));
    QTest::mousePress(&view, Qt::LeftButton, {}, word);
    EXPECT_EQ(view.selection(), (std::pair<Units, Units>(0, 24))) << "the third press takes the block";
    QTest::mouseRelease(&view, Qt::LeftButton, {}, word);
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selection().second, view.page().text.length());
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(view.hasSelection());
}
