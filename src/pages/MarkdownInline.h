// The words of a Markdown block and their marks.
#pragma once

#include "pages/PageNode.h"

#include <QStringView>

namespace corvelle {

constexpr int deepestParentheses = 32; // of an address

// The text of one block; its lines apart by newlines where they break, else by blanks.
PageNodes inlinesFromMarkdown(QStringView text);

// Whether a "\" before the character makes it literal.
bool isEscapable(QChar c);

// Whether reading takes a blank from each end of what stands between the backticks.
bool losesEdgeBlanks(QStringView code);

} // namespace corvelle
