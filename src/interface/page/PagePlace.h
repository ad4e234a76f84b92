// Places in a page, those in the cells of its tables too, and what lies between two of them.
//
// A cell has a text of its own, so a place in one is the way to it and a place in that text. Edits
// map such places as they map any other: each step and the last place are places in one text.
#pragma once

#include "pages/FlatText.h"
#include "pages/TablePlan.h"

#include <optional>
#include <vector>

namespace corvelle {

// From a text into a cell of a table that stands in it.
struct CellStep
{
    Units table = 0; // where its character stands
    int cell = 0;    // its number among the plan's cells

    auto operator<=>(const CellStep&) const = default;
};
// The outermost table first; empty for the page's own text.
using CellPath = std::vector<CellStep>;

struct PagePlace
{
    CellPath cells;
    Units at = 0; // in the text that they lead to

    bool operator==(const PagePlace&) const = default;
};
// In the order of the page: before a table, in its cells, behind it.
bool operator<(const PagePlace& a, const PagePlace& b);

// A stretch of one text.
struct TextRange
{
    CellPath cells;
    Units from = 0, to = 0;

    // Where it lies in the text that the first `depth` steps lead to.
    Units placeAt(size_t depth) const { return depth < cells.size() ? cells[depth].table : from; }
    bool operator==(const TextRange&) const = default;
};

// Some rows and columns of a table's grid.
struct CellRect
{
    int row = 0, column = 0, rowEnd = 0, columnEnd = 0; // the ends don't belong to it

    bool touches(const TablePlan::Slot& slot) const;
    bool operator==(const CellRect&) const = default;
};

// What is selected: a stretch of one text, or whole cells of a table in it, which then is the
// stretch.
struct Selected
{
    TextRange range;
    std::optional<CellRect> rect;

    bool isNothing() const { return range.from == range.to; }
    bool operator==(const Selected&) const = default;
};

// ---- on the main thread, as all that reads tables ----

// The text that the way leads to; none where it doesn't lead to a cell.
std::optional<FlatText> textIn(const FlatText& page, const CellPath& cells);

// Within one text the stretch between the two; in two cells of a table these cells and those
// between; else, in the text that holds both, all between them with tables whole.
Selected selectedBetween(const FlatText& page, const PagePlace& anchor, const PagePlace& head);

// Its parts that follow one another, in order: the rows of a rectangle of cells, or the stretch.
std::vector<std::pair<PagePlace, PagePlace>> stretchesOf(
    const FlatText& page, const Selected& selected);

// The same place, or what is left of the way to it in a page that has changed.
PagePlace placeWithin(const FlatText& page, PagePlace place);

} // namespace corvelle
