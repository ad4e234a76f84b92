// Markdown lines to blocks.
#include "pages/MarkdownInline.h"
#include "pages/MarkdownLines.h"
#include "pages/PageMarkdown.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;
using Line = MarkdownLine;

// The lines of one paragraph, joined: a blank between them, a newline where a line asks for a
// break.
class ParagraphText
{
public:
    void add(const Line& line, QStringView words)
    {
        if (m_breaks)
            m_text += u'\n';
        else if (!m_text.isEmpty()) // the line of a marker alone has nothing to join
            m_text += u' ';
        m_isOpen = true;
        qsizetype slashes = 0;
        while (slashes < words.size() && words[words.size() - 1 - slashes] == u'\\')
            ++slashes;
        m_slash = slashes % 2 == 1;
        m_breaks = m_slash || (!words.isEmpty() && line.text.endsWith(u"  "));
        m_text += words;
    }
    void goOn() // before another line
    {
        if (m_slash)
            m_text.chop(1);
        m_slash = false;
    }
    bool isOpen() const { return m_isOpen; }
    PageNodes take()
    {
        PageNodes nodes = inlinesFromMarkdown(m_text);
        *this = {};
        return nodes;
    }

private:
    QString m_text;
    bool m_isOpen = false, m_breaks = false, m_slash = false;
};

class BlockReader
{
public:
    BlockReader(std::vector<Line> lines, int depth)
        : m_lines(std::move(lines))
        , m_depth(depth)
    {
        // The next line with something on it, for each line.
        m_nextFilled.resize(m_lines.size() + 1, m_lines.size());
        for (size_t i = m_lines.size(); i-- > 0;)
            m_nextFilled[i] = m_lines[i].isBlank() ? m_nextFilled[i + 1] : i;
    }

    // Calls with each block and its lines.
    template<class Found>
    void read(size_t from, const Found& found)
    {
        for (size_t at = m_nextFilled[from]; at < m_lines.size(); at = m_nextFilled[at]) {
            const size_t start = at;
            PageNode node = block(at);
            found(std::move(node), start, at);
        }
    }

    static PageNodes blocks(std::vector<Line> lines, int depth)
    {
        PageNodes nodes;
        BlockReader(std::move(lines), depth).read(0, [&](PageNode node, size_t, size_t) {
            nodes.push_back(std::move(node));
        });
        return nodes;
    }

private:
    bool nests() const { return m_depth < PageMarkdown::deepest; }

    // The block that begins at the line, which isn't blank; goes on behind it.
    PageNode block(size_t& at)
    {
        const QStringView trimmed = m_lines[at].trimmed;
        if (m_lines[at].indent >= 4)
            return indentedCode(at);
        if (const auto fence = markdown::fence(trimmed))
            return fencedCode(at, *fence);
        if (markdown::isRule(trimmed)) {
            ++at;
            return PageNode::of(Type::HorizontalRule);
        }
        if (const int level = markdown::headingLevel(trimmed)) {
            PageNode node = PageNode::heading(level);
            node.content = inlinesFromMarkdown(markdown::headingWords(trimmed));
            ++at;
            return node;
        }
        if (beginsTable(at))
            return table(at);
        if (trimmed.startsWith(u'>') && nests())
            return quote(at);
        if (nests() && markdown::listMarker(trimmed))
            return list(at, m_depth);
        return paragraph(at);
    }

    PageNode indentedCode(size_t& at)
    {
        PageNode node = PageNode::of(Type::CodeBlock);
        bool first = true;
        while (at < m_lines.size()) {
            if (m_lines[at].isBlank()) {
                const size_t next = m_nextFilled[at];
                if (next == m_lines.size() || m_lines[next].indent < 4)
                    break;
                node.text += QString(static_cast<qsizetype>(next - at), u'\n');
                at = next;
                continue;
            }
            if (m_lines[at].indent < 4)
                break;
            if (!std::exchange(first, false))
                node.text += u'\n';
            m_lines[at++].appendTo(node.text, 4);
        }
        return node;
    }

