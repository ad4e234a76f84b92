#include "pages/MarkdownMerge.h"

#include "pages/Alignment.h"
#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

// ---- what counts as the same block ----

bool isSpace(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

// Blanks are one blank, and none at the ends and beside a break; texts that are alike are one.
void normalizeInline(PageNodes& nodes)
{
    PageNodes result;
    bool afterBlank = true;
    for (PageNode& node : nodes) {
        if (node.type != Type::Text) {
            if (node.type == Type::HardBreak && !result.empty() &&
                result.back().type == Type::Text && result.back().text.endsWith(u' '))
                result.back().text.chop(1);
            std::erase_if(
                result, [](const PageNode& n) { return n.type == Type::Text && n.text.isEmpty(); });
            afterBlank = node.type == Type::HardBreak;
            result.push_back(std::move(node));
            continue;
        }
        QString text;
        for (const QChar c : std::as_const(node.text)) {
            const bool blank = isSpace(c);
            if (!blank || !afterBlank)
                text += blank ? QChar(u' ') : c;
            afterBlank = blank;
        }
        node.text = std::move(text);
        if (node.text.isEmpty())
            continue;
        if (!result.empty() && result.back().type == Type::Text &&
            result.back().marks == node.marks) {
            const auto &left = result.back().link, &right = node.link;
            if (left == right || (left && right && *left == *right)) {
                result.back().text += node.text;
                continue;
            }
        }
        result.push_back(std::move(node));
    }
    if (!result.empty() && result.back().type == Type::Text && result.back().text.endsWith(u' ')) {
        result.back().text.chop(1);
        if (result.back().text.isEmpty())
            result.pop_back();
    }
    nodes = std::move(result);
}

void normalize(PageNode& node)
{
    if (node.type == Type::CodeBlock)
        return;
    if (node.type == Type::Table && !node.raw.isEmpty()) {
        node.content = tableRows(node);
        node.raw.clear();
    }
    if (node.type == Type::Paragraph || node.type == Type::Heading)
        normalizeInline(node.content);
    else
        for (PageNode& child : node.content)
            normalize(child);
}

QByteArray render(PageNode node)
{
    normalize(node);
    return canonicalJson(node);
}

// As a page saves them.
std::vector<QByteArray> rendersOf(const PageNodes& nodes)
{
    std::vector<QByteArray> renders;
    for (PageNode& node : nodesFromText(textFromNodes(nodes, false)))
        renders.push_back(render(std::move(node)));
    return renders;
}

// Whether a page makes one block of the two.
bool joinInPages(const PageNode& left, const PageNode& right)
{
    return left.type == right.type && (left.isList() || left.type == Type::Blockquote);
}

bool isEmpty(const PageNode& node)
{
    return node.type == Type::Paragraph && node.content.empty();
}

} // namespace

// One stretch of the new text.
struct MarkdownMerge::Piece
{
    QString text;                            // with its last newline
    qsizetype firstUnit = -1, lastUnit = -1; // kept, or whose place it takes; -1: none
    bool isKept = false;
    size_t firstBlock = 0, endBlock = 0; // of the new ones
};

MarkdownMerge::MarkdownMerge(QString original)
    : m_original(std::move(original))
    , m_newline(m_original.contains(u"\r\n") ? u"\r\n"_s : u"\n"_s)
    , m_units(unitsOf(m_original))
{}

MarkdownMerge::Partition MarkdownMerge::unitsOf(const QString& text)
{
    std::vector<qsizetype> starts{0}; // of the lines
    for (qsizetype at = text.indexOf(u'\n'); at >= 0; at = text.indexOf(u'\n', at + 1))
        starts.push_back(at + 1);
    starts.push_back(text.size());
    const auto startOf = [&](qsizetype line) {
        return starts[std::min(static_cast<size_t>(line), starts.size() - 1)];
    };
    std::vector<PageMarkdown::Block> blocks = PageMarkdown::parse(text);
    Partition units;
    for (size_t i = 0; i < blocks.size();) {
        size_t next = i + 1;
        while (next < blocks.size() && joinInPages(blocks[next - 1].node, blocks[next].node))
            ++next;
        PageNodes nodes;
        for (size_t k = i; k < next; ++k)
            nodes.push_back(std::move(blocks[k].node));
        units.push_back(
            {startOf(blocks[i].lineStart), startOf(blocks[next - 1].lineEnd), rendersOf(nodes)});
        i = next;
    }
    return units;
}

// Units without an empty line between them, as one.
MarkdownMerge::Partition MarkdownMerge::runs() const
{
    Partition runs;
    for (const Unit& unit : m_units) {
        if (runs.empty() || unit.begin > runs.back().end) {
            runs.push_back(unit);
            continue;
        }
        runs.back().end = unit.end;
        runs.back().renders.insert(
            runs.back().renders.end(), unit.renders.begin(), unit.renders.end());
    }
    return runs;
}

std::optional<QString> MarkdownMerge::rewrite(const QByteArray& pageJSON) const
{
    const auto page = pageTree(pageJSON);
    return page ? rewrite(page->content) : std::nullopt;
}

std::optional<QString> MarkdownMerge::rewrite(const PageNodes& blocks) const
{
    std::vector<QString> markdown;
    std::vector<QByteArray> renders;
    for (const PageNode& block : blocks) {
        if (isEmpty(block))
            continue;
        QString text = markdown.empty() ? PageMarkdown::markdownFromNodes({block})
                                        : PageMarkdown::markdownFromNode(block);
        markdown.push_back(std::move(text));
        renders.push_back(render(block));
    }
    if (auto text = place(markdown, renders, m_units, true))
        return text;
    return place(markdown, renders, runs(), false);
}

