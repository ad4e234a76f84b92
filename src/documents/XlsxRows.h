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

} // namespace corvelle
