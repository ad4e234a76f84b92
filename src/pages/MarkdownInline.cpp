#include "pages/MarkdownInline.h"

#include "pages/MarkdownLines.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;

constexpr int deepestLinks = 32; // a link's words may hold links
constexpr QChar underlineTag = u'u';

char32_t codePointBefore(QStringView text, qsizetype at)
{
    if (at >= 2 && text[at - 1].isLowSurrogate() && text[at - 2].isHighSurrogate())
        return QChar::surrogateToUcs4(text[at - 2], text[at - 1]);
    return at > 0 ? text[at - 1].unicode() : U' ';
}

char32_t codePointAt(QStringView text, qsizetype at)
{
    if (at + 1 < text.size() && text[at].isHighSurrogate() && text[at + 1].isLowSurrogate())
        return QChar::surrogateToUcs4(text[at], text[at + 1]);
    return at < text.size() ? text[at].unicode() : U' ';
}

bool isPunctuation(char32_t c)
{
    return QChar::isPunct(c) || QChar::isSymbol(c);
}

// Whether the character can be anything but itself.
bool isSpecial(QChar c)
{
    switch (c.unicode()) {
    case u'\\':
    case u'\n':
    case u'`':
    case u'<':
    case u'[':
    case u'*':
    case u'_':
    case u'~':
        return true;
    default:
        return false;
    }
}

// Of which a "\" makes the next character literal.
QString withoutEscapes(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\' && i + 1 < text.size() && isEscapable(text[i + 1]))
            ++i;
        result += text[i];
    }
    return result;
}

// A run of delimiters in the working list of nodes. There stands a text in its place, which takes
// the delimiters that are left over.
struct Piece
{
    size_t node = 0;
    QChar delimiter; // "*", "_", "~", or "u" for a tag
    int count = 0;   // delimiters left
    int length = 0;  // at the start
    bool open = false, close = false;
    std::array<short, 5> begins = {}, ends = {}; // of each mark, the pairs that begin or end here
};

constexpr std::array<Mark, 5> allMarks = {
    Mark::Bold, Mark::Italic, Mark::Strike, Mark::Underline, Mark::Code};

size_t markIndex(QChar delimiter, int used)
{
    if (delimiter == u'~')
        return 2;
    if (delimiter == underlineTag)
        return 3;
    return used == 2 ? 0 : 1;
}

class InlineReader
{
public:
    explicit InlineReader(QStringView text)
        : m_text(text)
    {
        findCodeRuns();
        findBrackets();
    }

    PageNodes read() { return range(0, m_text.size(), 0); }

private:
    // ---- looking ahead, once for the whole text ----

    void findCodeRuns()
    {
        for (qsizetype at = m_text.indexOf(u'`'); at >= 0; at = m_text.indexOf(u'`', at)) {
            const qsizetype length = runLength(at);
            if (m_codeRuns.size() <= size_t(length))
                m_codeRuns.resize(static_cast<size_t>(length) + 1);
            m_codeRuns[static_cast<size_t>(length)].push_back(at);
            at += length;
        }
    }

    qsizetype runLength(qsizetype at) const
    {
        qsizetype end = at;
        while (end < m_text.size() && m_text[end] == m_text[at])
            ++end;
        return end - at;
    }

    // Where the run begins that closes code opened by a run of that length before `at`; -1:
    // nowhere.
    qsizetype codeEnd(qsizetype length, qsizetype at) const
    {
        if (size_t(length) >= m_codeRuns.size())
            return -1;
        const std::vector<qsizetype>& places = m_codeRuns[static_cast<size_t>(length)];
        const auto next = std::lower_bound(places.begin(), places.end(), at);
        return next == places.end() ? -1 : *next;
    }

