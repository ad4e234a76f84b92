// What is made of a page for others: the lines of its card, and the grid of its tables.
#include "pages/PageExcerpt.h"
#include "pages/TablePlan.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(PageExcerpt, showsTheFirstLinesAndCountsAllWords)
{
    QByteArray blocks;
    for (int i = 0; i < 20; ++i)
        blocks +=
            QByteArray(i ? "," : "") +
            R"({"type":"paragraph","content":[{"type":"text","text":"two words"}]},{"type":"paragraph"})";
    const PageExcerpt excerpt = pageExcerpt(R"({"type":"doc","content":[)" + blocks + "]}");
    EXPECT_EQ(excerpt.rows.size(), 14u) << "blank blocks make no row";
    EXPECT_EQ(excerpt.words, 40);
}

TEST(PageExcerpt, tellsWhatEachLineIs)
{
    const PageExcerpt excerpt = pageExcerpt(QByteArray(R"({"type":"doc","content":[
        {"type":"orderedList","attrs":{"start":3},"content":[
            {"type":"listItem","content":[{"type":"paragraph","content":[{"type":"text","text":"three"}]},
                {"type":"bulletList","content":[{"type":"listItem","content":[
                    {"type":"paragraph","content":[{"type":"text","text":"inner"}]}]}]}]},
            {"type":"listItem","content":[{"type":"paragraph","content":[{"type":"text","text":"four"}]}]}]},
        {"type":"taskList","content":[{"type":"taskItem","attrs":{"checked":true},"content":[
            {"type":"paragraph","content":[{"type":"text","text":"a"},{"type":"hardBreak"},{"type":"text","text":"b "},
                {"type":"mention","attrs":{"id":"x","label":"Plan"}}]}]}]},
        {"type":"image","attrs":{"src":"x"}},
        {"type":"table","content":[{"type":"tableRow","content":[{"type":"tableCell","content":[
            {"type":"paragraph","content":[{"type":"text","text":"in a cell"}]}]}]}]}]})"));
    EXPECT_EQ(excerpt.rows,
        (std::vector<ExcerptRow>{{Block::Ordered, "three", 0, 3, false},
            {Block::Bullet, "inner", 1, 1, false}, {Block::Ordered, "four", 0, 4, false},
            {Block::Done, "a b Plan", 0, 1, true}}));
    EXPECT_EQ(excerpt.words, 9) << "a table's words count, a picture has none";
}

namespace {

PageNode cell(int colspan, int rowspan, PageNode::Type type = PageNode::Type::TableCell)
{
    PageNode node = PageNode::of(type);
    node.cell = std::make_shared<Cell>(Cell{colspan, rowspan, {}, {}});
    return node;
}

PageNode row(std::vector<PageNode> cells)
{
    PageNode node = PageNode::of(PageNode::Type::TableRow);
    node.content = std::move(cells);
    return node;
}

} // namespace

TEST(TablePlan, cellsLandInTheFirstFreeColumn)
{
    const auto head = PageNode::Type::TableHeader;
    const PageNodes rows{row({cell(1, 2, head), cell(2, 1, head)}), row({cell(1, 1), cell(1, 9)}),
        row({cell(3, 1)}), row({})};
    const TablePlan plan = TablePlan::of(rows);
    EXPECT_EQ(plan.rowCount, 4);
    EXPECT_EQ(plan.headCount, 1);
    std::vector<std::array<int, 4>> places;
    for (const TablePlan::Slot& slot : plan.cells)
        places.push_back({slot.row, slot.column, slot.rowSpan, slot.colSpan});
    EXPECT_EQ(places, (std::vector<std::array<int, 4>>{
                          {0, 0, 2, 1}, {0, 1, 1, 2}, {1, 1, 1, 1}, {1, 2, 3, 1}, {2, 0, 1, 3}}))
        << "a span ends with the table";
    EXPECT_EQ(plan.columnCount, 3);
    EXPECT_LE(TablePlan::of({row({cell(1'000'000, 1), cell(5, 1)})}).columnCount, 1'000);
}
