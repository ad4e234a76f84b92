// The number formats of a workbook's cells (ECMA-376 Part 1, 18.8.10, 18.8.30).
#pragma once

#include "documents/NumberFormat.h"
#include "documents/ZipArchive.h"

#include <vector>

namespace corvelle {

// One for each style of cells, in their order. A part that can't be read gives none.
std::vector<NumberFormat> xlsxFormats(const ByteSource& source);

} // namespace corvelle
