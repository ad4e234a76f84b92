// Markdown: whatever is read stays as it is once it has been written and read again.

#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString markdown = QString::fromUtf8(bytesOf(data, size));
    const auto blocks = PageMarkdown::parse(markdown);
    qsizetype line = 0;
    PageNodes nodes;
    for (const auto& block : blocks) {
        check(block.lineStart >= line && block.lineEnd > block.lineStart,
            "blocks stand on lines of their own, in order");
        line = block.lineEnd;
        nodes.push_back(block.node);
    }
    // As a page holds it; then its words outlive Markdown.
    const PageNodes page = nodesFromText(textFromNodes(nodes, false));
    const PageNodes back = PageMarkdown::docFromMarkdown(PageMarkdown::markdownFromNodes(page));
    (void)PageMarkdown::markdownFromDoc(page, PageMarkdown::Pictures::Named);
    const auto bare = [](const PageNodes& all) {
        QString words;
        for (const QChar c : pageWords(all))
            if (!c.isSpace())
                words += c;
        return words;
    };
    check(bare(page) == bare(back), "no word is lost by being written");
    return 0;
}
