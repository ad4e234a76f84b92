// Looking for words in a page: in its text, the labels of mentions, the cells of tables,
// and the tables in those.
#pragma once

#include "interface/page/PagePlace.h"

#include <vector>

namespace corvelle {

// In the order of the page, whatever the case of the letters. At most 10,000; none for no words.
std::vector<TextRange> findInPage(const FlatText& text, const QString& words);

} // namespace corvelle
