// Which cells of a sheet are picked, and what is copied of them. Pure.
#pragma once

#include "documents/CellPlace.h"
#include "documents/Xlsx.h"

#include <optional>

namespace corvelle {

// From the upper left cell to the lower right one, both inside.
struct CellRange
{
    CellPlace from, to;

    bool contains(CellPlace place) const;
    bool isOne() const { return from == to; }
    bool operator==(const CellRange&) const = default;
};

struct SheetPick
{
    CellPlace picked;                 // its text is shown in full
    CellPlace anchor;                 // where the picked range began
    std::optional<CellPlace> hovered; // under the pointer

    CellRange range() const;
    // Another cell alone, or as the other end of the range.
    enum class Reach : unsigned char { Alone, Range };
    void pick(CellPlace place, Reach reach);

    bool operator==(const SheetPick&) const = default;
};

// Null for a place without a cell.
const SheetCell* cellAt(const SheetRows& sheet, CellPlace place);
QString textAt(const SheetRows& sheet, CellPlace place);

// As other sheets take it: cells parted by tabs, rows by newlines; what holds one of these stands
// in quotes.
QString copiedCells(const SheetRows& sheet, const CellRange& range);

} // namespace corvelle
