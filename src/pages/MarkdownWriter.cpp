// Blocks to Markdown.
#include "pages/MarkdownLines.h"
#include "pages/MarkdownWords.h"
#include "pages/PageMarkdown.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

constexpr int mostNumber = 999'999'999; // a longer one is no list marker

// The text with something before each line; empty lines take `before` without its blanks.
QString prefixed(const QString& text, const QString& before, bool firstToo = true)
{
    QString bare = before;
    while (bare.endsWith(u' '))
        bare.chop(1);
    QString result;
    result.reserve(text.size() + text.size() / 8);
    bool first = true;
    for (const QStringView line : QStringView(text).tokenize(u'\n')) {
        const bool isFirst = std::exchange(first, false);
        if (!isFirst)
            result += u'\n';
        if (!isFirst || firstToo)
            result += line.isEmpty() ? bare : before;
        result += line;
    }
    return result;
}

class BlockWriter
{
public:
    explicit BlockWriter(bool forOthers, PageMarkdown::Pictures pictures = {})
        : m_forOthers(forOthers)
        , m_pictures(pictures)
    {}

    QString blocks(const PageNodes& nodes, bool isDocument = false) const
    {
        QString text;
        for (const PageNode& node : nodes) {
            const QString one = block(node, isDocument && &node == &nodes.front());
            if (one.isEmpty())
                continue;
            if (!text.isEmpty())
                text += u"\n\n";
            text += one;
        }
        return text;
    }

    QString block(const PageNode& node, bool isFirst = false) const
    {
        switch (node.type) {
        case Type::Paragraph:
            return words(node);
        case Type::Heading:
            return heading(node);
        case Type::BulletList:
        case Type::OrderedList:
        case Type::TaskList:
            return list(node);
        case Type::Blockquote:
            return quote(node);
        case Type::CodeBlock:
            return code(node, isFirst);
        case Type::HorizontalRule:
            return u"---"_s;
        case Type::Table:
            return table(node);
        case Type::Image:
            return m_forOthers ? picture(pictureOf(node)) : QString();
        case Type::Embed:
            return m_forOthers ? embed(embedOf(node)) : QString();
        default:
            return words(PageNode::ofText(plainText(node)));
        }
    }

private:
    QString words(
        const PageNode& node, MarkdownWords::Place place = MarkdownWords::Place::Lines) const
    {
        const MarkdownWords words{place, m_forOthers};
        return node.type == Type::Text ? words.of(PageNodes{node}) : words.of(node);
    }

    QString heading(const PageNode& node) const
    {
        QString text = words(node, MarkdownWords::Place::OneLine);
        // A run of "#" at the end would be read as a closing one.
        qsizetype last = text.size();
        while (last > 0 && text[last - 1].isSpace())
            --last;
        qsizetype end = last;
        while (end > 0 && text[end - 1] == u'#')
            --end;
        if (end < last)
            text.insert(end, u'\\');
        const QString marks(std::clamp<int>(node.level, 1, 6), u'#');
        return text.isEmpty() ? marks : marks + u' ' + text;
    }

    QString list(const PageNode& node) const
    {
        QString text;
        int number = node.start;
        for (const PageNode& item : node.content) {
            QString marker = u"- "_s;
            if (node.type == Type::OrderedList)
                marker = QString::number(std::min(number++, mostNumber)) + u". "_s;
            else if (node.type == Type::TaskList)
                marker = item.checked ? u"- [x] "_s : u"- [ ] "_s;
            if (!text.isEmpty())
                text += u'\n';
            text += this->item(item, marker);
        }
        return text;
    }

    QString item(const PageNode& item, const QString& marker) const
    {
        const QString indent(marker.size(), u' ');
        QString text = marker;
        size_t from = 0;
        if (!item.content.empty() && item.content.front().type == Type::Paragraph) {
            text += prefixed(words(item.content.front()), indent, false);
            from = 1;
        }
        if (text == marker)
            text.chop(1);
        for (size_t i = from; i < item.content.size(); ++i) {
            const PageNode& node = item.content[i];
            const QString one = block(node);
            if (one.isEmpty())
                continue;
            // A table takes every line up to an empty one, an empty item none behind one.
            const bool afterWords =
                i == 0 || (i == 1 && from == 1 && item.content[0].type == Type::Paragraph);
            const bool afterList = i > 0 && item.content[i - 1].isList();
            text += node.isList() && (afterWords || afterList) ? u"\n"_s : u"\n\n"_s;
            text += prefixed(one, indent);
        }
        return text;
    }

    QString quote(const PageNode& node) const { return prefixed(blocks(node.content), u"> "_s); }

    QString code(const PageNode& node, bool isFirst) const
    {
        if (node.name == u"frontmatter" && isFirst && readsAsFrontMatter(node.text))
            return u"---\n"_s + node.text + u"\n---"_s;
        QString info = node.name;
        info.replace(u'\n', u' ').replace(u'\r', u' ');
        const QChar mark = info.contains(u'`') ? u'~' : u'`';
        if (info.startsWith(mark)) // it would be one with the fence
            info.prepend(u' ');
        qsizetype longest = 2;
        for (const QStringView line : QStringView(node.text).tokenize(u'\n')) {
            const QStringView inside = line.trimmed();
            qsizetype run = 0;
            while (run < inside.size() && inside[run] == mark)
                ++run;
            longest = std::max(longest, run);
        }
        const QString fence(longest + 1, mark);
        return fence + info + (node.text.isEmpty() ? QString() : u'\n' + node.text) + u'\n' + fence;
    }

