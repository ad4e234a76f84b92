// Tables in pages: what is selected, copied and found in their cells, how wide they are, and what
// stands in them.
#include "interface/page/CaretMoves.h"
#include "interface/page/PageAccessible.h"
#include "interface/page/PageCopy.h"
#include "interface/page/PageView.h"
#include "interface/page/SpokenPage.h"
#include "pages/PageDocument.h"
#include "support/Printing.h"

#include <QAccessible>
#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>
#include <gtest/gtest.h>

#include <random>

using namespace corvelle;

namespace {

QByteArray words(const QByteArray& text)
{
    return R"({"type":"paragraph","content":[{"type":"text","text":")" + text + R"("}]})";
}
QByteArray cell(const QByteArray& blocks, const QByteArray& attributes = {})
{
    return R"({"type":"tableCell","attrs":{)" + attributes + R"(},"content":[)" + blocks + "]}";
}
QByteArray row(const QByteArrayList& cells)
{
    return R"({"type":"tableRow","content":[)" + cells.join(',') + "]}";
}
QByteArray table(const QByteArrayList& rows)
{
    return R"({"type":"table","content":[)" + rows.join(',') + "]}";
}
FlatText page(const QByteArrayList& blocks)
{
    return textFromJSON(R"({"type":"doc","content":[)" + blocks.join(',') + "]}");
}

QByteArray pngOf(QSize size, const QColor& color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}
QByteArray picture(QSize size, const QColor& color)
{
    return R"({"type":"image","attrs":{"src":"data:image/png;base64,)" +
           pngOf(size, color).toBase64() + R"("}})";
}

// "before", then at 7 a table of three rows, then "behind". The second cell of the first row holds
// two paragraphs, the first of the second row is two rows high, and the last holds a table.
FlatText sample()
{
    return page({words("before"),
        table({row({cell(words("alpha one")), cell(words("beta") + ',' + words("gamma"))}),
            row({cell(words("tall"), R"("rowspan":2)"), cell(words("delta"))}),
            row({cell(table({row({cell(words("inner")), cell(words("deep words"))})}))})}),
        words("behind")});
}
constexpr Units tableAtPlace = 7;

PagePlace inCell(int number, Units at)
{
    return {{{tableAtPlace, number}}, at};
}
PagePlace inInner(int number, Units at)
{
    return {{{tableAtPlace, 4}, {0, number}}, at};
}
PagePlace outside(Units at)
{
    return {{}, at};
}

class Tables : public testing::Test
{
protected:
    Tables()
    {
        view.resize(900, 600);
        view.show();
    }
    void open(const FlatText& text) { view.open({text, {}, {}, {}}); }

    QPoint pointIn(const PagePlace& place)
    {
        const QRectF rect = view.rectOf(place);
        return QPoint(static_cast<int>(rect.left() + 1), static_cast<int>(rect.center().y()));
    }
    void drag(const PagePlace& from, const PagePlace& to)
    {
        // Away from the last press, which it would else make a double one.
        QTest::mousePress(&view, Qt::LeftButton, {}, pointIn(from));
        moveTo(pointIn(to));
        QTest::mouseRelease(&view, Qt::LeftButton, {}, pointIn(to));
    }
    void moveTo(QPoint at)
    {
        QMouseEvent move(
            QEvent::MouseMove, at, view.mapToGlobal(at), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&view, &move);
    }
    bool holds(const QRectF& place, const QColor& color)
    {
        const QImage image = view.grab(place.toAlignedRect()).toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y).rgb() == color.rgb())
                    return true;
        return false;
    }
    QString copied(const char* type = "text/plain")
    {
        QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
        return QString::fromUtf8(QGuiApplication::clipboard()->mimeData()->data(type));
    }

    const bool isAccessible = (installPageAccessibility(), true); // before the view
    PageView view{{}, {}, nullptr};
};

} // namespace

// ---- what is selected ----

