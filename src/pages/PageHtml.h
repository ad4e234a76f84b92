// Pages from HTML and HTML from pages.
//
// Reading never fails: it keeps what a page can hold, and what can't be read is text. What was read
// once is read again from what is written of it, exactly. Of a page that came from elsewhere HTML
// doesn't tell: empty paragraphs, headings and quotes, blanks in a row or at a block's ends,
// indents, and all but the words of blocks of an unknown type. Any thread.
#pragma once

#include "pages/PageNode.h"

#include <functional>

namespace corvelle {

struct HtmlOptions
{
    MentionSource mentions;
    // For the address of a picture one that stands alone, a "data:" one; null leaves it as it is.
    std::function<QString(const QString& src)> picture;
    // For an embedded sketch the address of its picture; null for any other item.
    std::function<QString(const PageEmbed& embed)> sketch;
};

struct PageHTML
{
    // The blocks in an HTML text; empty when there is nothing in it.
    static PageNodes nodes(const QString& html);

    // A paste that is only plain text in HTML's wrapping, most of its lines written like Markdown:
    // that text, to be read as such; null for any other.
    static QString wrappedMarkdown(const PageNodes& nodes);
    static bool isMarkdownLine(QStringView line);

    // For the pasteboard: blocks follow each other without a separator.
    static QString html(const PageNodes& blocks, const HtmlOptions& options = {});
    // A file that stands alone.
    static QString file(
        const PageTree& page, const QString& title, const HtmlOptions& options = {});
};

} // namespace corvelle
