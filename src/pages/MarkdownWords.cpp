#include "pages/MarkdownWords.h"

#include "pages/MarkdownInline.h"
#include "pages/MarkdownLines.h"

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Type = PageNode::Type;
using Place = MarkdownWords::Place;

// What stands before a text and behind it. A null character can stand in it.
constexpr QChar outsideOfText = u'\n';

bool isPunctuation(QChar c)
{
    return c.isPunct() || c.isSymbol();
}

struct Style
{
    Marks marks;
    std::shared_ptr<const Link> link;
};

bool sameLink(const std::shared_ptr<const Link>& left, const std::shared_ptr<const Link>& right)
{
    return left == right || (left && right && *left == *right);
}

// One inline stretch: text of one style, or a mention or a break.
struct Run
{
    Type type = Type::Text;
    QString text;
    Style style;
    const PageNode* node = nullptr;
};

constexpr Marks delimited = Marks(Mark::Bold) | Mark::Italic | Mark::Strike;

// ---- what can't be written is given up ----

bool hasMark(const Run& run, Mark mark)
{
    return run.type == Type::Text && run.style.marks.testFlag(mark);
}

// Blanks at the ends of a block and beside a break aren't written, but as code.
void dropEdgeBlanks(std::vector<Run>& runs)
{
    const auto isPlain = [&](size_t i) {
        return runs[i].type == Type::Text && !runs[i].style.marks.testFlag(Mark::Code);
    };
    const auto isBreak = [&](size_t i) { return runs[i].type == Type::HardBreak; };
    for (size_t i = 0; i < runs.size(); ++i) {
        const auto trim = [&](size_t at, bool front) {
            QString& text = runs[at].text;
            while (!text.isEmpty() && markdown::isBlank(front ? text.front() : text.back()))
                text.remove(front ? 0 : text.size() - 1, 1);
            return !text.isEmpty();
        };
        if (i == 0 || isBreak(i - 1))
            for (size_t at = i; at < runs.size() && isPlain(at) && !trim(at, true);)
                ++at;
        if (i + 1 == runs.size() || isBreak(i + 1))
            for (size_t at = i + 1; at-- > 0 && isPlain(at) && !trim(at, false);)
                ;
    }
    std::erase_if(
        runs, [](const Run& run) { return run.type == Type::Text && run.text.isEmpty(); });
}

// Takes the mark from the characters at the ends of each of its stretches, as long as `gives` says
// so of a character and of the one outside.
template<class Gives>
void giveUpEdges(std::vector<Run>& runs, Mark mark, const Gives& gives)
{
    const auto split = [&](size_t at, qsizetype length) { // the first part stays at `at`
        Run rest = runs[at];
        rest.text = rest.text.mid(length);
        runs[at].text.truncate(length);
        runs.insert(runs.begin() + static_cast<ptrdiff_t>(at) + 1, std::move(rest));
    };
    const auto edge = [&](size_t at, bool front) {
        return runs[at].type != Type::Text ? QChar(u'[')
               : front                     ? runs[at].text.front()
                                           : runs[at].text.back();
    };
    for (size_t i = 0; i < runs.size(); ++i) {
        if (!hasMark(runs[i], mark))
            continue;
        size_t end = i;
        while (end < runs.size() && hasMark(runs[end], mark))
            ++end;
        QChar outside = i > 0 ? edge(i - 1, false) : outsideOfText;
        while (i < end && gives(runs[i].text.front(), outside) &&
               !runs[i].style.marks.testFlag(Mark::Code)) {
            outside = runs[i].text.front();
            if (runs[i].text.size() > 1) {
                split(i, 1);
                ++end;
            }
            runs[i++].style.marks &= ~Marks(mark);
        }
        outside = end < runs.size() ? edge(end, true) : outsideOfText;
        while (end > i && gives(runs[end - 1].text.back(), outside) &&
               !runs[end - 1].style.marks.testFlag(Mark::Code)) {
            outside = runs[end - 1].text.back();
            if (runs[end - 1].text.size() > 1) {
                split(end - 1, runs[end - 1].text.size() - 1);
                ++end;
            }
            runs[--end].style.marks &= ~Marks(mark);
        }
        i = std::max(i, end);
    }
}

