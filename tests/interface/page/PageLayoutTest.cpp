// A page cut into pieces: heights, places, and what stays still.
#include "interface/page/PageLayout.h"
#include "interface/page/PageAccessible.h"
#include "interface/page/PageSheet.h"
#include "interface/widgets/FindBar.h"
#include "pages/PageDocument.h"
#include "support/Printing.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QSignalSpy>
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

TEST(PageZoom, makesMarksAndTheRoomInCellsLargerToo)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    view.open({textFromJSON(R"({"type":"doc","content":[
        {"type":"taskList","content":[{"type":"taskItem","attrs":{"checked":true},"content":[
            {"type":"paragraph","content":[{"type":"text","text":"done"}]}]}]},
        {"type":"table","content":[{"type":"tableRow","content":[{"type":"tableCell","content":[
            {"type":"paragraph","content":[{"type":"text","text":"cell"}]}]}]}]}]})"),
        {}, {}, {}});
    const QRgb accent = palette(Scheme::Light).accent.rgb();
    const auto heightOfTick = [&] {
        const QImage image = view.grab().toImage();
        int rows = 0;
        for (int y = 0; y < image.height(); ++y) {
            bool holds = false;
            for (int x = 0; x < image.width() && !holds; ++x)
                holds = image.pixel(x, y) == accent;
            rows += holds;
        }
        return rows;
    };
    const PagePlace cell{{{5, 0}}, 0}, table{{}, 5};
    const auto roomInCell = [&] { return view.rectOf(cell).left() - view.rectOf(table).left(); };
    const int tick = heightOfTick();
    const double room = roomInCell();
    ASSERT_TRUE(tick > 10 && room > 5) << tick << ' ' << room;
    view.setZoom(2);
    EXPECT_NEAR(heightOfTick(), 2 * tick, 2);
    EXPECT_NEAR(roomInCell(), 2 * room, 1);
}

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
            const double y =
                static_cast<double>(random() % (static_cast<unsigned>(index.total()) + 1));
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
            const QRectF rect = piece.rectOf({{}, place, place + 1});
            if (text.at(place) == ' ')
                continue; // it may hang over the end of its line
            ASSERT_EQ(piece.placeAt(QPointF(rect.left() + 0.3, rect.center().y())).at, place);
            ASSERT_NEAR(piece.caretAt({{}, place}).left(), rect.left(), 0.01) << place;
        }
    }
}

TEST(PageLayout, aLongTableIsCutBetweenRowsThatNoCellJoins)
{
    QByteArray rows;
    const QByteArray words(200, 'x');
    for (int i = 0; i < 300; ++i)
        rows +=
            QByteArray(i ? "," : "") +
            R"({"type":"tableRow","content":[{"type":"tableCell","attrs":{"colspan":1,"rowspan":)" +
            (i % 40 == 23 ? "9" : "1") +
            R"(},"content":[{"type":"paragraph","content":[{"type":"text","text":")" + words +
            R"("}]}]},{"type":"tableCell","content":[{"type":"paragraph"}]}]})";
    const ItemLooks items;
    PagePictures pictures;
    PageLayout layout(items, pictures);
    layout.setPage(
        textFromJSON(R"({"type":"doc","content":[{"type":"table","content":[)" + rows + "]}]}"),
        PageStyle());
    int next = 0, pieces = 0;
    for (int piece = 0; piece < layout.count() && layout.extent(piece).block == 0;
         ++piece, ++pieces) {
        ASSERT_EQ(layout.extent(piece).firstRow, next);
        next += layout.extent(piece).rowCount;
        const int inPeriod = next % 40;
        ASSERT_FALSE(inPeriod > 23 && inPeriod < 32)
            << "row " << next << " is joined to the one above";
        ASSERT_GT(layout.laid(piece).height(), 0);
    }
    EXPECT_EQ(next, 300);
    EXPECT_GT(pieces, 5);
}