    static bool readsAsFrontMatter(const QString& text)
    {
        const auto blocks = PageMarkdown::parse(QString(u"---\n"_s + text + u"\n---"_s));
        return blocks.size() == 1 && blocks.front().node.name == u"frontmatter" &&
               blocks.front().node.text == text;
    }

    // ---- tables ----

    QString cell(const PageNode& node) const
    {
        QStringList parts;
        for (const PageNode& block : node.content) {
            QString part =
                block.type == Type::Paragraph ? words(block, MarkdownWords::Place::OneLine)
                : m_forOthers
                    ? words(PageNode::ofText(plainText(block)), MarkdownWords::Place::OneLine)
                    : this->block(block).replace(u'\n', u"<br>"_s);
            parts.append(part);
        }
        return parts.join(u"<br>"_s).replace(u'|', u"\\|"_s);
    }

    QString table(const PageNode& node) const
    {
        // Merged cells stand on a grid; the places that they cover are empty.
        std::vector<QStringList> grid;
        QStringList aligns;
        const PageNodes rows = tableRows(node);
        qsizetype columns = 0;
        std::vector<int> covered; // of each column, for how many more rows
        for (const PageNode& row : rows) {
            QStringList cells;
            const auto skipCovered = [&] {
                while (cells.size() < static_cast<qsizetype>(covered.size()) &&
                       covered[static_cast<size_t>(cells.size())] > 0) {
                    --covered[static_cast<size_t>(cells.size())];
                    cells.append(QString());
                }
            };
            for (const PageNode& each : row.content) {
                skipCovered();
                const Cell plain, &facts = each.cell ? *each.cell : plain;
                for (int i = 0; i < facts.colspan && cells.size() < mostTableColumns; ++i) {
                    if (grid.empty())
                        aligns.append(facts.align);
                    const auto at = static_cast<size_t>(cells.size());
                    covered.resize(std::max(covered.size(), at + 1));
                    covered[at] = facts.rowspan - 1;
                    cells.append(i == 0 ? cell(each) : QString());
                }
            }
            skipCovered();
            columns = std::max(columns, cells.size());
            grid.push_back(cells);
        }
        if (columns == 0)
            return {};
        QString text;
        auto padding = static_cast<qsizetype>(markdown::mostPadding);
        for (size_t r = 0; r < grid.size(); ++r) {
            if (r > 0)
                text += u'\n';
            text += u'|';
            const qsizetype lacking = columns - grid[r].size();
            const bool pads = r == 0 || lacking <= padding;
            padding -= pads ? lacking : 0;
            for (qsizetype c = 0; c < (pads ? columns : grid[r].size()); ++c)
                text += u' ' + grid[r].value(c) + u" |"_s;
            if (r == 0)
                text += separator(aligns, columns);
        }
        return text;
    }

    static QString separator(const QStringList& aligns, qsizetype columns)
    {
        QString text = u"\n|"_s;
        for (qsizetype c = 0; c < columns; ++c) {
            const QString align = aligns.value(c);
            text += align == u"left"     ? u" :--- |"
                    : align == u"right"  ? u" ---: |"
                    : align == u"center" ? u" :---: |"
                                         : u" --- |";
        }
        return text;
    }

    // ---- for others ----

    static QString escaped(const QString& text, QStringView characters)
    {
        QString result;
        for (const QChar c : text) {
            if (characters.contains(c))
                result += u'\\';
            result += c == u'\n' ? QChar(u' ') : c;
        }
        return result;
    }

    QString picture(const PagePicture& picture) const
    {
        const QString alt = escaped(picture.alt, u"\\`*_[]");
        if (picture.src.startsWith(u"data:") && m_pictures == PageMarkdown::Pictures::Named)
            return alt.isEmpty() ? u"[Picture]"_s : u"[Picture: "_s + alt + u']';
        return u"!["_s + alt + u"]("_s + escaped(picture.src, u"]\\") + u')';
    }

    static QString embed(const PageEmbed& embed)
    {
        const QString label =
            embed.label.isEmpty() ? u"Corvelle"_s : escaped(embed.label, u"\\`*_[]");
        return u'[' + label + u"](corvelle://item/"_s + embed.id + u')';
    }

    const bool m_forOthers;
    const PageMarkdown::Pictures m_pictures;
};

} // namespace

QString PageMarkdown::markdownFromNode(const PageNode& node)
{
    return BlockWriter(false).block(node);
}

QString PageMarkdown::markdownFromNodes(const PageNodes& nodes)
{
    return BlockWriter(false).blocks(nodes, true);
}

QString PageMarkdown::markdownFromDoc(const PageNodes& nodes, Pictures pictures)
{
    const QString text = BlockWriter(true, pictures).blocks(nodes, true);
    QString tidy;
    tidy.reserve(text.size());
    int newlines = 0;
    for (const QChar c : text) {
        newlines = c == u'\n' ? newlines + 1 : 0;
        if (newlines <= 2)
            tidy += c;
    }
    return tidy.trimmed();
}

bool PageMarkdown::holdsPicturesOrEmbeds(const PageNode& node)
{
    if (node.type == Type::Image || node.type == Type::Embed)
        return true;
    if (node.type == Type::Table && !node.raw.isEmpty()) {
        const PageNodes rows = tableRows(node);
        return std::any_of(rows.begin(), rows.end(), holdsPicturesOrEmbeds);
    }
    return std::any_of(node.content.begin(), node.content.end(), holdsPicturesOrEmbeds);
}

} // namespace corvelle
