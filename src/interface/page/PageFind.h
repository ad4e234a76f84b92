// Looking for words in a page: in its text, the labels of mentions, and the cells of tables.
#pragma once

#include "pages/FlatText.h"

#include <vector>

namespace corvelle {

struct TextRange
{
    qsizetype block = 0;
    int cell = -1;          // of a table; then places count from the start of the cell's text
    Units from = 0, to = 0; // from the start of the block

    bool operator==(const TextRange&) const = default;
};

// In the order of the page, whatever the case of the letters. At most 10,000; none for no words.
std::vector<TextRange> findInPage(const FlatText& text, const QString& words);

} // namespace corvelle