TEST(PageLayout, aCutAtALineBreakAddsNoLine)
{
    const ItemLooks items;
    PagePictures pictures;
    PageLayout layout(items, pictures);
    FlatTextBuilder builder;
    for (int line = 0; line < 300; ++line)
        builder.add((line ? QString(lineBreak) : QString()) + (line % 9 ? "a line of code" : ""));
    BlockStyle style;
    style.kind = Block::Code;
    builder.closeBlock(std::make_shared<BlockStyle>(style));
    layout.setPage(builder.take(), PageStyle());
    ASSERT_GT(layout.count(), 2);
    double lines = 0;
    for (int piece = 0; piece < layout.count(); ++piece)
        lines += layout.laid(piece).height() / PageStyle().lineHeight(Block::Code);
    EXPECT_NEAR(lines, 300, 3) << "with the room round the block";
}

TEST(PageLayout, hostileTablesAreLaidOutInParts)
{
    const auto row = [](int cells, const QByteArray& attributes, const QByteArray& words) {
        const QByteArray cell =
            R"({"type":"tableCell","attrs":{)" + attributes +
            R"(},"content":[{"type":"paragraph","content":[{"type":"text","text":")" + words +
            R"("}]}]})";
        return R"({"type":"tableRow","content":[)" + (cell + ',').repeated(cells - 1) + cell + "]}";
    };
    const QByteArray plain = row(2, "", "x"), wide = row(1'000, "", "ab cd ef");
    struct Case
    {
        const char* what;
        QByteArray rows;
        int mostRows;
    };
    const Case cases[] = {
        {"one cell joins all rows",
            row(1, R"("rowspan":1000000,"colspan":-5)", "x") + (',' + plain).repeated(3'000), 200},
        {"as many columns as there may be", wide + (',' + wide).repeated(20), 1},
        {"a cell of a million words",
            row(1, "", QByteArray("word ").repeated(1'000'000)) + ',' + plain, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const ItemLooks items;
        PagePictures pictures;
        PageLayout layout(items, pictures);
        layout.setPage(textFromJSON(R"({"type":"doc","content":[{"type":"table","content":[)" +
                                    c.rows + "]}]}"),
            PageStyle());
        for (int piece = 0; piece < layout.count(); ++piece)
            EXPECT_LE(layout.extent(piece).rowCount, c.mostRows);
        EXPECT_LT(layout.laid(0).height(), 40'000);
        for (const int cell : {0, 1, 999})
            EXPECT_LE(layout.laid(0).rectOf({{{0, cell}}, 0, 1}).right(),
                layout.width() + layout.mostShift(0) + 1);
    }
}

TEST(TextBox, aUnitIsWholeWhereverTheDirectionChanges)
{
    const ItemLooks items = [](const QString&) { return ItemLook{}; };
    const QByteArray latin = "latin", hebrew = "\u05EA\u05D5\u05D5 \u05D9\u05EA",
                     arabic = "\u0627\u0644\u0639\u0631";
    for (const QByteArray& around : {latin, hebrew, arabic})
        for (const QByteArray& label : {latin, hebrew, arabic, QByteArray(latin + ' ' + arabic),
                 QByteArray(arabic + ' ' + latin)}) {
            SCOPED_TRACE((around + " round " + label).constData());
            const FlatText text =
                textFromJSON(R"({"type":"doc","content":[{"type":"paragraph","content":[
                {"type":"text","text":")" +
                             around + R"( "},{"type":"mention","attrs":{"id":"a","label":")" +
                             label + R"("}},{"type":"text","text":" )" + around + R"("}]}]})");
            const Units end = text.block(0).length();
            const bool reversed = readsRightToLeft(text.text());
            const TextBox box(shownText(text, 0, end, Block::Paragraph, PageStyle(), items),
                {PageStyle().font(Block::Paragraph), 25, 600, Qt::AlignLeading, reversed, false});
            const Units mention = around == hebrew ? 7 : end / 2;
            const auto rects = box.rects(mention, mention + 1);
            ASSERT_EQ(rects.size(), 1u);
            double others = 0;
            for (const auto& [from, to] : {std::pair<Units, Units>(0, mention), {mention + 1, end}})
                for (const QRectF& rect : box.rects(from, to))
                    others += rect.width();
            EXPECT_NEAR(rects.front().width() + others, box.lineRect(0).width(), 1.5)
                << "nothing of the line is left out or counted twice";
            EXPECT_GT(rects.front().width(), chipHead + chipTail + 20);
        }
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
        const PagePlace marked = view.placeAt(QPointF(300, 300));
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
    EXPECT_EQ(view.selected().range, (TextRange{{}, 6, 11}));
    QTest::mousePress(&view, Qt::LeftButton, {}, word);
    EXPECT_EQ(view.selected().range, (TextRange{{}, 0, 24})) << "the third press takes the block";
    QTest::mouseRelease(&view, Qt::LeftButton, {}, word);
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selected().range.to, view.page().text.length());
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(view.hasSelection());
}