void joinAlike(std::vector<Run>& runs)
{
    std::vector<Run> joined;
    for (Run& run : runs) {
        if (!joined.empty() && run.type == Type::Text && joined.back().type == Type::Text &&
            run.style.marks == joined.back().style.marks &&
            sameLink(run.style.link, joined.back().style.link))
            joined.back().text += run.text;
        else
            joined.push_back(std::move(run));
    }
    runs = std::move(joined);
}

// ---- writing ----

// One opened mark.
struct Open
{
    Mark mark = Mark::Bold; // of a link it says nothing
    std::shared_ptr<const Link> link;
    QString closing;
};

// How a mark is written that opens right behind another one's star.
enum class SecondMark { Underscore, Star };

class Writer
{
public:
    Writer(Place place, bool forOthers, SecondMark secondMark = SecondMark::Underscore)
        : m_place(place)
        , m_forOthers(forOthers)
        , m_secondMark(secondMark)
    {}

    QString write(const std::vector<Run>& runs)
    {
        for (size_t i = 0; i < runs.size(); ++i) {
            change(runs, i);
            put(runs, i);
        }
        change(runs, runs.size());
        return std::move(m_out);
    }

    // Whether a delimiter stands where it can't do its work.
    bool failed() const { return m_failed; }
    // Whether one stands where it could be taken for something else too.
    bool isDoubtful() const { return m_doubtful; }

private:
    static bool goesOn(const Open& open, const std::vector<Run>& runs, size_t at)
    {
        if (at >= runs.size() || runs[at].type != Type::Text)
            return false;
        return open.link ? sameLink(open.link, runs[at].style.link)
                         : runs[at].style.marks.testFlag(open.mark);
    }

    static QChar firstCharacter(const std::vector<Run>& runs, size_t at)
    {
        if (at >= runs.size())
            return outsideOfText;
        const Run& run = runs[at];
        if (run.type == Type::HardBreak)
            return u'\\';
        return run.type == Type::Text && !run.style.marks.testFlag(Mark::Code) ? run.text.front()
                                                                               : QChar(u'[');
    }

    // Closes and opens what changes before the run.
    void change(const std::vector<Run>& runs, size_t at)
    {
        size_t kept = 0;
        while (kept < m_open.size() && goesOn(m_open[kept], runs, at))
            ++kept;
        std::vector<Open> opening;
        if (at < runs.size() && runs[at].type == Type::Text) {
            const Style& style = runs[at].style;
            const auto isOpen = [&](auto is) {
                return std::any_of(
                    m_open.begin(), m_open.begin() + static_cast<ptrdiff_t>(kept), is);
            };
            if (style.link && !isOpen([](const Open& o) { return bool(o.link); }))
                opening.push_back({Mark::Bold, style.link, {}});
            for (const Mark mark : {Mark::Bold, Mark::Italic, Mark::Strike, Mark::Underline})
                if (style.marks.testFlag(mark) &&
                    !isOpen([mark](const Open& o) { return !o.link && o.mark == mark; }))
                    opening.push_back({mark, {}, {}});
        }
        // The longer a mark goes on, the further out it stands.
        const auto length = [&](const Open& open) {
            size_t end = at;
            while (goesOn(open, runs, end))
                ++end;
            return end;
        };
        if (opening.size() > 1)
            std::stable_sort(opening.begin(), opening.end(),
                [&](const Open& l, const Open& r) { return length(l) > length(r); });

        const QChar next = firstCharacter(runs, at);
        while (m_open.size() > kept) {
            const Open open = std::move(m_open.back());
            m_open.pop_back();
            const bool isLast = m_open.size() == kept && opening.empty();
            close(open, isLast ? next : QChar(u'*'));
        }
        for (size_t i = 0; i < opening.size(); ++i) {
            this->open(opening[i], i + 1 < opening.size() ? QChar(u'*') : next);
            m_open.push_back(std::move(opening[i]));
        }
    }

