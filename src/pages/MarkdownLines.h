// Lines of Markdown and what a line by itself can be.
#pragma once

#include <QString>
#include <QStringView>

#include <optional>
#include <vector>

namespace corvelle {

namespace markdown {
inline bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}
} // namespace markdown

// A line, or what is left of it inside a quote or an item. A view into the text that was read.
struct MarkdownLine
{
    QStringView text;
    int pad = 0;         // blanks that a cut tab left before it
    int indent = 0;      // columns: a blank is one, a tab four
    QStringView trimmed; // without blanks and tabs at either end

    static MarkdownLine of(QStringView text, int pad = 0);
    bool isBlank() const { return trimmed.isEmpty(); }
    // Without up to so many columns of its indent.
    MarkdownLine without(int columns) const;
    // Appends the line with its indent, less so many columns.
    void appendTo(QString& out, int columns = 0) const;
};

namespace markdown {

struct Fence
{
    QChar mark;
    qsizetype count = 0;
    QStringView info;
};
std::optional<Fence> fence(QStringView trimmed);
bool closes(const Fence& fence, QStringView trimmed);

bool isRule(QStringView trimmed);
int headingLevel(QStringView trimmed);         // 0: no heading
QStringView headingWords(QStringView trimmed); // of a heading
int setextLevel(QStringView trimmed);          // of an underline: 1 or 2, else 0

struct ListMarker
{
    bool ordered = false, task = false, checked = false;
    int start = 1;
    int width = 0;    // columns up to the item's words, its box included
    QStringView text; // what stands behind it
};
std::optional<ListMarker> listMarker(QStringView trimmed);

// Empty cells that fill up the short rows of a table, at most: one long row among many short ones
// must not cost their product.
constexpr size_t mostPadding = 100'000;
bool isTableSeparator(QStringView trimmed);
// The cells of a row, each trimmed, "\|" as "|"; at most 1,000.
std::vector<QString> tableCells(QStringView trimmed);
bool holdsUnescapedBar(QStringView trimmed);

} // namespace markdown
} // namespace corvelle