std::vector<MarkdownMerge::Piece> MarkdownMerge::pieces(const std::vector<QString>& markdown,
    const std::vector<QByteArray>& renders, const Partition& partition) const
{
    std::vector<QByteArray> old;
    std::vector<size_t> unitOf,
        firstOf; // of each old render its unit; of each unit its first render
    for (size_t u = 0; u < partition.size(); ++u) {
        firstOf.push_back(old.size());
        for (const QByteArray& each : partition[u].renders) {
            old.push_back(each);
            unitOf.push_back(u);
        }
    }
    const std::vector<qsizetype> found = alignment(old, renders);
    std::vector<Piece> pieces;
    for (size_t i = 0; i < renders.size();) {
        Piece piece;
        piece.firstBlock = i;
        if (found[i] >= 0) {
            const size_t unit = unitOf[static_cast<size_t>(found[i])];
            const size_t count = partition[unit].renders.size();
            bool whole =
                static_cast<size_t>(found[i]) == firstOf[unit] && i + count <= renders.size();
            for (size_t k = 0; whole && k < count; ++k)
                whole = found[i + k] == found[i] + static_cast<qsizetype>(k);
            if (whole) {
                piece.isKept = true;
                piece.firstUnit = piece.lastUnit = static_cast<qsizetype>(unit);
                piece.text = m_original.mid(
                    partition[unit].begin, partition[unit].end - partition[unit].begin);
                if (!piece.text.endsWith(u'\n'))
                    piece.text += m_newline;
                piece.endBlock = i + count;
            }
        }
        if (!piece.isKept) {
            piece.text = markdown[i];
            piece.text.replace(u'\n', m_newline);
            piece.endBlock = i + 1;
            if (!piece.text.isEmpty())
                piece.text += m_newline;
        }
        i = piece.endBlock;
        if (!piece.text.isEmpty())
            pieces.push_back(std::move(piece));
    }
    // As many new blocks between two that stayed as were there: they take the places of those.
    for (size_t i = 0; i < pieces.size();) {
        size_t end = i;
        while (end < pieces.size() && !pieces[end].isKept)
            ++end;
        const qsizetype before = i == 0 ? -1 : pieces[i - 1].lastUnit;
        const qsizetype after =
            end == pieces.size() ? static_cast<qsizetype>(partition.size()) : pieces[end].firstUnit;
        if (static_cast<qsizetype>(end - i) == after - before - 1)
            for (size_t k = i; k < end; ++k)
                pieces[k].firstUnit = pieces[k].lastUnit =
                    before + 1 + static_cast<qsizetype>(k - i);
        i = end + 1;
    }
    return pieces;
}

// What stands between two pieces.
QString MarkdownMerge::gap(
    const Piece& before, const Piece& after, const Partition& partition) const
{
    if (before.lastUnit < 0 || after.firstUnit != before.lastUnit + 1)
        return m_newline;
    const qsizetype from = partition[static_cast<size_t>(before.lastUnit)].end;
    return m_original.mid(from, partition[static_cast<size_t>(after.firstUnit)].begin - from);
}

std::optional<QString> MarkdownMerge::place(const std::vector<QString>& markdown,
    const std::vector<QByteArray>& renders, const Partition& partition, bool strict) const
{
    const std::vector<Piece> all = pieces(markdown, renders, partition);
    const auto reads = [&](const QString& text, size_t firstBlock, size_t endBlock) {
        std::vector<QByteArray> read;
        for (const Unit& unit : unitsOf(text))
            read.insert(read.end(), unit.renders.begin(), unit.renders.end());
        return std::equal(read.begin(), read.end(),
            renders.begin() + static_cast<ptrdiff_t>(firstBlock),
            renders.begin() + static_cast<ptrdiff_t>(endBlock));
    };
    QString text = partition.empty() ? QString() : m_original.left(partition.front().begin);
    for (size_t i = 0; i < all.size(); ++i) {
        const Piece& piece = all[i];
        if (i == 0) {
            text += piece.text;
            continue;
        }
        const Piece& before = all[i - 1];
        QString between = gap(before, piece, partition);
        // A block and what stands around it must read as what they are; front matter only in front.
        const bool isNew = !piece.isKept || !before.isKept;
        if (strict && isNew && i > 1 &&
            !reads(before.text + between + piece.text, before.firstBlock, piece.endBlock)) {
            between = m_newline;
            if (!reads(before.text + between + piece.text, before.firstBlock, piece.endBlock))
                return std::nullopt;
        } else if (!strict && isNew && between.isEmpty()) {
            between = m_newline;
        }
        text += between + piece.text;
    }
    const bool endsAsBefore = !all.empty() && !partition.empty() &&
                              all.back().lastUnit == static_cast<qsizetype>(partition.size()) - 1;
    if (endsAsBefore)
        text += m_original.mid(partition.back().end);
    if (!m_original.isEmpty() && !m_original.endsWith(u'\n') && text.endsWith(u'\n'))
        text.chop(text.endsWith(m_newline) ? m_newline.size() : 1);
    if (strict && !reads(text, 0, renders.size()))
        return std::nullopt;
    return text;
}

} // namespace corvelle