TEST(PageView, aDragEndsWithItsButtonOrItsPage)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    view.open({paragraphs(100), {}, "Title", {}});
    const QPoint low(400, 500), lower(400, 560);
    QTest::mousePress(&view, Qt::LeftButton, {}, low);
    QMouseEvent move(
        QEvent::MouseMove, lower, view.mapToGlobal(lower), Qt::NoButton, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&view, &move);
    ASSERT_TRUE(view.hasSelection());
    view.refresh({paragraphs(1, 1), {}, "Title", {}});
    QCoreApplication::sendEvent(&view, &move);
    EXPECT_LE(view.selected().range.to, view.page().text.length())
        << "what was dragged over is gone";
    view.hide();
    view.show();
    view.select(0, 0);
    QCoreApplication::sendEvent(&view, &move);
    EXPECT_FALSE(view.hasSelection()) << "no release came before it was hidden";
    QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(300, 120));
    QTest::mouseMove(&view, lower); // without a button
    EXPECT_FALSE(view.hasSelection()) << "the release went elsewhere";
}

TEST(PageView, aRefreshStaysWhereItIs)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    view.open({paragraphs(100), {}, "Title", {}});
    view.find("no such words");
    for (const double place : {0.0, 20.0, 700.0}) {
        view.scrollTo(place);
        const double before = view.scrollPlace();
        view.refresh({paragraphs(101), {}, "Title", {}});
        EXPECT_NEAR(view.scrollPlace(), before, 1) << place;
    }
    view.find("later");
    FlatTextBuilder builder;
    builder.add(u"what comes later");
    builder.closeBlock({});
    view.refresh({builder.take(), {}, "Title", {}});
    EXPECT_EQ(view.currentFound(), 0) << "one of one, not none of one";
}

TEST(PageView, findingBeginsInSightEvenInALongBlock)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    const QString words = QString("needle ") + QString("hay ").repeated(10'000);
    FlatTextBuilder builder;
    builder.add(words + words + words);
    builder.closeBlock({});
    view.open({builder.take(), {}, {}, {}});
    view.scrollTo(view.scrollRange() / 2);
    view.find("needle");
    EXPECT_EQ(view.currentFound(), 2);
    EXPECT_EQ(view.foundCount(), 3);
}

TEST(PageView, aQuickPressElsewhereIsNoThirdOne)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    view.open({paragraphs(100), {}, {}, {}});
    QTest::mouseDClick(&view, Qt::LeftButton, {}, view.rectOf(3).center().toPoint());
    ASSERT_TRUE(view.hasSelection());
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.rectOf(60).center().toPoint());
    EXPECT_FALSE(view.hasSelection());
    // Two quick presses beside the thumb scroll twice.
    const QPoint track(view.width() - 5, 550);
    QTest::mouseDClick(&view, Qt::LeftButton, {}, track);
    EXPECT_FALSE(view.hasSelection());
    EXPECT_GT(view.scrollPlace(), 0);
}

