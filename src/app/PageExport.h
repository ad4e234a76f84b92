// Pages as files for others: the page's own form to HTML or Markdown.
#pragma once

#include "pages/PageNode.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace corvelle {

// In the format "html", "md" or "words"; empty for any other.
QByteArray exportedPage(const PageTree& page, const QString& title, const QString& format,
    const MentionSource& mentions);

// What `--export FILE FORMAT` prints; none when the arguments don't ask for it, or the file holds
// no page: then the program starts as usual.
std::optional<QByteArray> exportAsked(const QStringList& arguments);

} // namespace corvelle
