// The rows of a sheet's part (ECMA-376 Part 1, 18.3.1), read from its beginning as far as the
// limits go.
#pragma once

#include "documents/Xlsx.h"

namespace corvelle {

// What the cells of all sheets refer to. Not owned.
struct XlsxShared
{
    const XlsxStrings& strings;
    const std::vector<NumberFormat>& formats;
    DateSystem dates = DateSystem::From1900;
};

std::optional<SheetRows> xlsxRows(
    const ByteSource& source, const XlsxShared& shared, const SheetLimits& limits);

// "C7" is column 2 of row 6, counted from 0. None when it isn't a place in a sheet.
struct CellPlace
{
    int column = 0, row = 0;
};
std::optional<CellPlace> cellPlace(QByteArrayView reference);

// 0 is "A", 26 is "AA".
QString columnName(int column);

} // namespace corvelle
