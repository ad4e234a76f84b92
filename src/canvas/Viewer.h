// Which of our viewers shows an item. Pure.
#pragma once

#include "library/Node.h"

namespace corvelle {

enum class Viewer : unsigned char {
    None, // it opens in its own application
    Page,
    Markdown,
    Document, // a Word file, or the words of another kind of document
    Workbook,
};

Viewer viewerOf(const Node& node);

} // namespace corvelle
