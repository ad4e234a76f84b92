#include "interface/page/PageCopy.h"

#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QMimeData>

using namespace Qt::StringLiterals;

namespace corvelle {

// A link to another place of the same document leads nowhere outside of it.
void dropInnerLinks(PageNodes& nodes)
{
    for (PageNode& node : nodes) {
        if (node.link && node.link->href.startsWith(u'#'))
            node.link.reset();
        dropInnerLinks(node.content);
    }
}

PageNodes nodesBetween(const FlatText& text, Units from, Units to)
{
    // A text that ends in a newline has no further block.
    if (to == text.length() && to > 0 && text.at(to - 1) == u'\n')
        --to;
    if (from >= to)
        return {};
    const FlatText::BlockAt first = text.blockAt(from), last = text.blockAt(to);
    FlatText part = text.slice(from, to);
    const bool isPart = first.index == last.index && (from > first.start || to < last.end);
    // The last block's newline says what it is, and lies behind the stretch.
    if (!isPart && to > last.start) {
        FlatTextBuilder closing;
        closing.closeBlock(last.style);
        part.replace(part.length(), part.length(), closing.take());
    }
    PageNodes nodes = nodesFromText(part);
    while (nodes.size() > 1 && nodes.back().type == PageNode::Type::Paragraph &&
           nodes.back().content.empty())
        nodes.pop_back();
    return nodes;
}

std::unique_ptr<QMimeData> copiedBlocks(const PageNodes& nodes, const MentionSource& mentions)
{
    auto copied = std::make_unique<QMimeData>();
    copied->setText(allWords(nodes));
    copied->setHtml(PageHTML::html(nodes, {mentions, {}, {}}));
    copied->setData(u"text/markdown"_s,
        PageMarkdown::markdownFromDoc(nodes, PageMarkdown::Pictures::Named).toUtf8());
    return copied;
}

} // namespace corvelle