    void open(Open& open, QChar next)
    {
        if (open.link) {
            open.closing = u"]("_s + markdownDestination(open.link->href) + u')';
            m_out += u'[';
            return;
        }
        if (open.mark == Mark::Underline) {
            open.closing = u"</u>"_s;
            m_out += u"<u>";
            return;
        }
        const bool isSecond = m_out.endsWith(u'*') && !m_out.endsWith(u"\\*");
        const QChar star = isSecond && m_secondMark == SecondMark::Underscore ? u'_' : u'*';
        open.closing =
            open.mark == Mark::Strike ? u"~~"_s : QString(open.mark == Mark::Bold ? 2 : 1, star);
        const QChar before = m_out.isEmpty() ? outsideOfText : m_out.back();
        m_failed |=
            next.isSpace() || (isPunctuation(next) && !before.isSpace() && !isPunctuation(before));
        m_doubtful |= !before.isSpace();
        m_out += open.closing;
    }

    void close(const Open& open, QChar next)
    {
        if (!open.link && open.mark != Mark::Underline) {
            const QChar before = m_out.isEmpty() ? outsideOfText : m_out.back();
            m_failed |= before.isSpace() ||
                        (isPunctuation(before) && !next.isSpace() && !isPunctuation(next));
            m_doubtful |= !next.isSpace();
        }
        m_out += open.closing;
    }

    bool isInLink() const
    {
        return std::any_of(
            m_open.begin(), m_open.end(), [](const Open& open) { return bool(open.link); });
    }

    void put(const std::vector<Run>& runs, size_t at)
    {
        const Run& run = runs[at];
        if (run.type == Type::HardBreak) {
            const bool atEnd = at + 1 == runs.size();
            if (m_place == Place::OneLine || atEnd || isInLink()) {
                m_out += u"<br>";
            } else {
                m_out += u"\\\n";
                m_lineStart = m_out.size();
            }
        } else if (run.type == Type::Mention) {
            mention(*run.node);
        } else if (run.style.marks.testFlag(Mark::Code)) {
            code(run.text);
        } else {
            const Run* next = at + 1 < runs.size() ? &runs[at + 1] : nullptr;
            text(run.text, next);
        }
    }

    void mention(const PageNode& node)
    {
        QString label;
        for (const QChar c : node.text) {
            const bool escapes = m_forOthers ? QStringView(u"\\`*_[]").contains(c)
                                             : QStringView(u"\\`[]").contains(c);
            if (escapes)
                label += u'\\';
            label += c == u'\n' || c == u'\r' || c == QChar(0x2028) ? QChar(u' ') : c;
        }
        if (!m_forOthers)
            m_out += u"[@"_s + label + u"]("_s + markdownDestination(u"node:"_s + node.name) + u')';
        else if (node.name.isEmpty())
            m_out += u'@' + label;
        else
            m_out += u"[@"_s + (label.isEmpty() ? u"Corvelle"_s : label) + u"](corvelle://item/"_s +
                     node.name + u')';
    }

    void code(const QString& text)
    {
        qsizetype longest = 0;
        for (qsizetype i = 0, run = 0; i < text.size(); ++i) {
            run = text[i] == u'`' ? run + 1 : 0;
            longest = std::max(longest, run);
        }
        const QString ticks(longest + 1, u'`');
        const bool pads = text.startsWith(u'`') || text.endsWith(u'`') || losesEdgeBlanks(text);
        m_out += ticks + (pads ? u" "_s : QString()) + text + (pads ? u" "_s : QString()) + ticks;
    }

