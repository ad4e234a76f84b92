// The words of a rich text file (Rich Text Format 1.9.1), without its looks.
#pragma once

#include <QByteArray>
#include <QString>

namespace corvelle {

// Paragraphs and lines end in newlines, cells of a table in tabs. Bytes are Windows-1252, unless
// the document or a font names another code page. Hidden text is left out. Empty for what isn't
// rich text. Linear, and any nesting is borne.
QString rtfText(QByteArrayView rtf);

} // namespace corvelle