    PageNode fencedCode(size_t& at, const markdown::Fence& fence)
    {
        PageNode node = PageNode::of(Type::CodeBlock);
        node.name = fence.info.toString();
        const size_t first = ++at;
        qsizetype length = 0;
        for (; at < m_lines.size() && !markdown::closes(fence, m_lines[at].trimmed); ++at)
            length += m_lines[at].pad + m_lines[at].text.size() + 1;
        node.text.reserve(length);
        for (size_t line = first; line < at; ++line) {
            if (line > first)
                node.text += u'\n';
            m_lines[line].appendTo(node.text);
        }
        if (at < m_lines.size())
            ++at; // the closing line
        return node;
    }

    // ---- tables ----

    // Whether a line without a bar at its front can be a row.
    bool mayBeRow(size_t at) const
    {
        const QStringView trimmed = m_lines[at].trimmed;
        return markdown::holdsUnescapedBar(trimmed) && !markdown::fence(trimmed) &&
               !markdown::headingLevel(trimmed) && !trimmed.startsWith(u'>') &&
               !markdown::isRule(trimmed) && !markdown::listMarker(trimmed);
    }

    bool beginsTable(size_t at) const
    {
        if (at + 1 >= m_lines.size() || !markdown::isTableSeparator(m_lines[at + 1].trimmed))
            return false;
        const QStringView trimmed = m_lines[at].trimmed;
        return trimmed.startsWith(u'|') ||
               (mayBeRow(at) && markdown::tableCells(trimmed).size() ==
                                    markdown::tableCells(m_lines[at + 1].trimmed).size());
    }

    // What a separator says of the cells of each column; null for nothing.
    using ColumnCells = std::vector<std::shared_ptr<const Cell>>;
    static ColumnCells columnCells(QStringView separator)
    {
        ColumnCells columns;
        for (const QString& cell : markdown::tableCells(separator)) {
            const bool left = cell.startsWith(u':'), right = cell.endsWith(u':');
            const QString align = left && right ? u"center"_s
                                  : left        ? u"left"_s
                                  : right       ? u"right"_s
                                                : QString();
            columns.push_back(
                align.isEmpty() ? nullptr : std::make_shared<const Cell>(Cell{1, 1, {}, align}));
        }
        return columns;
    }

    static void addCell(PageNode& row, Type type, const ColumnCells& columns, QStringView text)
    {
        PageNode cell = PageNode::of(type);
        if (const size_t column = row.content.size(); column < columns.size())
            cell.cell = columns[column];
        cell.content.push_back(PageNode::of(Type::Paragraph));
        cell.content.front().content = inlinesFromMarkdown(text);
        row.content.push_back(std::move(cell));
    }

    PageNode table(size_t& at)
    {
        const bool barred = m_lines[at].trimmed.startsWith(u'|');
        const ColumnCells columns = columnCells(m_lines[at + 1].trimmed);
        PageNode node = PageNode::of(Type::Table);
        size_t widest = 0;
        const auto addRow = [&](QStringView line, Type type) {
            const std::vector<QString> cells = markdown::tableCells(line);
            PageNode row = PageNode::of(Type::TableRow);
            row.content.reserve(cells.size());
            for (const QString& cell : cells)
                addCell(row, type, columns, cell);
            widest = std::max(widest, cells.size());
            node.content.push_back(std::move(row));
        };
        addRow(m_lines[at].trimmed, Type::TableHeader);
        for (at += 2; at < m_lines.size() && !m_lines[at].isBlank(); ++at) {
            const bool barredRow = m_lines[at].trimmed.startsWith(u'|');
            if (!barred && !barredRow && !mayBeRow(at))
                break;
            addRow(m_lines[at].trimmed, Type::TableCell);
        }
        size_t padding = markdown::mostPadding;
        for (PageNode& row : node.content) {
            const size_t lacking = widest - row.content.size();
            if (lacking > padding)
                continue;
            padding -= lacking;
            for (size_t i = 0; i < lacking; ++i)
                addCell(row, row.content.front().type, columns, {});
        }
        return node;
    }

    // ---- quotes and lists ----

