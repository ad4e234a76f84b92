// What a link between files means: Markdown files and documents name others by a path from their
// own folder. Pure.
#pragma once

#include <QString>

namespace corvelle {

// The path that a node has for what the link in a document names, a relative-path reference of
// RFC 3986 (4.2): the document's path is relative to the library's folder or absolute, and so is
// the answer. Empty for any other link, and for one that leads out of the library.
QString linkedPath(const QString& document, const QString& link);

} // namespace corvelle