TEST(PagePlace, placesAreInTheOrderOfThePage)
{
    const PagePlace inOrder[] = {outside(0), outside(tableAtPlace), inCell(0, 0), inCell(0, 5),
        inCell(1, 0), inCell(4, 0), inInner(0, 0), inInner(1, 2), inCell(4, 1),
        outside(tableAtPlace + 1)};
    for (const PagePlace& a : inOrder)
        for (const PagePlace& b : inOrder)
            EXPECT_EQ(a < b, &a < &b) << (&a - inOrder) << " and " << (&b - inOrder);
}

TEST(PagePlace, twoPlacesSelectWordsCellsOrWholeTables)
{
    const FlatText text = sample();
    struct Case
    {
        const char* what;
        PagePlace anchor, head;
        Selected expected;
    };
    const CellPath inFirst{{tableAtPlace, 0}}, inLast{{tableAtPlace, 4}};
    const TextRange whole{{}, tableAtPlace, tableAtPlace + 1};
    const Case cases[] = {
        {"words of the page", outside(2), outside(4), {{{}, 2, 4}, {}}},
        {"backwards", outside(4), outside(2), {{{}, 2, 4}, {}}},
        {"words of a cell", inCell(0, 2), inCell(0, 5), {{inFirst, 2, 5}, {}}},
        {"two cells of a row", inCell(1, 3), inCell(0, 2), {whole, CellRect{0, 0, 1, 2}}},
        {"a merged cell comes whole", inCell(0, 0), inCell(3, 0), {whole, CellRect{0, 0, 3, 2}}},
        {"a cell and one in a table in another", inCell(3, 0), inInner(1, 0),
            {whole, CellRect{1, 1, 3, 2}}},
        {"cells of the inner table", inInner(0, 1), inInner(1, 1),
            {{inLast, 0, 1}, CellRect{0, 0, 1, 2}}},
        {"out of the table", inCell(2, 1), outside(11), {{{}, tableAtPlace, 11}, {}}},
        {"into the table", outside(2), inInner(0, 3), {{{}, 2, tableAtPlace + 1}, {}}},
        {"where no table is any more", {{{2, 0}}, 1}, {{{2, 5}}, 1}, {{{}, 2, 3}, {}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Selected selected = selectedBetween(text, c.anchor, c.head);
        EXPECT_EQ(selected.range, c.expected.range);
        EXPECT_EQ(selected.rect, c.expected.rect);
    }
    EXPECT_EQ(placeWithin(text, {{{tableAtPlace, 4}, {0, 7}}, 3}), inCell(4, 0))
        << "as far as the way still leads";
    EXPECT_EQ(placeWithin(text, inCell(0, 90)).at, 10);
}

TEST_F(Tables, wordsInACellAreSelectedByDragDoubleAndTriplePress)
{
    open(sample());
    drag(inCell(0, 1), inCell(0, 5));
    EXPECT_EQ(view.selected().range, (TextRange{{{tableAtPlace, 0}}, 1, 5}));
    EXPECT_EQ(copied(), "lpha");
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ShiftModifier, pointIn(inCell(0, 8)));
    EXPECT_EQ(copied(), "lpha on") << "a press with Shift goes on";
    const QPoint word = pointIn(inCell(1, 6));
    QTest::mouseDClick(&view, Qt::LeftButton, {}, word);
    EXPECT_EQ(copied(), "gamma");
    QTest::mouseDClick(&view, Qt::LeftButton, {}, pointIn(inInner(1, 2)));
    EXPECT_EQ(copied(), "deep") << "in a table in a table";
    QTest::mousePress(&view, Qt::LeftButton, {}, pointIn(inInner(1, 2)));
    EXPECT_EQ(copied(), "deep words") << "the third press takes the paragraph";
    QTest::mouseRelease(&view, Qt::LeftButton, {}, pointIn(inInner(1, 2)));
    QTest::mouseClick(&view, Qt::LeftButton, {}, pointIn(inCell(3, 2)));
    EXPECT_FALSE(view.hasSelection());
}

TEST_F(Tables, aDragBeyondACellTakesCellsAndBeyondTheTableAllOfIt)
{
    open(sample());
    drag(inCell(0, 2), inCell(1, 2));
    EXPECT_EQ(view.selected().rect, (CellRect{0, 0, 1, 2}));
    EXPECT_EQ(copied(), "alpha one\t\"beta\ngamma\"");
    EXPECT_TRUE(copied("text/html").contains("<table")) << copied("text/html").toStdString();
    EXPECT_TRUE(copied("text/markdown").startsWith("| alpha one | beta<br>gamma |"))
        << copied("text/markdown").toStdString();
    drag(inCell(2, 1), inCell(3, 1));
    EXPECT_EQ(copied(), "tall\tdelta\n\t\"inner\ndeep words\"")
        << "what a merged cell covers is empty";
    EXPECT_TRUE(copied("text/html").contains("rowspan=\"2\""));
    drag(inCell(3, 1), outside(12));
    EXPECT_EQ(view.selected(), (Selected{{{}, tableAtPlace, 12}, {}}));
    drag(outside(3), inCell(0, 2));
    EXPECT_EQ(view.selected(), (Selected{{{}, 3, tableAtPlace + 1}, {}}));
    EXPECT_TRUE(copied().startsWith("ore\nalpha one\t\"beta\ngamma\"\ntall\tdelta\n"))
        << "rows of a table that is copied whole: " << copied().toStdString();
}

TEST_F(Tables, aSelectionInACellOutlivesItsPageOnlyAsFarAsItCan)
{
    open(sample());
    view.select(inInner(0, 1), inInner(0, 4));
    view.refresh({page({words("before"), words("no table")}), {}, {}, {}});
    EXPECT_FALSE(view.hasSelection());
    (void)view.grab();
    EXPECT_EQ(view.head(), outside(tableAtPlace));
}

// ---- by the keyboard ----

TEST(CaretMoves, goThroughWordsCellsAndTables)
{
    const FlatText text = sample();
    using Step = CaretStep;
    struct Case
    {
        const char* what;
        Step step;
        bool forward;
        PagePlace anchor, head, expected;
    };
    const Case cases[] = {
        {"a character", Step::Character, true, inCell(0, 0), inCell(0, 1), inCell(0, 2)},
        {"into the next block", Step::Character, true, inCell(1, 0), inCell(1, 4), inCell(1, 5)},
        {"and back", Step::Character, false, inCell(1, 0), inCell(1, 5), inCell(1, 4)},
        {"a word", Step::Word, true, inCell(0, 0), inCell(0, 0), inCell(0, 6)},
        {"its beginning", Step::Word, false, inCell(0, 9), inCell(0, 9), inCell(0, 6)},
        {"a block", Step::Block, true, inCell(1, 0), inCell(1, 2), inCell(1, 4)},
        {"the next block", Step::Block, true, inCell(1, 0), inCell(1, 4), inCell(1, 10)},
        {"beyond a cell", Step::Character, true, inCell(0, 0), inCell(0, 9), inCell(1, 0)},
        {"from cell to cell", Step::Character, false, inCell(0, 0), inCell(1, 0), inCell(0, 0)},
        {"down the cells, past a tall one", Step::Block, true, inCell(1, 0), inCell(2, 0),
            inCell(2, 0)},
        {"down a column", Step::Block, true, inCell(0, 0), inCell(3, 0), inCell(4, 0)},
        {"no cell there", Step::Character, true, inCell(0, 0), inCell(1, 0), inCell(1, 0)},
        {"past a table", Step::Character, true, outside(6), outside(7), outside(8)},
        {"out of a table that is selected", Step::Character, false, outside(2), inCell(0, 1),
            outside(7)},
        {"and on behind it", Step::Character, true, outside(2), inCell(0, 1), outside(9)},
        {"to the end", Step::Page, true, inCell(0, 1), inCell(0, 1), outside(text.length() - 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const PagePlace moved = movedBy(c.step, c.forward, text, c.anchor, c.head);
        EXPECT_EQ(moved.cells, c.expected.cells);
        EXPECT_EQ(moved.at, c.expected.at);
    }
}

TEST_F(Tables, shiftAndArrowsExtendTheSelection)
{
    open(page({words("one two three"), words("four five six"), words("seven")}));
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_FALSE(view.hasSelection()) << "there is nothing to extend yet";
    view.select(4, 7);
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(copied(), "two ");
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(copied(), "two three");
    QTest::keyClick(&view, Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(copied(), "one ") << "the anchor stays";
    QTest::keyClick(&view, Qt::Key_End, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(copied(), "two three\nfour five six");
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(copied(), "two three\nfour five six\nseven");
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.head().at, 27) << "it keeps to its column, over a shorter line";
    QTest::keyClick(&view, Qt::Key_Home, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(copied(), "one ");
}

TEST_F(Tables, shiftAndArrowsGoThroughATable)
{
    open(sample());
    view.select(outside(2), outside(4));
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selected(), (Selected{{{}, 2, tableAtPlace + 1}, {}})) << "whole at once";
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selected().range.from, 2);
    EXPECT_GT(view.selected().range.to, tableAtPlace + 2) << "the words behind";
    view.select(inCell(1, 2), inCell(1, 3));
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_TRUE(copied().startsWith("ta\nga")) << "the second line of the cell";
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selected().rect, (CellRect{0, 1, 2, 2})) << "then the cell below";
    QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(view.selected().rect, (CellRect{0, 0, 3, 2}));
    QTest::keyClick(&view, Qt::Key_Home, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(view.selected().range.from, 0);
}

// What is selected by keys stays in sight, whatever stands between.
TEST_F(Tables, theMovingEndComesIntoSight)
{
    QByteArrayList rows;
    for (int i = 0; i < 300; ++i)
        rows.append(row({cell(words("row " + QByteArray::number(i))), cell(words("b"))}));
    open(page({words("before"), table(rows), words("behind")}));
    view.select(inCell(0, 0), inCell(0, 3));
    for (int i = 0; i < 100; ++i)
        QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selected().rect, (CellRect{0, 0, 101, 1}));
    const QRectF end = view.rectOf(view.head());
    EXPECT_TRUE(end.top() > 0 && end.bottom() < view.height()) << end.top();
    for (int i = 0; i < 20; ++i)
        QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.selected().rect, (CellRect{0, 0, 81, 1}));
    EXPECT_GT(view.rectOf(view.head()).top(), 0);
}

// ---- finding, showing, speaking ----

TEST_F(Tables, findingLooksIntoTablesInTables)
{
    QByteArray nested = words("the needle");
    for (int i = 0; i < 12; ++i)
        nested = table({row({cell(nested)})});
    QByteArrayList filling;
    for (int i = 0; i < 80; ++i)
        filling.append(words("hay"));
    QByteArrayList blocks{words("a needle")};
    blocks += filling;
    blocks.append(table({row({cell(words("hay")),
        cell(table({row({cell(words("Needle")), cell(words("hay needle"))})}))})}));
    blocks += filling;
    blocks.append(nested);
    open(page(blocks));
    view.find("needle");
    ASSERT_EQ(view.foundCount(), 4) << "the deepest of them in words";
    for (int i = 1; i < 4; ++i) {
        view.goToFound(1);
        EXPECT_EQ(view.currentFound(), i);
        const auto ranges = findInPage(view.page().text, "needle");
        const TextRange& range = ranges[static_cast<size_t>(i)];
        const QRectF shown = view.rectOf(PagePlace{range.cells, range.from});
        EXPECT_TRUE(shown.top() >= 0 && shown.bottom() <= view.height()) << i;
        EXPECT_TRUE(holds(shown, PageStyle().colors().mark)) << "it is marked there";
    }
}

TEST_F(Tables, theKeyboardSelectsFromWhatWasFound)
{
    open(sample());
    view.find("deep");
    view.endFind();
    EXPECT_EQ(view.foundCount(), 0);
    EXPECT_FALSE(view.hasSelection()) << "another Escape closes the page";
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(copied().trimmed(), "deep");
    view.find("gamma");
    view.endFind();
    EXPECT_EQ(view.selectedWords().trimmed(), u"deep") << "what was selected meanwhile stays so";
}

TEST_F(Tables, aSelectionInCellsIsReadByScreenReaders)
{
    open(sample());
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view);
    ASSERT_TRUE(accessible && accessible->textInterface());
    QAccessibleTextInterface& text = *accessible->textInterface();
    const auto selected = [&] {
        QStringList all;
        for (int i = 0; i < text.selectionCount(); ++i) {
            int from = 0, to = 0;
            text.selection(i, &from, &to);
            all.append(text.text(from, to));
        }
        return all;
    };
    view.select(inCell(0, 6), inCell(0, 9));
    EXPECT_EQ(selected(), QStringList{"one"});
    view.select(inInner(1, 0), inInner(1, 4));
    EXPECT_EQ(selected(), QStringList{"deep"});
    view.select(inCell(1, 0), inCell(3, 0));
    EXPECT_EQ(selected(), (QStringList{"beta gamma", "delta"})) << "a stretch for each row";
    view.select(0, view.page().text.length());
    EXPECT_EQ(selected().size(), 1);
    // The other way: a reader asks for words that stand in a cell.
    const QString all = text.text(0, text.characterCount());
    const auto start = static_cast<int>(all.indexOf("deep"));
    ASSERT_GT(start, 0) << all.toStdString();
    text.setSelection(0, start, start + 4);
    EXPECT_EQ(view.selected().range, (TextRange{{{tableAtPlace, 4}, {0, 1}}, 0, 4}));
    EXPECT_TRUE(
        QRectF(text.characterRect(start))
            .intersects(QRectF(QPointF(view.mapToGlobal(pointIn(inInner(1, 0)))), QSizeF(9, 9))));
}

