// A document as lines of text, for scripts and tests.
#pragma once

#include "documents/DocBlock.h"

namespace corvelle {

// A line for the block: its kind with depth, number, level or check, a tab, its text. The blocks of
// a quote or a cell follow two blanks deeper; a cell has a line with its row, its column and its
// spans. Backslashes, tabs, line breaks and control characters are escaped. UTF-8.
QByteArray dumpOf(const DocBlock& block);

} // namespace corvelle