    // The partner of each "[" on its line, past escapes and code.
    void findBrackets()
    {
        if (!m_text.contains(u'['))
            return;
        std::vector<qsizetype> open;
        m_partners.reserve(16);
        for (qsizetype at = 0; at < m_text.size(); ++at) {
            const QChar c = m_text[at];
            if (c == u'\\') {
                ++at;
            } else if (c == u'`') {
                const qsizetype length = runLength(at);
                const qsizetype end = codeEnd(length, at + length);
                at = (end < 0 ? at : end) + length - 1;
            } else if (c == u'\n') {
                open.clear();
            } else if (c == u'[') {
                open.push_back(at);
            } else if (c == u']' && !open.empty()) {
                m_partners.push_back({open.back(), at});
                open.pop_back();
            }
        }
        std::sort(m_partners.begin(), m_partners.end());
    }

    qsizetype partnerOf(qsizetype bracket)
    {
        const auto found = std::lower_bound(
            m_partners.begin(), m_partners.end(), std::pair(bracket, qsizetype(0)));
        return found != m_partners.end() && found->first == bracket ? found->second : -1;
    }

    // The next such character from `at` on that no "\\" makes literal; the text's end when there is
    // none.
    qsizetype nextUnescaped(char16_t wanted, qsizetype at)
    {
        if (!m_findsUnescaped) {
            m_findsUnescaped = true;
            for (qsizetype i = 0; i < m_text.size(); ++i) {
                const size_t kind = kindOf(m_text[i].unicode());
                if (kind < m_unescaped.size())
                    m_unescaped[kind].push_back(i);
                else if (m_text[i] == u'\\')
                    ++i;
            }
        }
        const std::vector<qsizetype>& places = m_unescaped[kindOf(wanted)];
        const auto next = std::lower_bound(places.begin(), places.end(), at);
        return next == places.end() ? m_text.size() : *next;
    }

    static size_t kindOf(char16_t c)
    {
        constexpr QStringView kinds = u">\n\"'()";
        const qsizetype kind = kinds.indexOf(QChar(c));
        return static_cast<size_t>(kind < 0 ? kinds.size() : kind);
    }

    // ---- reading ----

    // Nodes and delimiters as they are found.
    struct Working
    {
        PageNodes nodes;
        std::vector<Piece> pieces;
        QString literal; // that stands before what comes next

        void addLiteral(QStringView text)
        {
            if (literal.isEmpty())
                literal = text.toString();
            else
                literal += text;
        }
        void flush()
        {
            if (!literal.isEmpty())
                nodes.push_back(PageNode::ofText(std::exchange(literal, {})));
        }
        void add(PageNode node)
        {
            flush();
            nodes.push_back(std::move(node));
        }
        void add(Piece piece)
        {
            flush();
            piece.node = nodes.size();
            pieces.push_back(piece);
            nodes.push_back(PageNode::of(Type::Text));
        }
    };

    PageNodes range(qsizetype from, qsizetype end, int depth)
    {
        Working working;
        for (qsizetype at = from; at < end;) {
            if (const qsizetype plain = plainEnd(at, end); plain > at) {
                working.addLiteral(m_text.mid(at, plain - at));
                at = plain;
                continue;
            }
            const QChar c = m_text[at];
            if (c == u'\\') {
                const bool escapes = at + 1 < end && isEscapable(m_text[at + 1]);
                if (at + 1 >= end || m_text[at + 1] != u'\n')
                    working.literal += escapes ? m_text[at + 1] : c;
                at += escapes ? 2 : 1;
            } else if (c == u'\n') {
                working.add(PageNode::of(Type::HardBreak));
                ++at;
            } else if (c == u'`') {
                code(at, end, working);
            } else if (c == u'<') {
                if (!tag(at, end, working))
                    working.literal += m_text[at++];
            } else if (c == u'[') {
                if (!link(at, end, depth, working))
                    working.literal += m_text[at++];
            } else {
                delimiters(at, from, end, working);
            }
        }
        working.flush();
        pair(working.pieces);
        return marked(working);
    }

    qsizetype plainEnd(qsizetype at, qsizetype end) const
    {
        while (at < end && !isSpecial(m_text[at]))
            ++at;
        return at;
    }

