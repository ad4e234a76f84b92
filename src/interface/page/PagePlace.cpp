#include "interface/page/PagePlace.h"

#include "interface/page/TableCells.h"

#include <algorithm>

namespace corvelle {

namespace {

// Merged cells are selected whole, and may reach out to others.
CellRect grown(CellRect rect, const TablePlan& plan)
{
    for (bool grows = true; grows;) {
        const CellRect before = rect;
        for (const TablePlan::Slot& slot : plan.cells) {
            if (!rect.touches(slot))
                continue;
            rect.row = std::min(rect.row, slot.row);
            rect.column = std::min(rect.column, slot.column);
            rect.rowEnd = std::max(rect.rowEnd, slot.row + slot.rowSpan);
            rect.columnEnd = std::max(rect.columnEnd, slot.column + slot.colSpan);
        }
        grows = !(rect == before);
    }
    return rect;
}

CellRect rectAround(const TablePlan& plan, int a, int b)
{
    const auto rectOf = [&](int cell) {
        const TablePlan::Slot& slot = plan.cells[static_cast<size_t>(cell)];
        return CellRect{slot.row, slot.column, slot.row + slot.rowSpan, slot.column + slot.colSpan};
    };
    const CellRect first = rectOf(a), second = rectOf(b);
    return grown(
        {std::min(first.row, second.row), std::min(first.column, second.column),
            std::max(first.rowEnd, second.rowEnd), std::max(first.columnEnd, second.columnEnd)},
        plan);
}

bool hasCells(const TableCells* table, int a, int b)
{
    const auto count = table ? static_cast<int>(table->plan.cells.size()) : 0;
    return std::min(a, b) >= 0 && std::max(a, b) < count;
}

} // namespace

bool operator<(const PagePlace& a, const PagePlace& b)
{
    const size_t common = std::min(a.cells.size(), b.cells.size());
    for (size_t i = 0; i < common; ++i)
        if (a.cells[i] != b.cells[i])
            return a.cells[i] < b.cells[i];
    // Where one way ends and the other goes into a table, the place before that table is first.
    if (a.cells.size() > common)
        return a.cells[common].table < b.at;
    if (b.cells.size() > common)
        return a.at <= b.cells[common].table;
    return a.at < b.at;
}

bool CellRect::touches(const TablePlan::Slot& slot) const
{
    return slot.row < rowEnd && slot.row + slot.rowSpan > row && slot.column < columnEnd &&
           slot.column + slot.colSpan > column;
}

std::optional<FlatText> textIn(const FlatText& page, const CellPath& cells)
{
    FlatText text = page;
    for (const CellStep& step : cells) {
        const auto table = tableAt(text, step.table);
        if (!hasCells(table.get(), step.cell, step.cell))
            return std::nullopt;
        text = table->texts[static_cast<size_t>(step.cell)];
    }
    return text;
}

Selected selectedBetween(const FlatText& page, const PagePlace& anchor, const PagePlace& head)
{
    const auto [a, b] = std::mismatch(
        anchor.cells.begin(), anchor.cells.end(), head.cells.begin(), head.cells.end());
    const CellPath common(anchor.cells.begin(), a);
    const bool inA = a != anchor.cells.end(), inB = b != head.cells.end();
    if (inA && inB && a->table == b->table) {
        const auto text = textIn(page, common);
        const auto table = text ? tableAt(*text, a->table) : nullptr;
        if (hasCells(table.get(), a->cell, b->cell))
            return {{common, a->table, a->table + 1}, rectAround(table->plan, a->cell, b->cell)};
    }
    const Units first = std::min(inA ? a->table : anchor.at, inB ? b->table : head.at);
    const Units last = std::max(inA ? a->table + 1 : anchor.at, inB ? b->table + 1 : head.at);
    return {{common, first, last}, std::nullopt};
}

std::vector<std::pair<PagePlace, PagePlace>> stretchesOf(
    const FlatText& page, const Selected& selected)
{
    const TextRange& range = selected.range;
    if (!selected.rect)
        return {{{range.cells, range.from}, {range.cells, range.to}}};
    std::vector<std::pair<PagePlace, PagePlace>> stretches;
    const auto text = textIn(page, range.cells);
    const auto table = text ? tableAt(*text, range.from) : nullptr;
    if (!table)
        return stretches;
    int lastRow = -1;
    for (size_t i = 0; i < table->plan.cells.size(); ++i) {
        const TablePlan::Slot& slot = table->plan.cells[i];
        if (!selected.rect->touches(slot))
            continue;
        PagePlace place{range.cells, 0};
        place.cells.push_back({range.from, static_cast<int>(i)});
        if (slot.row != std::exchange(lastRow, slot.row))
            stretches.emplace_back(place, place);
        place.at = table->lengthOf(i);
        stretches.back().second = place;
    }
    return stretches;
}

PagePlace placeWithin(const FlatText& page, PagePlace place)
{
    FlatText text = page;
    for (size_t i = 0; i < place.cells.size(); ++i) {
        const auto table = tableAt(text, place.cells[i].table);
        if (!hasCells(table.get(), place.cells[i].cell, place.cells[i].cell)) {
            place.at = place.cells[i].table;
            place.cells.resize(i);
            break;
        }
        text = table->texts[static_cast<size_t>(place.cells[i].cell)];
    }
    place.at = std::clamp<Units>(place.at, 0, text.length());
    return place;
}

} // namespace corvelle
