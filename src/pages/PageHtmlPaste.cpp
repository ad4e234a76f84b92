#include "pages/PageHtml.h"

#include <QStringList>

#include <algorithm>

namespace corvelle {

namespace {

using Type = PageNode::Type;

// The lines of a paragraph in which nothing is more than text; none for any other block.
bool addPlainLines(QStringList& lines, const PageNode& block)
{
    if (block.type != Type::Paragraph)
        return false;
    lines.append(QString());
    for (const PageNode& node : block.content) {
        if (node.type == Type::HardBreak)
            lines.append(QString());
        else if (node.type == Type::Text && !node.marks && !node.link)
            lines.back() += node.text;
        else
            return false;
    }
    return true;
}

QStringView withoutLeading(QStringView line, QStringView characters)
{
    while (!line.isEmpty() && characters.contains(line.front()))
        line = line.sliced(1);
    return line;
}
qsizetype countLeading(QStringView line, bool (*test)(QChar))
{
    return std::find_if_not(line.begin(), line.end(), test) - line.begin();
}

// Blanks, and something behind them.
bool isFollowedByWord(QStringView rest)
{
    const qsizetype blanks = countLeading(rest, [](QChar c) { return c.isSpace(); });
    return blanks > 0 && blanks < rest.size();
}

bool isBoxItem(QStringView rest)
{
    return rest.size() >= 5 && rest[0] == u' ' && rest[1] == u'[' &&
           QStringView(u" xX").contains(rest[2]) && rest[3] == u']' && rest[4].isSpace();
}

} // namespace

bool PageHTML::isMarkdownLine(QStringView line)
{
    line = line.sliced(countLeading(line, [](QChar c) { return c.isSpace(); }));
    if (line.isEmpty())
        return false;
    switch (line.front().unicode()) {
    case u'-':
    case u'*':
    case u'+':
        return isBoxItem(line.sliced(1)) || isFollowedByWord(line.sliced(1));
    case u'>':
        return line.size() > 1 && line[1].isSpace();
    case u'`':
        return line.startsWith(u"```");
    case u'|':
        return line.sliced(1).contains(u'|');
    case u'#': {
        const QStringView rest = withoutLeading(line, u"#");
        return line.size() - rest.size() <= 6 && isFollowedByWord(rest);
    }
    default:
        break;
    }
    const qsizetype digits = countLeading(line, [](QChar c) { return c >= u'0' && c <= u'9'; });
    return digits >= 1 && digits <= 3 && digits < line.size() &&
           (line[digits] == u'.' || line[digits] == u')') &&
           isFollowedByWord(line.sliced(digits + 1));
}

QString PageHTML::wrappedMarkdown(const PageNodes& nodes)
{
    QStringList lines;
    for (const PageNode& node : nodes)
        if (!addPlainLines(lines, node))
            return {};
    const auto words = std::count_if(
        lines.begin(), lines.end(), [](const QString& line) { return !line.isEmpty(); });
    const auto marked = std::count_if(lines.begin(), lines.end(), &PageHTML::isMarkdownLine);
    return marked * 2 > words ? lines.join(u'\n') : QString();
}

} // namespace corvelle