    void code(qsizetype& at, qsizetype end, Working& working) const
    {
        const qsizetype length = std::min(runLength(at), end - at);
        const qsizetype close = codeEnd(length, at + length);
        if (close < 0 || close + length > end) {
            working.addLiteral(m_text.mid(at, length));
            at += length;
            return;
        }
        QString inside = m_text.mid(at + length, close - at - length).toString();
        inside.replace(u'\n', u' ');
        if (losesEdgeBlanks(inside))
            inside = inside.mid(1, inside.size() - 2);
        if (!inside.isEmpty())
            working.add(PageNode::ofText(inside, Mark::Code));
        at = close + length;
    }

    bool tag(qsizetype& at, qsizetype end, Working& working) const
    {
        const auto is = [&](QStringView tag) {
            return end - at >= tag.size() &&
                   m_text.mid(at, tag.size()).compare(tag, Qt::CaseInsensitive) == 0;
        };
        for (const QStringView name :
            {QStringView(u"<br>"), QStringView(u"<br/>"), QStringView(u"<br />")})
            if (is(name)) {
                working.add(PageNode::of(Type::HardBreak));
                at += name.size();
                return true;
            }
        Piece piece;
        piece.open = is(u"<u>");
        piece.close = is(u"</u>");
        if (!piece.open && !piece.close)
            return false;
        piece.delimiter = underlineTag;
        piece.count = piece.length = 1;
        working.add(piece);
        const qsizetype length = piece.open ? 3 : 4;
        working.nodes.back().text = m_text.mid(at, length).toString();
        at += length;
        return true;
    }

    bool link(qsizetype& at, qsizetype end, int depth, Working& working)
    {
        if (depth >= deepestLinks)
            return false;
        const qsizetype close = partnerOf(at);
        if (close < 0 || close + 1 >= end || m_text[close + 1] != u'(')
            return false;
        QString address;
        const qsizetype after = destination(close + 2, end, address);
        if (after < 0)
            return false;
        const QStringView label = m_text.mid(at + 1, close - at - 1);
        if (address.startsWith(u"node:")) {
            PageNode mention = PageNode::of(Type::Mention);
            mention.name =
                address.mid(5, address.indexOf(u'?') < 0 ? -1 : address.indexOf(u'?') - 5);
            mention.text = withoutEscapes(label);
            if (mention.text.startsWith(u'@'))
                mention.text.remove(0, 1);
            if (mention.text.isEmpty())
                mention.text = u"item"_s; // as a page names one that has no label
            working.add(std::move(mention));
            at = after;
            return true;
        }
        PageNodes nodes = range(at + 1, close, depth + 1);
        bool hasText = false;
        const auto link = std::make_shared<const Link>(Link{address, {}});
        for (PageNode& node : nodes)
            if (node.type == Type::Text) {
                hasText = true;
                if (!node.link)
                    node.link = link;
            }
        if (!hasText) { // no link: what is written around the label stays
            nodes.insert(nodes.begin(), PageNode::ofText(u"["_s));
            nodes.push_back(PageNode::ofText(m_text.mid(close, after - close).toString()));
        }
        for (PageNode& node : nodes)
            working.add(std::move(node));
        at = after;
        return true;
    }

    qsizetype skipBlanks(qsizetype at, qsizetype end) const
    {
        while (at < end && (markdown::isBlank(m_text[at]) || m_text[at] == u'\n'))
            ++at;
        return at;
    }