// ---- widths ----

class WideTables : public Tables
{
protected:
    WideTables()
    {
        QByteArrayList cells, rows;
        for (int i = 0; i < 20; ++i)
            cells.append(cell(words("some words in column" + QByteArray::number(i))));
        for (int i = 0; i < 400; ++i)
            rows.append(row(cells));
        open(page({words("before"), table(rows), words("behind")}));
        (void)view.grab();
    }
    void wheel(QPoint at, QPoint turned, Qt::KeyboardModifiers mods = {})
    {
        QWheelEvent event(
            at, view.mapToGlobal(at), {}, turned, Qt::NoButton, mods, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view, &event);
    }
    double leftOf(int number) { return view.rectOf(inCell(number, 0)).left(); }
};

TEST_F(WideTables, keepColumnsThatCanBeReadAndScrollSideways)
{
    EXPECT_GT(leftOf(1) - leftOf(0), 90);
    const double before = leftOf(0), page = view.scrollPlace();
    const QPoint in(400, 300), above(400, 20);
    wheel(in, {0, -120}, Qt::ShiftModifier);
    EXPECT_LT(leftOf(0), before - 20);
    EXPECT_EQ(view.scrollPlace(), page);
    EXPECT_EQ(leftOf(20), leftOf(0)) << "all rows at once";
    EXPECT_EQ(leftOf(20 * 300), leftOf(0)) << "those of other parts too";
    wheel(in, {100'000, 0});
    EXPECT_EQ(leftOf(0), before) << "no farther than its edge";
    wheel(in, {-1'000'000, 0});
    const double right = leftOf(19) + 90;
    EXPECT_LT(right, view.width()) << "the last column is in sight";
    EXPECT_GT(right, view.width() / 2) << "and not beyond its end";
    wheel(in, {-10, -120});
    EXPECT_GT(view.scrollPlace(), page) << "nearly straight down is down";
    view.scrollTo(0);
    const double there = leftOf(0);
    wheel(above, {0, -120}, Qt::ShiftModifier);
    EXPECT_EQ(leftOf(0), there) << "the pointer isn't on the table";
    view.scrollTo(0);
    QTest::keyClick(&view, Qt::Key_Left);
    EXPECT_GT(leftOf(0), there);
}

TEST_F(WideTables, showWhatIsFoundAndWhatAPressMeans)
{
    view.find("column17");
    const QRectF found = view.rectOf(inCell(17, 0));
    EXPECT_TRUE(found.left() > 40 && found.left() < view.width() - 60) << found.left();
    EXPECT_EQ(view.placeAt(found.center()).cells, inCell(17, 0).cells);
    view.find("");
    view.open({view.page().text, {}, {}, {}});
    EXPECT_GT(leftOf(0), 0) << "another page begins at its left";
}

TEST_F(WideTables, theThumbIsDraggedAndSelectsNothing)
{
    const double before = leftOf(0);
    wheel({400, 300}, {0, -120}, Qt::ShiftModifier);
    const QPoint thumb(200, view.height() - 5);
    QTest::mouseMove(&view, thumb);
    QTest::mousePress(&view, Qt::LeftButton, {}, thumb);
    moveTo(thumb + QPoint(300, 0));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, thumb + QPoint(300, 0));
    EXPECT_LT(leftOf(0), before - 300);
    EXPECT_FALSE(view.hasSelection());
}

// The page may scroll below the pointer, and bring another table to where the press was.
TEST_F(WideTables, areScrolledByADragOnlyWhileItIsInThem)
{
    QByteArrayList cells;
    for (int i = 0; i < 20; ++i)
        cells.append(cell(words("some words in column" + QByteArray::number(i))));
    const QByteArray wide = table(QByteArrayList(3, row(cells)));
    QByteArrayList blocks;
    for (int i = 0; i < 12; ++i)
        blocks += {wide, words("between")};
    open(page(blocks));
    // A table's character, "between", and the newlines behind them.
    const auto leftIn = [this](int number) {
        const Units at = number * 10;
        return view.rectOf({{{at, 1}}, 0}).left();
    };
    const double before = leftIn(0);
    const QPoint start = pointIn({{{0, 1}}, 0}), beside(view.width() - 5, start.y());
    QTest::mousePress(&view, Qt::LeftButton, {}, start);
    moveTo(beside);
    EXPECT_TRUE(QTest::qWaitFor([&] { return leftIn(0) < before - 100; }));
    moveTo({beside.x(), view.height() + 200}); // out of the table, and down the page
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.scrollPlace() > 600; }));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, beside);
    for (int i = 1; i < 12; ++i)
        EXPECT_EQ(leftIn(i), before) << i;
}

