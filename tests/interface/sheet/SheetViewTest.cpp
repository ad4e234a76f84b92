// A sheet in its grid: where cells stand, how they are picked, copied, found and scrolled.
#include "interface/sheet/CellBar.h"
#include "interface/sheet/SheetAccessible.h"
#include "interface/sheet/WorkbookScreen.h"
#include "interface/widgets/FindBar.h"
#include "interface/widgets/ScrollThumb.h"
#include "support/Printing.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

SheetView::Rows sheetOf(const std::vector<QStringList>& rows, bool isCut = false)
{
    SheetRows sheet;
    sheet.isCut = isCut;
    for (const QStringList& texts : rows) {
        auto& cells = sheet.rows.emplace_back();
        for (const QString& text : texts)
            cells.push_back({text, !text.isEmpty() && text[0].isDigit()});
    }
    return std::make_shared<const SheetRows>(std::move(sheet));
}

SheetView::Rows largeSheet(int rows = 1000, int columns = 40)
{
    std::vector<QStringList> all;
    for (int row = 0; row < rows; ++row) {
        QStringList& texts = all.emplace_back();
        for (int column = 0; column < columns; ++column)
            texts.append(u"%1 in row %2"_s.arg(columnName(column)).arg(row + 1));
    }
    return sheetOf(all);
}

class Sheet : public testing::Test
{
protected:
    void show(SheetView::Rows rows)
    {
        view.resize(900, 600);
        view.show();
        view.open(u"Costs"_s, std::move(rows));
    }
    QString picked() const { return placeName(view.pick().picked); }
    QString range() const
    {
        const CellRange range = view.pick().range();
        return placeName(range.from) + u':' + placeName(range.to);
    }
    void press(CellPlace place, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(&view, Qt::LeftButton, modifiers, view.rectOf(place).center());
    }
    QString copied()
    {
        view.copy();
        return QGuiApplication::clipboard()->text();
    }

    SheetView view{nullptr};
};

} // namespace

TEST(SheetLayout, givesColumnsTheWidthOfTheirContents)
{
    const SheetLayout layout(*sheetOf({{u"a"_s, QString(), u"long enough text"_s},
                                 {QString(), QString(), QString(900, u'x')}, {}}),
        [](const QString& text) { return 8.0 * static_cast<double>(text.size()); });
    EXPECT_EQ(layout.columns(), 3);
    EXPECT_EQ(layout.rows(), 3);
    EXPECT_EQ(layout.width(0), SheetLayout::leastWidth);
    EXPECT_EQ(layout.width(1), SheetLayout::emptyWidth);
    EXPECT_EQ(layout.width(2), SheetLayout::mostWidth);
    EXPECT_EQ(layout.width(7), SheetLayout::emptyWidth);
    for (const int column : {0, 1, 2, 3, 30}) {
        EXPECT_EQ(layout.columnAt(layout.left(column)), column);
        EXPECT_EQ(layout.columnAt(layout.left(column + 1) - 1), column);
    }
    EXPECT_EQ(SheetLayout().columnAt(SheetLayout::emptyWidth), 1);
}

