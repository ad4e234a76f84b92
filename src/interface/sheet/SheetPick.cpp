#include "interface/sheet/SheetPick.h"

#include "base/Text.h"

#include <algorithm>

namespace corvelle {

bool CellRange::contains(CellPlace place) const
{
    return place.column >= from.column && place.column <= to.column && place.row >= from.row &&
           place.row <= to.row;
}

CellRange SheetPick::range() const
{
    return {{std::min(anchor.column, picked.column), std::min(anchor.row, picked.row)},
        {std::max(anchor.column, picked.column), std::max(anchor.row, picked.row)}};
}

void SheetPick::pick(CellPlace place, Reach reach)
{
    picked = place;
    if (reach == Reach::Alone)
        anchor = place;
}

const SheetCell* cellAt(const SheetRows& sheet, CellPlace place)
{
    const auto row = static_cast<size_t>(place.row), column = static_cast<size_t>(place.column);
    const bool isThere = row < sheet.rows.size() && column < sheet.rows[row].size();
    return isThere ? &sheet.rows[row][column] : nullptr;
}

QString textAt(const SheetRows& sheet, CellPlace place)
{
    const SheetCell* cell = cellAt(sheet, place);
    return cell ? cell->text : QString();
}

QString copiedCells(const SheetRows& sheet, const CellRange& range)
{
    if (range.isOne())
        return textAt(sheet, range.from);
    QString copied;
    for (int row = range.from.row; row <= range.to.row; ++row) {
        if (row > range.from.row)
            copied += u'\n';
        for (int column = range.from.column; column <= range.to.column; ++column) {
            if (column > range.from.column)
                copied += u'\t';
            copied += tabField(textAt(sheet, {column, row}));
        }
    }
    return copied;
}

} // namespace corvelle