    // Behind the ")"; -1 when this is no address.
    qsizetype destination(qsizetype at, qsizetype end, QString& address)
    {
        at = skipBlanks(at, end);
        if (at >= end)
            return -1;
        if (m_text[at] == u'<') {
            const qsizetype close = nextUnescaped(u'>', at + 1);
            if (close >= end || nextUnescaped(u'\n', at + 1) < close)
                return -1;
            address = withoutEscapes(m_text.mid(at + 1, close - at - 1));
            at = close + 1;
        } else {
            const qsizetype from = at;
            at = bareEnd(at, end);
            if (at < 0)
                return -1;
            address = withoutEscapes(m_text.mid(from, at - from));
        }
        const qsizetype behind = skipBlanks(at, end);
        if (behind < end && behind > at) {
            const QChar c = m_text[behind];
            const char16_t closing = c == u'(' ? u')' : c.unicode();
            if (c == u'"' || c == u'\'' || c == u'(') {
                const qsizetype title = nextUnescaped(closing, behind + 1);
                if (title >= end || (c == u'(' && nextUnescaped(u'(', behind + 1) < title))
                    return -1;
                at = skipBlanks(title + 1, end);
                return at < end && m_text[at] == u')' ? at + 1 : -1;
            }
        }
        return behind < end && m_text[behind] == u')' ? behind + 1 : -1;
    }

    qsizetype bareEnd(qsizetype at, qsizetype end) const
    {
        int open = 0;
        for (; at < end; ++at) {
            const QChar c = m_text[at];
            if (c == u'\\' && at + 1 < end && isEscapable(m_text[at + 1]))
                ++at;
            else if (c.isSpace())
                return open == 0 ? at : -1;
            else if (c == u'(' && ++open > deepestParentheses)
                return -1;
            else if (c == u')' && --open < 0)
                return at;
        }
        return -1;
    }

    void delimiters(qsizetype& at, qsizetype from, qsizetype end, Working& working) const
    {
        const qsizetype length = std::min(runLength(at), end - at);
        const char32_t before = at > from ? codePointBefore(m_text, at) : U' ';
        const char32_t after = at + length < end ? codePointAt(m_text, at + length) : U' ';
        const bool spaceBefore = QChar::isSpace(before), spaceAfter = QChar::isSpace(after);
        const bool punctBefore = isPunctuation(before), punctAfter = isPunctuation(after);
        Piece piece;
        piece.open = !spaceAfter && (!punctAfter || spaceBefore || punctBefore);
        piece.close = !spaceBefore && (!punctBefore || spaceAfter || punctAfter);
        if (m_text[at] == u'_' && piece.open && piece.close) {
            piece.open = punctBefore;
            piece.close = punctAfter;
        }
        piece.delimiter = m_text[at];
        piece.count = piece.length = static_cast<int>(length);
        working.add(piece);
        at += length;
    }

    // ---- marks ----

    // Pairs closers with the nearest opener of their kind; what stands between is spent.
    static void pair(std::vector<Piece>& pieces)
    {
        std::vector<size_t> openers; // a stack
        // Below these there is no opener for such a closer.
        std::array<size_t, 4 * 2 * 3> floors = {};
        for (size_t i = 0; i < pieces.size(); ++i) {
            Piece& closer = pieces[i];
            while (closer.close && closer.count > 0) {
                size_t& floor = floors[floorOf(closer)];
                size_t found = openers.size();
                while (found > floor && !fits(pieces[openers[found - 1]], closer))
                    --found;
                if (found <= floor) {
                    floor = openers.size();
                    break;
                }
                Piece& opener = pieces[openers[found - 1]];
                const bool takesTwo =
                    closer.delimiter != underlineTag && opener.count >= 2 && closer.count >= 2;
                const int used = takesTwo ? 2 : 1;
                const size_t mark = markIndex(closer.delimiter, used);
                ++opener.begins[mark];
                ++closer.ends[mark];
                opener.count -= used;
                closer.count -= used;
                openers.resize(opener.count > 0 ? found : found - 1);
                for (size_t& each : floors)
                    each = std::min(each, openers.size());
            }
            if (closer.open && closer.count > 0)
                openers.push_back(i);
        }
    }

