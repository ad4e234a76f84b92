#include "interface/page/TableCells.h"

#include "pages/PageDocument.h"

#include <algorithm>
#include <deque>

namespace corvelle {

namespace {

constexpr size_t keptTables = 64;
constexpr qsizetype keptBytes = 8 << 20, bytesOfCell = 400; // about

std::shared_ptr<const TableCells> readTable(const BlockAttachment& table)
{
    auto cells = std::make_shared<TableCells>();
    PageNode stored = PageNode::of(PageNode::Type::Table);
    stored.raw = table.node;
    cells->rows = table.made ? table.made->content : tableRows(stored);
    cells->plan = TablePlan::of(cells->rows);
    cells->texts.reserve(cells->plan.cells.size());
    for (const TablePlan::Slot& slot : cells->plan.cells)
        cells->texts.push_back(textFromNodes(slot.cell->content, false, MadeTables::Kept));
    return cells;
}

} // namespace

Units TableCells::mostOfCell() const
{
    return mostOfRow / std::max(1, plan.columnCount);
}

Units TableCells::lengthOf(size_t cell) const
{
    const FlatText& text = texts[cell];
    return text.block(text.blockCount() - 1).end;
}

std::shared_ptr<const TableCells> tableCells(const BlockAttachment& table)
{
    static std::deque<std::pair<BlockAttachment, std::shared_ptr<const TableCells>>> kept;
    for (const auto& [read, cells] : kept)
        if (read.made == table.made &&
            (read.node.isSharedWith(table.node) || read.node == table.node))
            return cells;
    kept.emplace_front(table, readTable(table));
    // Always one of any size.
    qsizetype bytes = 0;
    size_t count = 0;
    for (const auto& [read, cells] : kept) {
        bytes += read.node.size() + bytesOfCell * static_cast<qsizetype>(cells->texts.size());
        if (count > 0 && (count == keptTables || bytes > keptBytes))
            break;
        ++count;
    }
    kept.resize(count);
    return kept.front().second;
}

std::shared_ptr<const TableCells> tableAt(const FlatText& text, Units at)
{
    const CharStyleRef style = at >= 0 && at < text.length() ? text.styleAt(at) : CharStyleRef();
    const bool isTable =
        style && style->attachment && style->attachment->kind == PageNode::Type::Table;
    return isTable ? tableCells(*style->attachment) : nullptr;
}

} // namespace corvelle
