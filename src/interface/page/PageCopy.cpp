#include "interface/page/PageCopy.h"

#include "base/Text.h"
#include "interface/page/TableCells.h"
#include "pages/PageDocument.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"

#include <QMimeData>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// A rectangle that cuts no merged cell makes a table by itself.
PageNode cellsOf(const TableCells& table, const CellRect& rect)
{
    PageNode made = PageNode::of(PageNode::Type::Table);
    made.content.resize(
        static_cast<size_t>(rect.rowEnd - rect.row), PageNode::of(PageNode::Type::TableRow));
    for (const TablePlan::Slot& slot : table.plan.cells)
        if (rect.touches(slot))
            made.content[static_cast<size_t>(slot.row - rect.row)].content.push_back(*slot.cell);
    return made;
}

// What merged cells cover is left empty.
QString tabSeparated(const PageNodes& rows)
{
    QString words;
    int row = 0, column = 0;
    for (const TablePlan::Slot& slot : TablePlan::of(rows).cells) {
        for (; row < slot.row; ++row, column = 0)
            words += u'\n';
        for (; column < slot.column; ++column)
            words += u'\t';
        QString said = allWords(slot.cell->content);
        while (said.endsWith(u'\n')) // of a picture, which says nothing
            said.chop(1);
        words += tabField(said);
    }
    return words;
}

// A table row by row, with tabs between its cells, as sheets take it; anything else as it is read.
QString copiedWords(const PageNodes& nodes)
{
    QStringList words;
    for (const PageNode& node : nodes) {
        const PageNodes rows = node.type == PageNode::Type::Table ? tableRows(node) : PageNodes();
        words.append(rows.empty() ? allWords({node}) : tabSeparated(rows));
    }
    return words.join(u'\n');
}

} // namespace

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

PageNodes nodesOf(const FlatText& page, const Selected& selected)
{
    const TextRange& range = selected.range;
    const auto text = textIn(page, range.cells);
    if (!text)
        return {};
    const auto table = selected.rect ? tableAt(*text, range.from) : nullptr;
    return table ? PageNodes{cellsOf(*table, *selected.rect)}
                 : nodesBetween(*text, range.from, range.to);
}

std::unique_ptr<QMimeData> copiedBlocks(const PageNodes& nodes, const MentionSource& mentions)
{
    auto copied = std::make_unique<QMimeData>();
    copied->setText(copiedWords(nodes));
    copied->setHtml(PageHTML::html(nodes, {mentions, {}, {}}));
    copied->setData(u"text/markdown"_s,
        PageMarkdown::markdownFromDoc(nodes, PageMarkdown::Pictures::Named).toUtf8());
    return copied;
}

} // namespace corvelle