    void text(const QString& text, const Run* next)
    {
        const bool inLink = isInLink();
        const bool atLineStart = m_place == Place::Lines && m_out.size() == m_lineStart;
        const qsizetype begin = m_out.size();
        qsizetype start = 0; // of what can be copied as it stands
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar after = i + 1 < text.size() ? text[i + 1] : QChar();
            bool escapes = false;
            switch (text[i].unicode()) {
            case u'\\':
                escapes = after.isNull() || isEscapable(after);
                break;
            case u'`':
            case u'*':
            case u'_':
            case u'~':
            case u'[':
                escapes = true;
                break;
            case u']':
                escapes = inLink || after == u'(' ||
                          (after.isNull() && next && startsWithParenthesis(*next));
                break;
            case u'<':
                escapes = (after.isNull() && next) || looksLikeTag(QStringView(text).mid(i + 1));
                break;
            default:
                break;
            }
            if (!escapes)
                continue;
            m_out += QStringView(text).mid(start, i - start);
            m_out += u'\\';
            start = i;
        }
        m_out += QStringView(text).mid(start);
        if (atLineStart)
            escapeLineStart(begin, next == nullptr || next->type == Type::HardBreak);
    }

    static bool startsWithParenthesis(const Run& run)
    {
        return run.type == Type::Text && run.text.startsWith(u'(');
    }

    static bool looksLikeTag(QStringView rest)
    {
        return rest.startsWith(u"u>", Qt::CaseInsensitive) ||
               rest.startsWith(u"/u>", Qt::CaseInsensitive) ||
               rest.startsWith(u"br", Qt::CaseInsensitive);
    }

    // What would begin a block of another kind there.
    void escapeLineStart(qsizetype begin, bool isWholeLine)
    {
        const QStringView line = QStringView(m_out).mid(begin);
        const QChar first = line.front();
        const auto endsOrSpace = [&](qsizetype at) {
            return at >= line.size() || line[at].isSpace();
        };
        bool escapes = false;
        switch (first.unicode()) {
        case u'#':
            escapes = markdown::headingLevel(line) > 0;
            break;
        case u'>':
        case u'|':
            escapes = true;
            break;
        case u'-':
        case u'+':
            escapes = endsOrSpace(1);
            [[fallthrough]];
        case u'=':
            escapes |= first != u'+' && std::all_of(line.begin(), line.end(),
                                            [&](QChar c) { return c == first || c.isSpace(); });
            break;
        default: // a box's bracket is escaped already
            break;
        }
        if (!escapes && isWholeLine && markdown::isTableSeparator(line))
            escapes = true;
        if (escapes) { // white space that is no blank may stand before a separator
            const auto mark =
                std::find_if_not(line.begin(), line.end(), [](QChar c) { return c.isSpace(); });
            m_out.insert(begin + std::distance(line.begin(), mark), u'\\');
            return;
        }
        qsizetype digits = 0;
        while (digits < line.size() && line[digits] >= u'0' && line[digits] <= u'9')
            ++digits;
        if (digits >= 1 && digits <= 9 && digits < line.size() &&
            (line[digits] == u'.' || line[digits] == u')') && endsOrSpace(digits + 1))
            m_out.insert(begin + digits, u'\\');
    }

    const Place m_place;
    const bool m_forOthers;
    const SecondMark m_secondMark;
    QString m_out;
    qsizetype m_lineStart = 0;
    std::vector<Open> m_open;
    bool m_failed = false, m_doubtful = false;
};

bool endsTextLine(QChar c)
{
    return c == u'\n' || c == u'\r' || c == QChar(0x2028) || c == QChar(0x2029);
}

std::vector<Run> runsOf(const PageNodes& nodes)
{
    std::vector<Run> runs;
    runs.reserve(nodes.size());
    for (const PageNode& node : nodes) {
        Run run{node.type, {}, {}, &node};
        if (node.type == Type::Text) {
            run.text = node.text;
            run.style = {node.marks, node.link};
            // A line end in a text is a break.
            if (std::any_of(node.text.begin(), node.text.end(), endsTextLine))
                std::replace_if(run.text.begin(), run.text.end(), endsTextLine, QChar(u' '));
        }
        runs.push_back(std::move(run));
    }
    return runs;
}