    PageNode quote(size_t& at)
    {
        std::vector<Line> inner;
        for (; at < m_lines.size() && m_lines[at].trimmed.startsWith(u'>'); ++at) {
            QStringView rest = m_lines[at].text;
            rest = rest.mid(rest.indexOf(u'>') + 1);
            if (rest.startsWith(u' '))
                rest = rest.mid(1);
            inner.push_back(Line::of(rest));
        }
        PageNode node = PageNode::of(Type::Blockquote);
        node.content = blocks(std::move(inner), m_depth + 1);
        if (node.content.empty())
            node.content.push_back(PageNode::of(Type::Paragraph));
        return node;
    }

    // A list's item while its lines come in.
    struct OpenItem
    {
        int column = 0; // where its words begin
        ParagraphText text;
        bool takesLines = false; // into its first paragraph
    };

    static void closeText(PageNode& list, OpenItem& item)
    {
        if (item.text.isOpen())
            list.content.back().content.front().content = item.text.take();
        item.takesLines = false;
    }

    static bool sameKind(const PageNode& list, const markdown::ListMarker& marker)
    {
        if (marker.task || list.type == Type::TaskList)
            return marker.task && list.type == Type::TaskList;
        return marker.ordered == (list.type == Type::OrderedList);
    }

    std::optional<markdown::ListMarker> markerAt(size_t at, int depth) const
    {
        if (depth >= PageMarkdown::deepest || markdown::isRule(m_lines[at].trimmed))
            return std::nullopt;
        return markdown::listMarker(m_lines[at].trimmed);
    }

    PageNode list(size_t& at, int depth)
    {
        const int base = m_lines[at].indent;
        const auto first = markdown::listMarker(m_lines[at].trimmed);
        PageNode node = PageNode::of(first->task      ? Type::TaskList
                                     : first->ordered ? Type::OrderedList
                                                      : Type::BulletList);
        if (node.type == Type::OrderedList)
            node.start = first->start;
        OpenItem item;
        startItem(node, item, at++, *first);
        while (at < m_lines.size()) {
            const size_t next = m_nextFilled[at];
            if (next == m_lines.size())
                break;
            const bool afterBlank = next > at;
            const Line& line = m_lines[next];
            const auto marker = markerAt(next, depth);
            if (!marker) {
                if (line.indent <= base)
                    break;
                at = next;
                const bool isText =
                    !markdown::fence(line.trimmed) && !line.trimmed.startsWith(u'>');
                if (!afterBlank && item.takesLines && isText) {
                    item.text.goOn();
                    item.text.add(line, line.trimmed);
                    ++at;
                } else {
                    closeText(node, item);
                    innerBlocks(node, item, at, base, depth);
                }
                continue;
            }
            if (line.indent < base || (line.indent == base && !sameKind(node, *marker)))
                break;
            at = next;
            closeText(node, item);
            if (line.indent > base)
                node.content.back().content.push_back(list(at, depth + 1));
            else
                startItem(node, item, at++, *marker);
        }
        closeText(node, item);
        return node;
    }

    void startItem(PageNode& list, OpenItem& item, size_t at, const markdown::ListMarker& marker)
    {
        item.column = m_lines[at].indent + marker.width;
        item.takesLines = true;
        item.text.add(m_lines[at], marker.text);
        PageNode node = PageNode::of(list.type == Type::TaskList ? Type::TaskItem : Type::ListItem);
        node.checked = marker.checked;
        node.content.push_back(PageNode::of(Type::Paragraph));
        list.content.push_back(std::move(node));
    }

    // Lines that are deeper than the list are blocks of its last item.
    void innerBlocks(PageNode& list, const OpenItem& item, size_t& at, int base, int depth)
    {
        std::vector<Line> inner;
        std::optional<markdown::Fence> open;
        size_t end = at;
        for (size_t i = at; i < m_lines.size(); ++i) {
            const Line& line = m_lines[i];
            if (!open && !line.isBlank() && line.indent <= base)
                break;
            if (open && markdown::closes(*open, line.trimmed))
                open.reset();
            else if (!open && line.indent - item.column < 4)
                open = markdown::fence(line.trimmed);
            inner.push_back(line.without(item.column));
            if (open || !line.isBlank())
                end = i + 1;
        }
        inner.resize(end - at);
        at = end;
        for (PageNode& node : blocks(std::move(inner), depth + 1))
            list.content.back().content.push_back(std::move(node));
    }

