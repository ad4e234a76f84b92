#include "pages/MarkdownLines.h"

#include <algorithm>

namespace corvelle {

namespace {

constexpr int tabColumns = 4;
constexpr size_t mostCellsOfARow = 1'000; // of a row; the last takes what is left of the line

QStringView trimmedOf(QStringView text)
{
    while (!text.isEmpty() && markdown::isBlank(text.front()))
        text = text.mid(1);
    while (!text.isEmpty() && markdown::isBlank(text.back()))
        text.chop(1);
    return text;
}

qsizetype runLength(QStringView text, QChar c)
{
    qsizetype length = 0;
    while (length < text.size() && text[length] == c)
        ++length;
    return length;
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

} // namespace

MarkdownLine MarkdownLine::of(QStringView text, int pad)
{
    MarkdownLine line{text, pad, pad, trimmedOf(text)};
    for (const QChar c : text) {
        if (!markdown::isBlank(c))
            break;
        line.indent += c == u'\t' ? tabColumns : 1;
    }
    return line;
}

MarkdownLine MarkdownLine::without(int columns) const
{
    const int fromPad = std::min(pad, columns);
    int left = columns - fromPad, restPad = pad - fromPad;
    QStringView rest = text;
    while (left > 0 && !rest.isEmpty() && markdown::isBlank(rest.front())) {
        const int width = rest.front() == u'\t' ? tabColumns : 1;
        restPad += std::max(width - left, 0);
        left -= width;
        rest = rest.mid(1);
    }
    MarkdownLine line = *this;
    line.text = rest;
    line.pad = restPad;
    line.indent = std::max(indent - columns, 0);
    return line;
}

void MarkdownLine::appendTo(QString& out, int columns) const
{
    const MarkdownLine rest = without(columns);
    for (int i = 0; i < rest.pad; ++i)
        out += u' ';
    out += rest.text;
}

namespace markdown {

std::optional<Fence> fence(QStringView trimmed)
{
    if (trimmed.isEmpty() || (trimmed.front() != u'`' && trimmed.front() != u'~'))
        return std::nullopt;
    const qsizetype count = runLength(trimmed, trimmed.front());
    const QStringView info = trimmedOf(trimmed.mid(count));
    if (count < 3 || (trimmed.front() == u'`' && info.contains(u'`')))
        return std::nullopt;
    return Fence{trimmed.front(), count, info};
}

bool closes(const Fence& fence, QStringView trimmed)
{
    return trimmed.size() >= fence.count && runLength(trimmed, fence.mark) == trimmed.size();
}

bool isRule(QStringView trimmed)
{
    if (trimmed.isEmpty())
        return false;
    const QChar mark = trimmed.front();
    if (mark != u'-' && mark != u'*' && mark != u'_')
        return false;
    int marks = 0;
    for (const QChar c : trimmed) {
        if (c != mark && c != u' ')
            return false;
        marks += c == mark;
    }
    return marks >= 3;
}

int headingLevel(QStringView trimmed)
{
    const qsizetype level = runLength(trimmed, u'#');
    if (level < 1 || level > 6 || (level < trimmed.size() && !trimmed[level].isSpace()))
        return 0;
    return static_cast<int>(level);
}

QStringView headingWords(QStringView trimmed)
{
    const QStringView words = trimmedOf(trimmed.mid(runLength(trimmed, u'#')));
    qsizetype end = words.size();
    const auto skipBack = [&](auto skips) {
        while (end > 0 && skips(words[end - 1]))
            --end;
    };
    const auto isSpace = [](QChar c) { return c.isSpace(); };
    skipBack(isSpace);
    const qsizetype closing = end;
    skipBack([](QChar c) { return c == u'#'; });
    if (end == closing || (end > 0 && !isSpace(words[end - 1])))
        return words;
    skipBack(isSpace);
    return words.left(end);
}

int setextLevel(QStringView trimmed)
{
    if (trimmed.isEmpty() || (trimmed.front() != u'=' && trimmed.front() != u'-') ||
        runLength(trimmed, trimmed.front()) != trimmed.size())
        return 0;
    return trimmed.front() == u'=' ? 1 : 2;
}

std::optional<ListMarker> listMarker(QStringView trimmed)
{
    if (trimmed.isEmpty())
        return std::nullopt;
    ListMarker marker;
    qsizetype length = 1;
    const QChar first = trimmed.front();
    if (first != u'-' && first != u'*' && first != u'+') {
        qsizetype digits = 0;
        while (digits < trimmed.size() && digits < 10 && isDigit(trimmed[digits]))
            ++digits;
        if (digits < 1 || digits > 9 || digits == trimmed.size() ||
            (trimmed[digits] != u'.' && trimmed[digits] != u')'))
            return std::nullopt;
        marker.ordered = true;
        marker.start = trimmed.left(digits).toInt();
        length = digits + 1;
        if (length < trimmed.size() && !trimmed[length].isSpace())
            return std::nullopt;
    } else if (trimmed.size() > 1 && trimmed[1] != u' ') {
        return std::nullopt;
    }
    QStringView rest = trimmed.mid(length);
    const QStringView words = trimmedOf(rest);
    // With more than four blanks only one of them belongs to the marker, and so it is with none.
    const qsizetype blanks = rest.size() - words.size();
    marker.width = static_cast<int>(length + (blanks > 4 || words.isEmpty() ? 1 : blanks));
    marker.text = words;
    const bool hasBox = words.size() >= 3 && words[0] == u'[' && words[2] == u']' &&
                        (words[1] == u' ' || words[1] == u'x' || words[1] == u'X') &&
                        (words.size() == 3 || words[3] == u' ');
    if (hasBox) {
        marker.task = true;
        marker.checked = words[1] != u' ';
        marker.text = trimmedOf(words.mid(3));
        marker.width += 4;
    }
    return marker;
}

bool isTableSeparator(QStringView trimmed)
{
    if (!trimmed.contains(u'|'))
        return false;
    if (trimmed.startsWith(u'|'))
        trimmed = trimmed.mid(1);
    if (trimmed.endsWith(u'|'))
        trimmed.chop(1);
    while (true) {
        const qsizetype bar = trimmed.indexOf(u'|');
        QStringView cell = (bar < 0 ? trimmed : trimmed.left(bar)).trimmed();
        if (cell.startsWith(u':'))
            cell = cell.mid(1);
        if (cell.endsWith(u':'))
            cell.chop(1);
        if (cell.size() < 2 || runLength(cell, u'-') != cell.size())
            return false;
        if (bar < 0)
            return true;
        trimmed = trimmed.mid(bar + 1);
    }
}

std::vector<QString> tableCells(QStringView row)
{
    if (row.startsWith(u'|'))
        row = row.mid(1);
    if (row.endsWith(u'|') && !row.endsWith(u"\\|"))
        row.chop(1);
    std::vector<QString> cells;
    QString cell;
    for (qsizetype i = 0; i < row.size(); ++i) {
        if (row[i] == u'\\' && i + 1 < row.size() && row[i + 1] == u'|') {
            cell += u'|';
            ++i;
        } else if (row[i] == u'|' && cells.size() + 1 < mostCellsOfARow) {
            cells.push_back(trimmedOf(cell).toString());
            cell.clear();
        } else {
            cell += row[i];
        }
    }
    cells.push_back(trimmedOf(cell).toString());
    return cells;
}

bool holdsUnescapedBar(QStringView trimmed)
{
    for (qsizetype i = 0; i < trimmed.size(); ++i) {
        if (trimmed[i] == u'|')
            return true;
        if (trimmed[i] == u'\\' && i + 1 < trimmed.size() && trimmed[i + 1] == u'|')
            ++i;
    }
    return false;
}

} // namespace markdown
} // namespace corvelle
