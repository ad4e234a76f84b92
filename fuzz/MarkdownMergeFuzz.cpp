// A Markdown file that is opened and saved without an edit keeps every byte; with one, all that was
// not edited.

#include "pages/MarkdownMerge.h"
#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2)
        return 0;
    const QString file = QString::fromUtf8(bytesOf(data + 1, size - 1));
    const MarkdownMerge merge(file);
    PageNodes page = nodesFromText(textFromNodes(PageMarkdown::docFromMarkdown(file)));
    const auto untouched = merge.rewrite(page);
    check(untouched.has_value(), "a file that nobody edited can be written");
    check(*untouched == file || PageMarkdown::parse(file).empty(), "and keeps every byte");
    const size_t at = data[0] % page.size();
    page[at] = PageNode::of(PageNode::Type::Paragraph);
    page[at].content.push_back(PageNode::ofText(QStringLiteral("edited here")));
    const auto edited = merge.rewrite(page);
    check(edited.has_value() && edited->contains(QStringLiteral("edited here")),
        "an edit is written");
    return 0;
}