// A long block that is cut into parts: the part in sight stays there.
TEST_F(WideTables, aPartOfATableStaysInSightWhenTheWindowChanges)
{
    view.scrollTo(view.scrollRange() / 2);
    const PagePlace middle = view.placeAt(QPointF(400, 5));
    ASSERT_GT(middle.cells.front().cell, 20 * 100);
    view.resize(880, 600);
    EXPECT_LT(std::abs(view.rectOf(middle).top()), 1'500);
    view.refresh({view.page().text, {}, "Other", {}});
    EXPECT_LT(std::abs(view.rectOf(middle).top()), 1'500);
}

TEST(PageTables, aFrameOfALongTableCostsWhatIsInSight)
{
    PageView view({}, {}, nullptr);
    view.resize(900, 600);
    view.show();
    const auto cost = [&](int count) {
        QByteArrayList rows;
        for (int i = 0; i < count; ++i)
            rows.append(row({cell(words("needle one")), cell(words("two")), cell(words("three"))}));
        view.open({page({table(rows)}), {}, {}, {}});
        view.find("needle");
        view.select({{{0, 0}}, 0}, {{{0, 3 * count - 1}}, 0});
        (void)view.grab();
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 20; ++i) {
            view.scrollBy(7);
            (void)view.grab();
        }
        return static_cast<double>(timer.nsecsElapsed()) / 20e6;
    };
    const double few = cost(100), many = cost(9'000);
    EXPECT_LT(many, 2 * few + 8) << "milliseconds; " << few << " for few rows";
}

// A page may lie in the one cell of a table as a whole.
TEST_F(Tables, aLongTableInATableIsCutOff)
{
    QByteArrayList rows;
    for (int i = 0; i < 60'000; ++i)
        rows.append(row({cell(words("x"))}));
    QElapsedTimer timer;
    timer.start();
    const FlatText text = page({table({row({cell(table(rows) + ',' + table(rows))})})});
    open(text);
    const auto read = timer.restart();
    (void)view.grab();
    const PagePlace last{{{0, 0}, {2, 59'999}}, 0};
    EXPECT_LT(view.rectOf(last).bottom(), 100'000);
    view.select(last, last);
    view.showPlace(last);
    EXPECT_LT(timer.elapsed(), 3 * read + 1'000);
}

// ---- whatever is done ----

namespace {

// Merged and missing cells, tables in tables, pictures and empty blocks.
QByteArray randomTable(std::mt19937& random, int depth)
{
    const auto upTo = [&](unsigned most) { return random() % most; };
    QByteArrayList rows;
    for (unsigned r = 1 + upTo(5); r > 0; --r) {
        QByteArrayList cells;
        for (unsigned c = upTo(depth == 0 ? 9 : 4); c > 0; --c) {
            QByteArrayList blocks;
            for (unsigned b = 1 + upTo(3); b > 0; --b)
                blocks.append(upTo(5) == 0 && depth < 2 ? randomTable(random, depth + 1)
                              : upTo(6) == 0            ? picture({30, 10}, Qt::red)
                                             : words(QByteArray("some words ").repeated(upTo(5))));
            cells.append(cell(blocks.join(','),
                upTo(4) > 0 ? QByteArray()
                            : R"("rowspan":)" + QByteArray::number(1 + upTo(3)) + R"(,"colspan":)" +
                                  QByteArray::number(1 + upTo(3))));
        }
        rows.append(row(cells));
    }
    return table(rows);
}

FlatText randomPage(std::mt19937& random)
{
    QByteArrayList blocks;
    for (int i = 0; i < 6; ++i)
        blocks.append(random() % 2 ? randomTable(random, 0) : words("words between tables"));
    return page(blocks);
}

} // namespace

TEST_F(Tables, theEndsOfTheSelectionAreAlwaysPlacesOfThePage)
{
    std::mt19937 random(11);
    const int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home,
        Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown};
    for (int turn = 0; turn < 30; ++turn) {
        open(randomPage(random));
        for (int step = 0; step < 60; ++step) {
            SCOPED_TRACE(testing::Message() << "page " << turn << ", step " << step);
            const QPoint at(static_cast<int>(random() % 900), static_cast<int>(random() % 600));
            switch (random() % 8) {
            case 0:
                QTest::mousePress(&view, Qt::LeftButton, {}, at);
                break;
            case 1:
                moveTo(at);
                break;
            case 2:
                QTest::mouseDClick(&view, Qt::LeftButton, {}, at);
                break;
            case 3:
                view.scrollBy(static_cast<int>(random() % 600) - 300);
                (void)view.grab();
                break;
            case 4:
                view.find(random() % 2 ? "words" : "");
                view.goToFound(1);
                break;
            case 5:
                if (random() % 8 == 0)
                    view.refresh({randomPage(random), {}, {}, {}});
                break;
            default:
                QTest::keyClick(&view, static_cast<Qt::Key>(keys[random() % std::size(keys)]),
                    random() % 3 ? Qt::ShiftModifier : Qt::ShiftModifier | Qt::ControlModifier);
            }
            const FlatText& text = view.page().text;
            ASSERT_EQ(view.head(), placeWithin(text, view.head()));
            const Selected& selected = view.selected();
            ASSERT_TRUE(textIn(text, selected.range.cells));
            ASSERT_LE(selected.range.from, selected.range.to);
            if (selected.rect) {
                ASSERT_EQ(nodesOf(text, selected).size(), 1u);
                const auto rows = tableRows(nodesOf(text, selected).front());
                ASSERT_EQ(TablePlan::of(rows).columnCount,
                    selected.rect->columnEnd - selected.rect->column)
                    << "what is copied has the shape of what is selected";
            }
            for (const auto& [from, to] : stretchesOf(text, selected))
                ASSERT_FALSE(to < from);
        }
        QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(1, 1));
    }
}

// ---- what stands in cells ----

TEST_F(Tables, picturesInCellsAreDrawnAsWideAsTheirCell)
{
    const QByteArray named = R"({"type":"image","attrs":{"src":"picture:document/0"}})";
    view.pictures().setSource([](const QString& src) {
        return src == "picture:document/0" ? pngOf({30, 30}, Qt::green) : QByteArray();
    });
    open(
        page({table({row({cell(words("a long cell of words ") + ',' + picture({900, 300}, Qt::red)),
            cell(picture({40, 20}, Qt::blue) + ',' + table({row({cell(named)})}))})})}));
    (void)view.grab();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.pictures().isIdle(); }));
    const QImage image = view.grab().toImage();
    const PagePlace large{{{0, 0}}, 22}, small{{{0, 1}}, 0};
    const QRectF wide = view.rectOf(large), narrow = view.rectOf(small);
    const auto colorAt = [&](QPointF at) { return image.pixelColor(at.toPoint()); };
    EXPECT_EQ(colorAt(wide.center()), QColor(Qt::red));
    EXPECT_EQ(colorAt(narrow.center()), QColor(Qt::blue));
    EXPECT_EQ(colorAt(view.rectOf({{{0, 1}, {2, 0}}, 0}).center()), QColor(Qt::green))
        << "of a document, in a table in a table";
    EXPECT_NEAR(wide.width() / wide.height(), 3, 0.05);
    EXPECT_LT(wide.right(), narrow.left()) << "no wider than its cell";
    EXPECT_EQ(narrow.size(), QSizeF(40, 20)) << "and not made larger";
}

// A document's table stays as it was made, with what no page stores, down into its own tables.
TEST_F(Tables, tablesOfDocumentsKeepWhatOnlyDocumentsSay)
{
    using Type = PageNode::Type;
    const auto tableOf = [](PageNodes blocks) {
        PageNode made = PageNode::of(Type::Table);
        made.content = {PageNode::of(Type::TableRow)};
        made.content[0].content = {PageNode::of(Type::TableCell)};
        made.content[0].content[0].content = std::move(blocks);
        return made;
    };
    PageNode raised = PageNode::of(Type::Paragraph);
    raised.content = {PageNode::ofText("raised", Mark::Superscript)};
    const PageNode named = nodeFromJson(canonicalJson(pictureNode({"picture:document/0", {}, {}})));
    const PageNode made = tableOf({tableOf({raised, named})});
    view.pictures().setSource([](const QString&) { return QByteArray("bytes"); });
    open(textFromNodes({made}, true, MadeTables::Kept));
    const auto inner = textIn(view.page().text, {{0, 0}, {0, 0}});
    ASSERT_TRUE(inner);
    EXPECT_EQ(inner->text(0, 6), "raised");
    ASSERT_TRUE(inner->styleAt(0));
    EXPECT_EQ(inner->styleAt(0)->marks, Mark::Superscript);
    // The stretch that is the inner table.
    view.select({{{0, 0}}, 0}, {{{0, 0}}, 1});
    EXPECT_TRUE(copied("text/html").contains("base64,Ynl0ZXM="))
        << "what leaves the page has the bytes of its pictures";
}

TEST_F(Tables, cellsKeepTheirBlocks)
{
    const QByteArray list = R"({"type":"bulletList","content":[{"type":"listItem","content":[)" +
                            words("item") + "]}]}";
    open(page({table({row({cell(words("plain") + ',' + list + R"(,{"type":"horizontalRule"},)" +
                                words("last")),
        cell(
            R"({"type":"heading","attrs":{"level":1},"content":[{"type":"text","text":"plain"}]})")})})}));
    const auto rect = [&](int number, Units at) { return view.rectOf({{{0, number}}, at}); };
    EXPECT_GT(rect(0, 6).left(), rect(0, 0).left() + 15) << "items stand in";
    EXPECT_GT(rect(0, 12).top() - rect(0, 6).top(), 25) << "the rule has its room";
    EXPECT_GT(rect(1, 0).width(), rect(0, 0).width()) << "headings are strong";
}
