// A table of a page, ready to be laid out and looked through: where its cells stand and what each
// one says.
#pragma once

#include "pages/FlatText.h"
#include "pages/TablePlan.h"

#include <memory>
#include <vector>

namespace corvelle {

struct TableCells
{
    PageNodes rows;
    TablePlan plan;              // of these rows
    std::vector<FlatText> texts; // of the plan's cells, in their order

    // Of what is in a cell, without the newline that ends its last block.
    Units lengthOf(size_t cell) const;

    // A row shows no more units of its words than this; its cells have equal parts of it.
    static constexpr Units mostOfRow = 20'000;
    Units mostOfCell() const;

    TableCells() = default;
    TableCells(const TableCells&) = delete;
    TableCells& operator=(const TableCells&) = delete;
};

// Never null. The newest few are kept, since painting, finding and measuring ask for the same ones.
// On the main thread.
std::shared_ptr<const TableCells> tableCells(const BlockAttachment& table);

// The table whose character stands at a place of a text; null where none does.
std::shared_ptr<const TableCells> tableAt(const FlatText& text, Units at);

// Tables in tables are entered down to this many; what lies deeper is told in words.
inline constexpr size_t deepestTable = 8;

} // namespace corvelle