TEST(PageSheet, theFieldForFindingComesBackAndEscapeClosesIt)
{
    QWidget window;
    window.resize(1'000, 700);
    PageSheet sheet({}, {}, &window);
    sheet.setGeometry(window.rect());
    window.show();
    sheet.view().open({paragraphs(10), {}, "Title", {}});
    sheet.openFind();
    QTest::qWait(300);
    sheet.closeFind();
    sheet.openFind(); // while it fades out
    QTest::qWait(400);
    EXPECT_TRUE(sheet.findBar().isVisible());
    QSignalSpy closed(&sheet, &PageSheet::closeWanted);
    QWidget* const places[] = {&sheet.view(), sheet.findBar().findChild<QAbstractButton*>()};
    for (QWidget* where : places) {
        sheet.openFind();
        QTest::keyClick(where, Qt::Key_Escape);
        EXPECT_FALSE(sheet.isFinding());
        EXPECT_EQ(closed.count(), 0);
    }
    QTest::keyClick(&sheet.view(), Qt::Key_Escape);
    EXPECT_EQ(closed.count(), 1);
}

TEST(PageSheet, theFieldForFindingHidesNothingOfThePage)
{
    QWidget window;
    PageSheet sheet({}, {}, &window);
    window.show();
    for (const QSize size : {QSize(1'440, 900), QSize(760, 480), QSize(420, 400)}) {
        window.resize(size);
        sheet.setGeometry(window.rect());
        sheet.openFind();
        QTest::qWait(300); // it has risen
        const QRect field = sheet.findBar().geometry();
        EXPECT_TRUE(window.rect().contains(field));
        EXPECT_FALSE(field.intersects(sheet.view().geometry()));
        EXPECT_FALSE(field.intersects(sheet.moreButton()));
        const int sign = size.width() < 760 ? 0 : 40; // a tiling desktop makes it narrow
        EXPECT_GE(field.left(), sheet.view().x() + sign) << "there is room for the sign";
    }
}

TEST(PageAccessible, wordsAndLinesAreThoseOfTheWholePage)
{
    installPageAccessibility();
    PageView view({}, {}, nullptr);
    view.open({paragraphs(300), {}, "Title", {}});
    QAccessibleInterface* page = QAccessible::queryAccessibleInterface(&view);
    ASSERT_TRUE(page && page->textInterface());
    const QAccessibleTextInterface& text = *page->textInterface();
    ASSERT_GT(text.characterCount(), 40'000);
    using Told = std::tuple<QString, int, int>;
    for (const auto type :
        {QAccessible::CharBoundary, QAccessible::WordBoundary, QAccessible::LineBoundary})
        for (const int offset :
            {0, 20'000, 20'100, text.characterCount() - 1, text.characterCount(), -1}) {
            int from = 0, to = 0;
            const Told before(text.textBeforeOffset(offset, type, &from, &to), from, to);
            const Told at(text.textAtOffset(offset, type, &from, &to), from, to);
            const Told after(text.textAfterOffset(offset, type, &from, &to), from, to);
            EXPECT_EQ(before,
                Told(text.QAccessibleTextInterface::textBeforeOffset(offset, type, &from, &to),
                    from, to));
            EXPECT_EQ(
                at, Told(text.QAccessibleTextInterface::textAtOffset(offset, type, &from, &to),
                        from, to));
            EXPECT_EQ(after,
                Told(text.QAccessibleTextInterface::textAfterOffset(offset, type, &from, &to), from,
                    to));
        }
    // 10 MB: what is asked for at one place doesn't read it all.
    view.open({paragraphs(60'000), {}, "Title", {}});
    int from = 0, to = 0;
    (void)text.characterCount();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
        (void)text.textAtOffset(5'000'000, QAccessible::WordBoundary, &from, &to);
    EXPECT_LT(timer.elapsed(), 1'000);
}