TEST(ScrollThumb, leadsToEveryPlace)
{
    ScrollThumb thumb(Qt::Vertical);
    thumb.set(QRect(10, 20, 300, 400), 0, 0);
    EXPECT_TRUE(thumb.rect().isEmpty());
    EXPECT_FALSE(thumb.isOnTrack(QPointF(305, 100)));
    for (const int place : {0, 123, 30'000}) {
        thumb.set(QRect(10, 20, 300, 400), place, 30'000);
        EXPECT_TRUE(thumb.isOnTrack(thumb.rect().center()));
        thumb.grab(thumb.rect().center());
        EXPECT_EQ(thumb.placeFor(thumb.rect().center()), place);
    }
    thumb.grab(thumb.rect().center());
    EXPECT_EQ(thumb.placeFor(QPointF(0, -500)), 0);
    EXPECT_EQ(thumb.placeFor(QPointF(0, 5000)), 30'000);
}

TEST_F(Sheet, picksCellsByThePointer)
{
    show(sheetOf({{u"a"_s, u"b"_s, u"c"_s}, {u"d"_s, u"e"_s, u"f"_s}}));
    EXPECT_EQ(picked(), u"A1"_s);
    press({2, 1});
    EXPECT_EQ(picked(), u"C2"_s);
    press({1, 0}, Qt::ShiftModifier);
    EXPECT_EQ(range(), u"B1:C2"_s);
    press({4, 6}); // an empty one beside the contents
    EXPECT_EQ(range(), u"E7:E7"_s);

    QTest::mousePress(&view, Qt::LeftButton, {}, view.rectOf({0, 0}).center());
    QTest::mouseMove(&view, view.rectOf({1, 1}).center());
    QTest::mouseRelease(&view, Qt::LeftButton, {}, view.rectOf({1, 1}).center());
    EXPECT_EQ(range(), u"A1:B2"_s);

    const QPoint letter(view.rectOf({1, 0}).center().x(), 10);
    QTest::mouseClick(&view, Qt::LeftButton, {}, letter);
    EXPECT_EQ(range(), u"B1:B2"_s);
    EXPECT_EQ(picked(), u"B1"_s);
    QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(10, view.rectOf({0, 1}).center().y()));
    EXPECT_EQ(range(), u"A2:C2"_s);
    QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(range(), u"A1:C2"_s);
}

TEST_F(Sheet, picksCellsByKeys)
{
    show(largeSheet());
    const struct
    {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        QString picked;
    } steps[] = {
        {Qt::Key_Left, {}, u"A1"_s},
        {Qt::Key_Right, {}, u"B1"_s},
        {Qt::Key_Return, {}, u"B2"_s},
        {Qt::Key_End, {}, u"AN2"_s},
        {Qt::Key_Right, {}, u"AN2"_s},
        {Qt::Key_Down, Qt::ControlModifier, u"AN1000"_s},
        {Qt::Key_Home, {}, u"A1000"_s},
        {Qt::Key_Up, Qt::ControlModifier, u"A1"_s},
        {Qt::Key_End, Qt::ControlModifier, u"AN1000"_s},
        {Qt::Key_Home, Qt::ControlModifier, u"A1"_s},
    };
    for (const auto& step : steps) {
        QTest::keyClick(&view, step.key, step.modifiers);
        EXPECT_EQ(picked(), step.picked);
        EXPECT_EQ(view.placeAt(view.rectOf(view.pick().picked).center()), view.pick().picked)
            << "what is picked is in sight";
    }
    QTest::keyClick(&view, Qt::Key_PageDown);
    EXPECT_GT(view.pick().picked.row, 10);
    QTest::keyClick(&view, Qt::Key_PageUp);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(range(), u"A1:A2"_s);
    QSignalSpy closed(&view, &SheetView::closeWanted);
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_EQ(range(), u"A2:A2"_s);
    EXPECT_EQ(closed.count(), 0);
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_EQ(closed.count(), 1);
}

TEST_F(Sheet, copiesWhatOtherSheetsTake)
{
    show(sheetOf({{u"a"_s, u"two\nlines"_s}, {u"say \"x\""_s}, {}, {u"1"_s, u"2"_s}}));
    EXPECT_EQ(copied(), u"a"_s);
    press({1, 0});
    EXPECT_EQ(copied(), u"two\nlines"_s);
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(copied(), u"a\t\"two\nlines\"\n\"say \"\"x\"\"\"\t\n\t\n1\t2"_s);
}

TEST_F(Sheet, scrollsByWheelAndThumbs)
{
    show(largeSheet());
    const auto wheel = [this](QPoint pixels, Qt::KeyboardModifiers modifiers = {}) {
        QWheelEvent event(QPointF(400, 300), QPointF(400, 300), pixels, {}, Qt::NoButton, modifiers,
            Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view, &event);
    };
    wheel({0, -70});
    EXPECT_EQ(view.scrollPlace(), QPoint(0, 70));
    wheel({0, -50}, Qt::ShiftModifier);
    EXPECT_EQ(view.scrollPlace(), QPoint(50, 70));
    wheel({500, 500});
    EXPECT_EQ(view.scrollPlace(), QPoint(0, 0));
    const QPoint track(view.width() - 5, view.height() - 20);
    QTest::mouseClick(&view, Qt::LeftButton, {}, track);
    EXPECT_GT(view.scrollPlace().y(), view.scrollRange().y() * 9 / 10);
    EXPECT_EQ(picked(), u"A1"_s) << "a press on the track picks nothing";
    view.resize(900, 40'000);
    EXPECT_EQ(view.scrollPlace().y(), 0);
}

// What is moved as a picture looks like what is painted anew.
TEST_F(Sheet, looksTheSameHoweverItCameThere)
{
    show(largeSheet());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    for (const QPoint to : {QPoint(0, 60), QPoint(0, 33), QPoint(140, 33), QPoint(140, 400),
             QPoint(150, 400), QPoint(150, 420)}) {
        view.scrollTo(to);
        QTest::qWait(30);
    }
    QTest::qWait(1000); // the thumbs are gone
    const QImage moved =
        view.screen()->grabWindow(view.winId()).toImage().convertToFormat(QImage::Format_RGB32);
    const QImage fresh = view.grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(moved.size(), fresh.size());
    EXPECT_TRUE(moved == fresh);
}

TEST_F(Sheet, marksWhatWasFound)
{
    show(largeSheet());
    const auto inkAt = [this](CellPlace place) {
        const QPoint corner = view.rectOf(place).topLeft() + QPoint(3, 3);
        return view.grab().toImage().pixelColor(corner * view.devicePixelRatioF());
    };
    const QColor plain = inkAt({2, 3});
    view.setFound({{0, 1}, {2, 3}, {1, 900}});
    EXPECT_NE(inkAt({2, 3}), plain);
    EXPECT_EQ(inkAt({1, 3}), plain);
    view.scrollTo({0, SheetLayout::top(890)});
    EXPECT_NE(inkAt({1, 900}), plain);
    QSignalSpy wanted(&view, &SheetView::foundWanted);
    QTest::keyClick(&view, Qt::Key_F3, Qt::ShiftModifier);
    ASSERT_EQ(wanted.count(), 1);
    EXPECT_EQ(wanted[0][0].toInt(), -1);
    view.open(u"Other"_s, largeSheet());
    EXPECT_EQ(inkAt({2, 3}), plain);
}

TEST_F(Sheet, staysWhereItIsWhenTheFileChanges)
{
    show(largeSheet());
    press({2, 4});
    view.scrollTo({0, 900});
    view.refresh(largeSheet(60, 3));
    EXPECT_EQ(picked(), u"C5"_s);
    EXPECT_EQ(view.scrollPlace().y(), 900);
    view.refresh(sheetOf({{u"left"_s}}));
    EXPECT_EQ(view.scrollPlace(), QPoint());
    EXPECT_EQ(copied(), QString());
}

TEST_F(Sheet, isATableToScreenReaders)
{
    installSheetAccessibility();
    show(sheetOf({{u"a"_s, u"b"_s}, {u"c"_s}}));
    view.setFocus();
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(&view);
    ASSERT_TRUE(table && table->tableInterface());
    EXPECT_EQ(table->text(QAccessible::Name), u"Costs"_s);
    QAccessibleInterface* cell = table->tableInterface()->cellAt(0, 1);
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->text(QAccessible::Name), u"B1, b"_s);
    EXPECT_EQ(table->indexOfChild(cell), 1);
    EXPECT_EQ(table->child(1), cell);
    EXPECT_EQ(cell->rect().size(), view.rectOf({1, 0}).size());
    EXPECT_EQ(table->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), u"B2, empty"_s);
    EXPECT_FALSE(table->tableInterface()->cellAt(5000, 0));
    press({1, 0});
    EXPECT_EQ(table->focusChild(), view.hasFocus() ? cell : nullptr);
    EXPECT_TRUE(cell->state().selected);
    view.open(u"Other"_s, sheetOf({{u"new"_s, u"words"_s}}));
    EXPECT_EQ(cell->text(QAccessible::Name), u"B1, words"_s);
    EXPECT_FALSE(cell->state().selected);
}

TEST(WorkbookScreen, tellsWhatCannotBeSeen)
{
    WorkbookScreen screen(nullptr);
    screen.resize(900, 600);
    screen.show();
    screen.setSheets({u"One & two"_s, u"Three"_s}, 1, 2);
    screen.showRows(sheetOf({{u"a"_s}}, true), WorkbookScreen::Begin::Anew);
    EXPECT_TRUE(screen.view().isVisible());
    EXPECT_EQ(screen.view().name(), u"Three"_s);
    EXPECT_EQ(screen.notice(),
        u"Preview limited to the first 1,000 rows, 40 columns, and 2,000 characters per cell."_s);
    screen.showRows(sheetOf({}), WorkbookScreen::Begin::Anew);
    EXPECT_EQ(screen.note(), u"This sheet is empty."_s);
    EXPECT_FALSE(screen.view().isVisible());
    EXPECT_TRUE(screen.notice().isEmpty());
    QSignalSpy turned(&screen, &WorkbookScreen::sheetWanted);
    QTest::keyClick(&screen, Qt::Key_PageUp, Qt::ControlModifier);
    ASSERT_EQ(turned.count(), 1);
    EXPECT_EQ(turned[0][0].toInt(), 0);
    QSignalSpy stepped(&screen, &WorkbookScreen::foundWanted);
    QTest::keyClick(&screen, Qt::Key_F3, Qt::ShiftModifier);
    ASSERT_EQ(stepped.count(), 1) << "from an empty sheet on to what another one has";
    EXPECT_EQ(stepped[0][0].toInt(), -1);
    QSignalSpy closed(&screen, &WorkbookScreen::closeWanted);
    QTest::keyClick(&screen, Qt::Key_Escape);
    EXPECT_EQ(closed.count(), 1);
}

TEST(WorkbookScreen, tellsHowManySheetsThereAre)
{
    WorkbookScreen screen(nullptr);
    screen.setSheets({u"One"_s}, 0, 1);
    screen.showRows(sheetOf({{u"a"_s}, {u"b"_s}}), WorkbookScreen::Begin::Anew);
    EXPECT_EQ(screen.countWords(), u"1 sheet · 2 rows"_s);
    screen.setSheets({u"One"_s, u"Two"_s}, 0, 1234);
    EXPECT_EQ(screen.countWords(), u"First 2 of 1,234 sheets · 2 rows"_s);
    const auto where = [&] { return screen.findBar().findChild<QLineEdit*>()->placeholderText(); };
    EXPECT_EQ(where(), u"Find in the first 2 sheets"_s) << "the others aren't searched";
    screen.setSheets({u"One"_s, u"Two"_s}, 0, 2);
    EXPECT_EQ(where(), u"Find in all sheets"_s);
}

TEST(WorkbookScreen, escapeClosesTheFieldForFindingFirst)
{
    WorkbookScreen screen(nullptr);
    screen.resize(900, 600);
    screen.show();
    screen.setSheets({u"Sheet"_s, u"Empty"_s}, 0, 2);
    screen.showRows(sheetOf({{u"a"_s, u"b"_s, u"ab"_s}}), WorkbookScreen::Begin::Anew);
    QSignalSpy wanted(&screen, &WorkbookScreen::findWanted);
    screen.openFind();
    screen.setFindWords(u"b"_s);
    EXPECT_EQ(wanted.last()[0].toString(), u"b"_s);
    screen.showNote(u"Reading sheet…"_s);
    EXPECT_TRUE(screen.isFinding()) << "other sheets have words";
    QSignalSpy closed(&screen, &WorkbookScreen::closeWanted);
    QTest::keyClick(&screen.view(), Qt::Key_Escape);
    EXPECT_FALSE(screen.isFinding());
    EXPECT_EQ(closed.count(), 0);
    EXPECT_EQ(wanted.last()[0].toString(), QString());
    screen.openFind();
    screen.setSheets({}, 0, 0);
    screen.showNote(u"Couldn’t preview this workbook"_s);
    EXPECT_FALSE(screen.isFinding());
    screen.openFind();
    EXPECT_FALSE(screen.isFinding()) << "there is nothing to be found";
}

TEST(WorkbookScreen, theFieldForFindingHidesNoCell)
{
    WorkbookScreen screen(nullptr);
    screen.setSheets({u"Sheet"_s}, 0, 1);
    screen.showRows(sheetOf({{u"a"_s}}), WorkbookScreen::Begin::Anew);
    screen.show();
    for (const QSize size : {QSize(1'440, 900), QSize(760, 480)}) {
        screen.resize(size);
        screen.openFind();
        QTest::qWait(300); // it has risen
        const QRect field = screen.findBar().geometry(), sheet = screen.view().geometry();
        EXPECT_TRUE(screen.rect().contains(field));
        EXPECT_GE(field.top(), WorkbookScreen::headHeight - 2) << "nor a button";
        EXPECT_LT(field.bottom(), sheet.top() + SheetLayout::headHeight);
    }
}

TEST(WorkbookScreen, longTextsOpenOverTheSheetAndPushNothing)
{
    WorkbookScreen screen(nullptr);
    screen.resize(900, 600);
    screen.setSheets({u"Sheet"_s}, 0, 1);
    const QString lines = u"line\n"_s.repeated(300);
    screen.showRows(sheetOf({{u"short"_s, u"long "_s.repeated(100)}, {u"two\nlines"_s, lines}}),
        WorkbookScreen::Begin::Anew);
    screen.show();
    screen.activateWindow();
    screen.takeFocus();
    SheetView& view = screen.view();
    const CellBar& bar = screen.cellBar();
    const QRect standing = view.geometry();
    const int row = bar.height();
    EXPECT_FALSE(bar.hasMore());
    QTest::keyClick(&view, Qt::Key_Space);
    EXPECT_FALSE(bar.isOpen()) << "there is no more to see";

    for (const CellPlace place : {CellPlace{1, 0}, CellPlace{0, 1}, CellPlace{1, 1}}) {
        view.pickCell(place);
        EXPECT_TRUE(bar.hasMore());
        EXPECT_EQ(bar.height(), row);
        QTest::keyClick(&view, Qt::Key_Space);
        EXPECT_TRUE(bar.isOpen());
        EXPECT_GT(bar.height(), row);
        EXPECT_LT(bar.geometry().bottom(), standing.center().y() + row);
        EXPECT_EQ(view.geometry(), standing);
    }
    // The longest is scrolled to its end.
    EXPECT_GT(bar.scrollRange(), 3'000);
    QTest::keyClick(screen.findChild<CellBar*>(), Qt::Key_End);
    EXPECT_EQ(bar.scrollPlace(), bar.scrollRange());
    EXPECT_EQ(placeName(view.pick().picked), u"B2"_s) << "the keys are the text's";
    QTest::keyClick(screen.findChild<CellBar*>(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), lines) << "as it is, without quotes round it";

    QSignalSpy closed(&screen, &WorkbookScreen::closeWanted);
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(bar.isOpen());
    EXPECT_EQ(closed.count(), 0);
    QTest::keyClick(&view, Qt::Key_Space);
    view.pickCell({0, 0});
    EXPECT_FALSE(bar.isOpen()) << "another cell";
    EXPECT_EQ(bar.height(), row);
    view.pickCell({1, 1});
    QTest::keyClick(&view, Qt::Key_Space);
    screen.openFind();
    EXPECT_FALSE(bar.isOpen()) << "what is found may lie below";
    view.pickCell({1, 0});
    EXPECT_TRUE(bar.hasMore()) << "the field for finding takes of the line";
}

TEST(FindBar, tellsHowFarTheSearchIs)
{
    FindBar bar(u"Find"_s, nullptr);
    const int width = bar.width();
    using Search = FindBar::Search;
    const struct
    {
        int current, count;
        Search search;
        QString says;
    } cases[] = {
        {-1, 0, Search::GoesOn, u"…"_s},
        {-1, 0, Search::Ended, u"Not found"_s},
        {0, 3, Search::GoesOn, u"1 of 3…"_s},
        {2, 3, Search::Ended, u"3 of 3"_s},
        {-1, 12, Search::Ended, u"12 found"_s},
        {1'234'566, 4'000'000, Search::Ended, u"1,234,567 of 4,000,000"_s},
    };
    bar.setCount(-1, 0);
    EXPECT_EQ(bar.countWords(), QString()) << "no words, no count";
    bar.setWords(u"x"_s);
    for (const auto& c : cases) {
        bar.setCount(c.current, c.count, c.search);
        EXPECT_EQ(bar.countWords(), c.says);
        EXPECT_EQ(bar.width(), width);
    }
    bar.show();
    QTest::qWait(10);
    const auto* words = bar.findChild<QLabel*>();
    EXPECT_GE(words->width(), words->sizeHint().width()) << "the longest is seen whole";
}