    static size_t floorOf(const Piece& closer)
    {
        const size_t kind = closer.delimiter == u'*'   ? 0
                            : closer.delimiter == u'_' ? 1
                            : closer.delimiter == u'~' ? 2
                                                       : 3;
        if (kind >= 2)
            return kind * 6 + (kind == 2 && closer.count >= 2 ? 1 : 0);
        return kind * 6 + (closer.open ? 3 : 0) + static_cast<size_t>(closer.length % 3);
    }

    static bool fits(const Piece& opener, const Piece& closer)
    {
        if (opener.delimiter != closer.delimiter)
            return false;
        if (closer.delimiter == u'~')
            return opener.count >= 2 && closer.count >= 2;
        if (closer.delimiter == underlineTag)
            return true;
        const bool both = (opener.open && opener.close) || (closer.open && closer.close);
        return !both || (opener.length + closer.length) % 3 != 0 ||
               (opener.length % 3 == 0 && closer.length % 3 == 0);
    }

    // The nodes with their marks, equal neighbours joined; as many as there is room for.
    static PageNodes marked(Working& working)
    {
        PageNodes& nodes = working.nodes;
        size_t kept = 0;
        const auto keep = [&](PageNode& node, Marks marks) {
            if (node.type == Type::Text) {
                if (node.text.isEmpty())
                    return;
                node.marks |= marks;
                if (kept > 0 && joins(nodes[kept - 1], node)) {
                    nodes[kept - 1].text += node.text;
                    return;
                }
            }
            if (&nodes[kept] != &node)
                nodes[kept] = std::move(node);
            ++kept;
        };
        OpenMarks open;
        size_t at = 0;
        for (const Piece& piece : working.pieces) {
            for (; at < piece.node; ++at)
                keep(nodes[at], open.marks);
            open.add(piece.ends, -1);
            if (piece.delimiter != underlineTag)
                nodes[at].text = QString(piece.count, piece.delimiter);
            else if (piece.count == 0)
                nodes[at].text.clear();
            keep(nodes[at++], open.marks);
            open.add(piece.begins, 1);
        }
        for (; at < nodes.size(); ++at)
            keep(nodes[at], open.marks);
        const auto end = nodes.begin() + static_cast<ptrdiff_t>(kept);
        return {std::make_move_iterator(nodes.begin()), std::make_move_iterator(end)};
    }

    // How often each mark has begun and not ended.
    struct OpenMarks
    {
        std::array<int, allMarks.size()> depths = {};
        Marks marks;

        void add(const std::array<short, allMarks.size()>& pairs, int sign)
        {
            for (size_t i = 0; i < depths.size(); ++i) {
                depths[i] += sign * pairs[i];
                marks.setFlag(allMarks[i], depths[i] > 0);
            }
        }
    };

    static bool joins(const PageNode& left, const PageNode& right)
    {
        return left.type == Type::Text && left.marks == right.marks &&
               (left.link == right.link || (left.link && right.link && *left.link == *right.link));
    }

    const QStringView m_text;
    std::vector<std::vector<qsizetype>> m_codeRuns; // their places, by length
    std::vector<std::pair<qsizetype, qsizetype>> m_partners;
    std::array<std::vector<qsizetype>, 6> m_unescaped; // by kindOf()
    bool m_findsUnescaped = false;
};

} // namespace

bool isEscapable(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= u'!' && u <= u'/') || (u >= u':' && u <= u'@') || (u >= u'[' && u <= u'`') ||
           (u >= u'{' && u <= u'~');
}

bool losesEdgeBlanks(QStringView code)
{
    return code.size() >= 2 && code.front() == u' ' && code.back() == u' ' &&
           !std::all_of(code.begin(), code.end(), markdown::isBlank);
}

PageNodes inlinesFromMarkdown(QStringView text)
{
    PageNodes nodes;
    if (text.isEmpty())
        return nodes;
    if (std::any_of(text.begin(), text.end(), isSpecial))
        return InlineReader(text).read();
    nodes.push_back(PageNode::ofText(text.toString()));
    return nodes;
}

} // namespace corvelle
