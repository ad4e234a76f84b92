// What of a page goes to the pasteboard: as words, as HTML and as Markdown.
#pragma once

#include "interface/page/PagePlace.h"

#include <memory>

class QMimeData;

namespace corvelle {

// The blocks between two places. Of a part of one block only the words, as a paragraph.
PageNodes nodesBetween(const FlatText& text, Units from, Units to);

// What is selected; cells as a table of their own.
PageNodes nodesOf(const FlatText& page, const Selected& selected);

void dropInnerLinks(PageNodes& nodes);

std::unique_ptr<QMimeData> copiedBlocks(const PageNodes& nodes, const MentionSource& mentions);

} // namespace corvelle