// What reading the words must give, as far as words, marks and links go.
bool readsBack(const QString& markdown, const std::vector<Run>& runs)
{
    const PageNodes nodes = inlinesFromMarkdown(markdown);
    size_t n = 0;
    qsizetype inNode = 0;
    for (const Run& run : runs) {
        if (run.type != Type::Text) {
            if (n >= nodes.size() || nodes[n++].type != run.type)
                return false;
            continue;
        }
        for (qsizetype at = 0; at < run.text.size();) {
            if (n >= nodes.size() || nodes[n].type != Type::Text ||
                nodes[n].marks != run.style.marks || bool(nodes[n].link) != bool(run.style.link))
                return false;
            const qsizetype length = std::min(nodes[n].text.size() - inNode, run.text.size() - at);
            if (QStringView(nodes[n].text).mid(inNode, length) !=
                QStringView(run.text).mid(at, length))
                return false;
            at += length;
            inNode += length;
            if (inNode == nodes[n].text.size()) {
                ++n;
                inNode = 0;
            }
        }
    }
    return n == nodes.size();
}

bool isMarked(const std::vector<Run>& runs)
{
    return std::any_of(
        runs.begin(), runs.end(), [](const Run& run) { return bool(run.style.marks & delimited); });
}

} // namespace

QString markdownDestination(const QString& address)
{
    int open = 0;
    bool isBare = true;
    QString escaped;
    for (qsizetype i = 0; i < address.size(); ++i) {
        const QChar c = address[i];
        if (c == u'\n' || c == u'\r') {
            escaped += c == u'\n' ? u"%0A" : u"%0D";
            continue;
        }
        if (c == u'(' && ++open > deepestParentheses)
            isBare = false;
        if (c == u')' && --open < 0)
            isBare = false;
        if (c.isSpace() || c == u'<')
            isBare = false;
        // A backtick would begin code with one further on.
        if (c == u'`' || (c == u'\\' && (i + 1 == address.size() || isEscapable(address[i + 1]))))
            escaped += u'\\';
        escaped += c;
    }
    if (isBare && open == 0)
        return escaped;
    escaped.replace(u'<', u"\\<"_s).replace(u'>', u"\\>"_s);
    return u'<' + escaped + u'>';
}

QString MarkdownWords::of(const PageNodes& nodes) const
{
    std::vector<Run> runs = runsOf(nodes);
    dropEdgeBlanks(runs);
    const auto write = [&](bool& isSure) {
        joinAlike(runs);
        Writer writer(place, forOthers);
        QString words = writer.write(runs);
        isSure = !writer.failed() && (!writer.isDoubtful() || forOthers || readsBack(words, runs));
        return words;
    };
    bool isSure = true;
    if (!isMarked(runs))
        return write(isSure);
    constexpr Mark marks[] = {Mark::Bold, Mark::Italic, Mark::Strike};
    for (const Mark mark : marks)
        giveUpEdges(runs, mark, [](QChar c, QChar) { return c.isSpace(); });
    QString words = write(isSure);
    if (isSure)
        return words;
    // Inside a word an underscore opens nothing; stars do, where they can't be mistaken.
    words = Writer(place, forOthers, SecondMark::Star).write(runs);
    if (readsBack(words, runs))
        return words;
    for (const Mark mark : marks)
        giveUpEdges(runs, mark, [](QChar c, QChar outside) {
            return c.isSpace() ||
                   (isPunctuation(c) && !outside.isSpace() && !isPunctuation(outside));
        });
    words = write(isSure);
    for (const Mark mark : {Mark::Strike, Mark::Italic, Mark::Bold}) {
        if (isSure)
            break;
        for (Run& run : runs)
            run.style.marks &= ~Marks(mark);
        words = write(isSure);
    }
    return words;
}

} // namespace corvelle