    // ---- paragraphs ----

    bool endsParagraph(size_t at) const
    {
        const QStringView trimmed = m_lines[at].trimmed;
        const QChar first = trimmed.isEmpty() ? QChar() : trimmed.front();
        if (first.isLetter())
            return beginsTable(at);
        return trimmed.isEmpty() || markdown::fence(trimmed) || markdown::headingLevel(trimmed) ||
               (first == u'>' && nests()) || first == u'|' || markdown::isRule(trimmed) ||
               (nests() && markdown::listMarker(trimmed)) || beginsTable(at);
    }

    PageNode paragraph(size_t& at)
    {
        ParagraphText text;
        text.add(m_lines[at], m_lines[at].trimmed);
        PageNode node = PageNode::of(Type::Paragraph);
        for (++at; at < m_lines.size(); ++at) {
            const QStringView trimmed = m_lines[at].trimmed;
            if (const int level = markdown::setextLevel(trimmed)) {
                node = PageNode::heading(level);
                ++at;
                break;
            }
            if (endsParagraph(at))
                break;
            text.goOn();
            text.add(m_lines[at], trimmed);
        }
        node.content = text.take();
        return node;
    }

    const std::vector<Line> m_lines;
    std::vector<size_t> m_nextFilled;
    const int m_depth;
};

std::vector<Line> linesOf(QStringView text)
{
    std::vector<Line> lines;
    lines.reserve(static_cast<size_t>(text.size() / 16) + 1); // what isn't used isn't touched
    while (true) {
        const qsizetype end = text.indexOf(u'\n');
        QStringView line = end < 0 ? text : text.left(end);
        if (end >= 0 && line.endsWith(u'\r'))
            line.chop(1);
        lines.push_back(Line::of(line));
        if (end < 0)
            return lines;
        text = text.mid(end + 1);
        if (text.isEmpty()) // the last newline ends a line and begins none
            return lines;
    }
}

// A key and a colon at the line's start.
bool isFrontMatterKey(QStringView line)
{
    qsizetype end = 0;
    const auto isKey = [](QChar c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
               c == u'_' || c == u'-';
    };
    while (end < line.size() && isKey(line[end]))
        ++end;
    if (end == 0)
        return false;
    while (end < line.size() && line[end].isSpace())
        ++end;
    return end < line.size() && line[end] == u':';
}

// The line behind the front matter; 0 when there is none.
size_t frontMatterEnd(const std::vector<Line>& lines)
{
    if (lines.size() < 3 || lines[0].trimmed != u"---" || !isFrontMatterKey(lines[1].text))
        return 0;
    for (size_t i = 2; i < lines.size(); ++i)
        if (lines[i].trimmed == u"---" || lines[i].trimmed == u"...")
            return i + 1;
    return 0;
}

// Calls with each block of a whole text and its lines.
template<class Found>
void readMarkdown(QStringView markdown, const Found& found)
{
    std::vector<Line> lines = linesOf(markdown);
    const size_t begin = frontMatterEnd(lines);
    if (begin > 0) {
        PageNode node = PageNode::of(Type::CodeBlock);
        node.name = u"frontmatter"_s;
        for (size_t i = 1; i + 1 < begin; ++i) {
            if (i > 1)
                node.text += u'\n';
            node.text += lines[i].text;
        }
        found(std::move(node), 0, begin);
    }
    BlockReader(std::move(lines), 0).read(begin, found);
}

} // namespace

std::vector<PageMarkdown::Block> PageMarkdown::parse(QStringView markdown)
{
    std::vector<Block> blocks;
    readMarkdown(markdown, [&](PageNode node, size_t start, size_t end) {
        blocks.push_back(
            {std::move(node), static_cast<qsizetype>(start), static_cast<qsizetype>(end)});
    });
    return blocks;
}

PageNodes PageMarkdown::docFromMarkdown(QStringView markdown)
{
    PageNodes nodes;
    readMarkdown(
        markdown, [&](PageNode node, size_t, size_t) { nodes.push_back(std::move(node)); });
    if (nodes.empty())
        nodes.push_back(PageNode::of(Type::Paragraph));
    return nodes;
}

} // namespace corvelle
