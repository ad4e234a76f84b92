// Finding in all sheets of a workbook, while they are searched one by one.
#include "canvas/WorkbookFind.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

using Places = std::vector<CellPlace>;

SheetRows sheetOf(const std::vector<QStringList>& rows)
{
    SheetRows sheet;
    for (const QStringList& texts : rows) {
        auto& cells = sheet.rows.emplace_back();
        for (const QString& text : texts)
            cells.push_back({text, false});
    }
    return sheet;
}

// "2:B3, 4 of 7": the sheet and the cell of the hit, and its number; "…" while sheets are left.
QString told(const WorkbookFind& find)
{
    const auto hit = find.hit();
    return (hit ? QString::number(hit->sheet) + u':' + placeName(hit->cell) : u"none"_s) +
           u", %1 of %2"_s.arg(find.number() + 1).arg(find.count()) +
           (find.isDone() ? QString() : u"…"_s);
}

// Two hits in the first sheet, none in the second, one in the third, two in the fourth.
const Places inSheets[] = {{{0, 0}, {1, 4}}, {}, {{2, 2}}, {{0, 0}, {3, 0}}};

void searchNext(WorkbookFind& find, int sheets = 1)
{
    for (int i = 0; i < sheets; ++i)
        find.take(inSheets[*find.nextSheet()]);
}

} // namespace

TEST(FindInSheet, findsWordsInAnyCaseByRows)
{
    const SheetRows sheet =
        sheetOf({{u"Sea"_s, u"land"_s, u"ÜBERSEE"_s}, {u"SEAside"_s}, {}, {{}, u"the sea"_s}});
    EXPECT_EQ(findInSheet(sheet, u"sea"_s), (Places{{0, 0}, {0, 1}, {1, 3}}));
    EXPECT_EQ(findInSheet(sheet, u"übersee"_s), (Places{{2, 0}}));
    EXPECT_EQ(findInSheet(sheet, {}), Places());
}

TEST(WorkbookFind, goesThroughAllSheetsInTheirOrderAndRound)
{
    WorkbookFind find(u"x"_s, 4, {});
    EXPECT_FALSE(find.step(1)) << "no sheet has been searched";
    EXPECT_TRUE(find.take(inSheets[0]));
    EXPECT_EQ(told(find), u"0:A1, 1 of 2…"_s);
    searchNext(find, 3);
    const char* on[] = {"0:B5, 2 of 5", "2:C3, 3 of 5", "3:A1, 4 of 5", "3:D1, 5 of 5",
        "0:A1, 1 of 5", "0:B5, 2 of 5"};
    for (const char* expected : on) {
        EXPECT_TRUE(find.step(1));
        EXPECT_EQ(told(find), QString::fromUtf8(expected));
    }
    for (const char* expected : {"0:A1, 1 of 5", "3:D1, 5 of 5", "3:A1, 4 of 5", "2:C3, 3 of 5"}) {
        EXPECT_TRUE(find.step(-1));
        EXPECT_EQ(told(find), QString::fromUtf8(expected));
    }
    EXPECT_EQ(find.foundIn(3), inSheets[3]);
    EXPECT_EQ(find.foundIn(7), Places());
}

TEST(WorkbookFind, beginsWhereOneStands)
{
    const struct
    {
        BookPlace from;
        const char *first, *last;
    } cases[] = {
        {{0, {0, 1}}, "0:B5, 2 of 2…", "0:B5, 2 of 5"},
        {{0, {2, 4}}, "none, 0 of 2…", "2:C3, 3 of 5"},
        {{1, {}}, "none, 0 of 0…", "2:C3, 3 of 5"},
        {{3, {1, 0}}, "3:D1, 2 of 2…", "3:D1, 5 of 5"},
        {{3, {0, 9}}, "none, 0 of 2…", "0:A1, 1 of 5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.last);
        WorkbookFind find(u"x"_s, 4, c.from);
        find.step(1);
        EXPECT_EQ(find.nextSheet(), c.from.sheet);
        searchNext(find);
        EXPECT_EQ(told(find), QString::fromUtf8(c.first));
        searchNext(find, 3);
        EXPECT_EQ(told(find), QString::fromUtf8(c.last));
    }
}

TEST(WorkbookFind, aStepWaitsForSheetsThatAreStillToBeSearched)
{
    WorkbookFind find(u"x"_s, 4, {});
    find.step(1);
    searchNext(find);
    find.step(1);
    EXPECT_FALSE(find.step(1)) << "what follows isn't known";
    EXPECT_FALSE(find.step(1));
    EXPECT_EQ(told(find), u"0:B5, 2 of 2…"_s);
    searchNext(find, 2);
    EXPECT_EQ(told(find), u"2:C3, 3 of 3…"_s);
    EXPECT_TRUE(find.isWaiting());
    searchNext(find);
    EXPECT_EQ(told(find), u"3:A1, 4 of 5"_s);
    EXPECT_FALSE(find.isWaiting());
}

TEST(WorkbookFind, findsNothingWithoutEnd)
{
    WorkbookFind find(u"x"_s, 2, {5, {}});
    find.step(1);
    EXPECT_FALSE(find.take({}));
    EXPECT_FALSE(find.take({}));
    EXPECT_TRUE(find.isDone());
    EXPECT_FALSE(find.take({{0, 0}})) << "there are no more sheets";
    EXPECT_FALSE(find.step(-1));
    EXPECT_FALSE(find.isWaiting());
    EXPECT_EQ(told(find), u"none, 0 of 0"_s);
    for (WorkbookFind none :
        {WorkbookFind(), WorkbookFind(u"x"_s, 0, {}), WorkbookFind({}, 9, {})}) {
        EXPECT_TRUE(none.isDone());
        EXPECT_FALSE(none.step(1));
    }
}

TEST(WorkbookFind, goesOnFromWhereThePersonWent)
{
    WorkbookFind find(u"x"_s, 4, {});
    find.step(1);
    searchNext(find, 4);
    find.stand({3, {1, 0}});
    EXPECT_EQ(told(find), u"none, 0 of 5"_s);
    find.step(1);
    EXPECT_EQ(told(find), u"3:D1, 5 of 5"_s);
    find.stand({3, {1, 0}});
    find.step(-1);
    EXPECT_EQ(told(find), u"3:A1, 4 of 5"_s);
    find.stand({1, {}});
    find.step(-1);
    EXPECT_EQ(told(find), u"0:B5, 2 of 5"_s);
}
