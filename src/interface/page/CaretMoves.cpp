#include "interface/page/CaretMoves.h"

#include "interface/page/TableCells.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace corvelle {

namespace {

size_t commonSteps(const CellPath& a, const CellPath& b)
{
    return static_cast<size_t>(
        std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

// Within a block; none at its edge.
std::optional<Units> boundary(
    const QString& words, Units at, QTextBoundaryFinder::BoundaryType type, bool forward)
{
    QTextBoundaryFinder finder(type, words);
    finder.setPosition(at);
    while ((forward ? finder.toNextBoundary() : finder.toPreviousBoundary()) >= 0) {
        const bool isStop = type == QTextBoundaryFinder::Grapheme || finder.position() == 0 ||
                            finder.position() == words.size() ||
                            (finder.boundaryReasons() & QTextBoundaryFinder::StartOfItem);
        if (isStop)
            return finder.position();
    }
    return std::nullopt;
}

Units movedInText(const FlatText& text, Units at, CaretStep step, bool forward)
{
    const FlatText::BlockAt block = text.blockAt(at);
    const Units last = text.block(text.blockCount() - 1).end;
    const Units before = std::max<Units>(0, block.start - 1),
                behind = std::min(last, block.end + 1);
    if (step == CaretStep::Page)
        return forward ? last : 0;
    if (step == CaretStep::Block) {
        if (forward)
            return at < block.end ? block.end : text.blockAt(behind).end;
        return at > block.start ? block.start : text.blockAt(before).start;
    }
    const auto type =
        step == CaretStep::Word ? QTextBoundaryFinder::Word : QTextBoundaryFinder::Grapheme;
    const auto inside =
        boundary(text.text(block.start, block.end), at - block.start, type, forward);
    return inside ? block.start + *inside : forward ? behind : before;
}

} // namespace

bool isAcrossCells(const FlatText& page, const PagePlace& anchor, const PagePlace& head)
{
    return selectedBetween(page, anchor, head).rect.has_value();
}

std::optional<PagePlace> cellBeside(
    const FlatText& page, const PagePlace& anchor, const PagePlace& head, int rows, int columns)
{
    const size_t common = commonSteps(anchor.cells, head.cells);
    PagePlace place{
        {head.cells.begin(), head.cells.begin() + static_cast<std::ptrdiff_t>(common)}, 0};
    const auto text = textIn(page, place.cells);
    const auto table =
        text && common < head.cells.size() ? tableAt(*text, head.cells[common].table) : nullptr;
    if (!table)
        return std::nullopt;
    const auto& cells = table->plan.cells;
    const TablePlan::Slot& from = cells[static_cast<size_t>(head.cells[common].cell)];
    const int row = rows > 0 ? from.row + from.rowSpan : from.row + rows;
    const int column = columns > 0 ? from.column + from.colSpan : from.column + columns;
    const CellRect wanted{row, column, row + 1, column + 1};
    const auto found = std::find_if(cells.begin(), cells.end(),
        [&](const TablePlan::Slot& slot) { return wanted.touches(slot); });
    if (found == cells.end())
        return std::nullopt;
    place.cells.push_back({head.cells[common].table, static_cast<int>(found - cells.begin())});
    return place;
}

PagePlace outOfTables(const PagePlace& anchor, PagePlace head, bool toEnd)
{
    const size_t common = commonSteps(anchor.cells, head.cells);
    if (common == head.cells.size())
        return head;
    head.at = head.cells[common].table + (toEnd ? 1 : 0);
    head.cells.resize(common);
    return head;
}

PagePlace movedBy(CaretStep step, bool forward, const FlatText& page, const PagePlace& anchor,
    const PagePlace& head)
{
    if (step == CaretStep::Page)
        return {{}, movedInText(page, 0, step, forward)};
    const int one = forward ? 1 : -1;
    if (isAcrossCells(page, anchor, head)) {
        const bool isRow = step == CaretStep::Block;
        return cellBeside(page, anchor, head, isRow ? one : 0, isRow ? 0 : one).value_or(head);
    }
    PagePlace moved = head;
    if (commonSteps(anchor.cells, head.cells) < head.cells.size()) {
        // The table is selected with all that is in it: it is left behind, or given up.
        const bool grows = (anchor < head) == forward;
        moved = outOfTables(anchor, head, forward);
        if (!grows)
            return moved;
    }
    const auto text = textIn(page, moved.cells);
    if (!text)
        return head;
    const Units before = moved.at;
    moved.at = movedInText(*text, moved.at, step, forward);
    if (moved.at != before || moved.cells.empty())
        return moved;
    // At the end of what is in a cell, on to the cell beside it.
    PagePlace outside = anchor;
    outside.cells.resize(std::min(anchor.cells.size(), moved.cells.size() - 1));
    return cellBeside(page, outside, moved, 0, one).value_or(moved);
}

std::pair<qsizetype, qsizetype> wordAround(const QString& text, qsizetype at)
{
    if (text.isEmpty())
        return {0, 0};
    at = std::min(at, text.size() - 1);
    const auto isWord = [](QChar c) {
        return c.isLetterOrNumber() || c == u'_' || c.isMark() || c.isSurrogate();
    };
    const bool word = isWord(text[at]);
    qsizetype from = at, to = at + 1;
    while (word && from > 0 && isWord(text[from - 1]))
        --from;
    while (word && to < text.size() && isWord(text[to]))
        ++to;
    return {from, to};
}

} // namespace corvelle
