#include "pages/TablePlan.h"

#include "pages/Json.h"

#include <algorithm>

namespace corvelle {

namespace {

void takeWidths(const Cell& cell, int column, std::vector<double>& widths)
{
    const auto json = cell.colwidth.isEmpty() ? std::nullopt : JsonTree::parse(cell.colwidth);
    if (!json)
        return;
    size_t at = static_cast<size_t>(column);
    for (JsonValue each = json->root().firstChild(); each.exists() && at < widths.size();
         each = each.next(), ++at)
        widths[at] = std::max(widths[at], static_cast<double>(each.integer(0, 0, 10'000)));
}

} // namespace

TablePlan TablePlan::of(const PageNodes& rows)
{
    TablePlan plan;
    plan.rowCount = static_cast<int>(rows.size());
    std::vector<int> covered; // of each column, for how many more rows
    for (int row = 0; row < plan.rowCount; ++row) {
        const size_t first = plan.cells.size();
        int column = 0;
        for (const PageNode& cell : rows[static_cast<size_t>(row)].content) {
            while (column < static_cast<int>(covered.size()) &&
                   covered[static_cast<size_t>(column)] > row)
                ++column;
            if (column >= mostTableColumns)
                break;
            const Cell plain, &facts = cell.cell ? *cell.cell : plain;
            const int width = std::clamp(facts.colspan, 1, mostTableColumns - column);
            const int height = std::clamp(facts.rowspan, 1, plan.rowCount - row);
            plan.cells.push_back(
                {row, column, height, width, &cell, cell.type == PageNode::Type::TableHeader});
            covered.resize(std::max(covered.size(), static_cast<size_t>(column + width)));
            for (int i = 0; i < width; ++i)
                covered[static_cast<size_t>(column + i)] = row + height;
            column += width;
        }
        const bool heads = std::all_of(plan.cells.begin() + static_cast<std::ptrdiff_t>(first),
            plan.cells.end(), [](const Slot& slot) { return slot.isHeader; });
        if (heads && plan.cells.size() > first && plan.headCount == row)
            ++plan.headCount;
    }
    plan.columnCount = static_cast<int>(covered.size());
    plan.widths.resize(covered.size());
    for (const Slot& slot : plan.cells)
        if (slot.cell->cell)
            takeWidths(*slot.cell->cell, slot.column, plan.widths);
    return plan;
}

} // namespace corvelle
