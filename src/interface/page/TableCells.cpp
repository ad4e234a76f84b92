#include "interface/page/TableCells.h"

#include "pages/PageDocument.h"

#include <algorithm>
#include <deque>

namespace corvelle {

namespace {

constexpr size_t keptTables = 4;

std::shared_ptr<const TableCells> readTable(const BlockAttachment& table)
{
    auto cells = std::make_shared<TableCells>();
    cells->rows = tableRows(nodeOf(table));
    cells->plan = TablePlan::of(cells->rows);
    cells->texts.reserve(cells->plan.cells.size());
    for (const TablePlan::Slot& slot : cells->plan.cells) {
        FlatText text = textFromNodes(slot.cell->content, false);
        // Its last newline would be an empty line.
        if (text.length() > 0 && text.at(text.length() - 1) == u'\n')
            text = text.slice(0, text.length() - 1);
        cells->texts.push_back(std::move(text));
    }
    return cells;
}

} // namespace

Units TableCells::mostOfCell() const
{
    return mostOfRow / std::max(1, plan.columnCount);
}

std::shared_ptr<const TableCells> tableCells(const BlockAttachment& table)
{
    static std::deque<std::pair<BlockAttachment, std::shared_ptr<const TableCells>>> kept;
    for (const auto& [read, cells] : kept)
        if (read.made == table.made &&
            (read.node.isSharedWith(table.node) || read.node == table.node))
            return cells;
    kept.emplace_front(table, readTable(table));
    if (kept.size() > keptTables)
        kept.pop_back();
    return kept.front().second;
}

} // namespace corvelle
