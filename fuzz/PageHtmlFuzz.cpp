// HTML: whatever is read is read again from what is written of it, and makes a page that holds its
// words.

#include "pages/Json.h"
#include "pages/PageDocument.h"
#include "pages/PageHtml.h"

#include "Check.h"

using namespace corvelle;

namespace {

QString wordsOf(const PageNodes& nodes)
{
    QString words;
    for (const QChar c : pageWords(nodes))
        if (!c.isSpace() && c != attachmentCharacter)
            words += c;
    return words;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const PageNodes nodes = PageHTML::nodes(QString::fromUtf8(bytesOf(data, size)));
    check(PageHTML::nodes(PageHTML::html(nodes)) == nodes, "what is written is read again");
    (void)PageHTML::wrappedMarkdown(nodes);

    const QByteArray json = docFromText(textFromNodes(nodes));
    const auto page = pageTree(json);
    check(page.has_value(), "what is saved can be read");
    check(docFromText(textFromJSON(json)) == json, "the second pass changes nothing");
    check(wordsOf(page->content) == wordsOf(nodes), "no word is lost by being saved");

    const PageNodes once = PageHTML::nodes(PageHTML::html(page->content));
    check(
        PageHTML::nodes(PageHTML::html(once)) == once, "so it is with what a page has made of it");
    return 0;
}
