// Where a link inside a document leads. Pure.
#pragma once

#include "documents/DocBlock.h"

namespace corvelle {

// The row, among the blocks of the document, that a link with this text means: a heading of that
// name, whatever number stands before either, else the only paragraph of that text that holds no
// link. None when the link leads nowhere. A page number at the end of a contents line is passed
// over.
std::optional<size_t> rowOfLink(const DocBlocks& rows, const QString& linkText);

} // namespace corvelle
