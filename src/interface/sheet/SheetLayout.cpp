#include "interface/sheet/SheetLayout.h"

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr qsizetype mostSeen = 400; // units of a line
constexpr size_t mostMeasured = 6;  // texts of a column: the longest ones

// The texts that may be the widest.
std::vector<QString> longestTexts(const SheetRows& sheet, size_t column)
{
    std::vector<const QString*> texts;
    for (const auto& cells : sheet.rows)
        if (column < cells.size() && !cells[column].text.isEmpty())
            texts.push_back(&cells[column].text);
    const size_t count = std::min(mostMeasured, texts.size());
    std::partial_sort(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(count),
        texts.end(), [](const QString* a, const QString* b) { return a->size() > b->size(); });
    std::vector<QString> longest;
    for (size_t i = 0; i < count; ++i)
        longest.push_back(lineOf(*texts[i]));
    return longest;
}

} // namespace

QString lineOf(const QString& text)
{
    QString line = text.left(mostSeen);
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.unicode() < u' '; }, u' ');
    return line;
}

SheetLayout::SheetLayout(
    const SheetRows& sheet, const std::function<double(const QString&)>& measure)
    : m_rows(static_cast<int>(sheet.rows.size()))
{
    size_t columns = 0;
    for (const auto& cells : sheet.rows)
        columns = std::max(columns, cells.size());
    int right = 0;
    for (size_t column = 0; column < columns; ++column) {
        double widest = 0;
        const auto texts = longestTexts(sheet, column);
        for (const QString& text : texts)
            widest = std::max(widest, measure(text));
        right += texts.empty() ? emptyWidth
                               : std::clamp(static_cast<int>(std::ceil(widest)) + 2 * side + 2,
                                     leastWidth, mostWidth);
        m_rights.push_back(right);
    }
}

int SheetLayout::left(int column) const
{
    if (column <= 0)
        return 0;
    if (column <= columns())
        return m_rights[static_cast<size_t>(column) - 1];
    return left(columns()) + (column - columns()) * emptyWidth;
}

int SheetLayout::columnAt(int x) const
{
    const auto found = std::upper_bound(m_rights.begin(), m_rights.end(), x);
    if (found != m_rights.end())
        return static_cast<int>(found - m_rights.begin());
    return columns() + (x - left(columns())) / emptyWidth;
}

int SheetLayout::numbersWidth() const
{
    return m_rows < 1000 ? 44 : 52;
}

} // namespace corvelle
