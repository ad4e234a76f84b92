#include "interface/page/PageLayout.h"

#include "interface/page/TableCells.h"
#include "pages/ListNumbers.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace corvelle {

namespace {

constexpr qsizetype longTableBytes = 64 << 10; // of its JSON; a longer one is cut between its rows
constexpr int rowsOfAPiece = 24, mostJoinedRows = 200;
constexpr Units unitsOfACell = 50; // what laying out an empty one costs
constexpr double unitWidth = 7.4;  // a letter of body text, about

const BlockAttachment* attachmentOf(
    const FlatText& text, const FlatText::BlockAt& block, CharStyleRef& holder)
{
    if (block.what().kind != Block::Raw || block.length() != 1)
        return nullptr;
    holder = text.styleAt(block.start);
    return holder && holder->attachment ? holder->attachment.get() : nullptr;
}

// Where a long block is cut next: at a line break, else behind a blank, never in a character.
Units cutAfter(const FlatText& text, Units from, Units to)
{
    if (to - from <= PageLayout::mostUnits)
        return to;
    const QString part = text.text(from, from + PageLayout::mostUnits);
    if (const qsizetype at = part.lastIndexOf(lineBreak); at > 0)
        return from + at + 1;
    if (const qsizetype at = part.lastIndexOf(u' '); at > 0)
        return from + at + 1;
    return from + part.size() - (part.back().isHighSurrogate() ? 1 : 0);
}

// What its JSON takes, or would take.
qsizetype sizeOf(const BlockAttachment& table)
{
    if (!table.made)
        return table.node.size();
    constexpr qsizetype perCell = 120;
    qsizetype size = 0;
    for (const PageNode& row : table.made->content)
        for (const PageNode& cell : row.content)
            size += perCell + plainText(cell).size();
    return size;
}

} // namespace

PageLayout::PageLayout(const ItemLooks& items, PagePictures& pictures)
    : m_items(items)
    , m_pictures(pictures)
{}

void PageLayout::setPage(FlatText text, const PageStyle& style)
{
    m_text = std::move(text);
    m_style = style;
    std::erase_if(m_tables, [this](const auto& table) {
        return table.first >= m_text.blockCount() ||
               !tableAt(m_text, m_text.block(table.first).start);
    });
    cut();
}

void PageLayout::setStyle(const PageStyle& style)
{
    m_style = style;
    cut();
}

void PageLayout::setWidth(double width)
{
    if (width == m_width)
        return;
    m_width = width;
    cut();
}

// ---- cutting ----

void PageLayout::cut()
{
    m_laid.clear();
    for (auto& [block, table] : m_tables)
        table.columns.clear();
    m_extents.clear();
    m_made.clear();
    m_estimates.clear();
    ListNumbers numbers;
    std::optional<Block> above;
    m_text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        const BlockStyle& style = block.what();
        const Block kind = style.kind;
        double gap = above ? std::max(m_style.gapBelow(*above), m_style.gapAbove(kind)) : 0;
        if (above && isListKind(*above) && !isListKind(kind))
            gap = std::max(gap, m_style.gapBelow(Block::Paragraph));
        cutBlock(block, static_cast<float>(gap), numbers.next(style));
        above = kind;
        return true;
    });
    m_heights.assign(std::move(m_estimates));
}

void PageLayout::cutBlock(const FlatText::BlockAt& block, float gap, int number)
{
    CharStyleRef holder;
    if (const BlockAttachment* attachment = attachmentOf(m_text, block, holder)) {
        if (attachment->kind == PageNode::Type::Table)
            cutTable(block.index, *attachment, gap, number);
        else
            addPiece({block.index, 0, 1, 0, 0}, gap, number,
                attachment->kind == PageNode::Type::Image ? 300 : 52);
        return;
    }
    const double line = m_style.lineHeight(block.what().kind);
    const double perLine = std::max(8.0, m_width / unitWidth);
    Units from = block.start;
    do {
        const Units to = cutAfter(m_text, from, block.end);
        addPiece({block.index, from - block.start, to - block.start, 0, 0},
            from == block.start ? gap : 0, number,
            line * std::max(1.0, std::ceil(static_cast<double>(to - from) / perLine)));
        from = to;
    } while (from < block.end);
}

// A long table is cut between rows that no merged cell joins, unless one joins too many.
void PageLayout::cutTable(qsizetype block, const BlockAttachment& table, float gap, int number)
{
    const qsizetype size = sizeOf(table);
    const auto cells = size < longTableBytes ? nullptr : tableCells(table);
    if (!cells || cells->plan.rowCount == 0) {
        addPiece({block, 0, 1, 0, 0}, gap, number, 40 + static_cast<double>(size) / 8);
        return;
    }
    const TablePlan& plan = cells->plan;
    std::vector<int> reach(static_cast<size_t>(plan.rowCount));
    std::vector<Units> units(reach.size());
    for (size_t i = 0; i < plan.cells.size(); ++i) {
        const TablePlan::Slot& slot = plan.cells[i];
        const auto row = static_cast<size_t>(slot.row);
        reach[row] = std::max(reach[row], slot.row + slot.rowSpan);
        units[row] += unitsOfACell + std::min(cells->texts[i].length(), cells->mostOfCell());
    }
    int start = 0, joined = 0;
    Units held = 0;
    for (int row = 0; row < plan.rowCount; ++row) {
        joined = std::max(joined, reach[static_cast<size_t>(row)]);
        held += units[static_cast<size_t>(row)];
        const int rows = row + 1 - start;
        const bool full = rows >= rowsOfAPiece || held >= TableCells::mostOfRow;
        const bool brimming = rows >= mostJoinedRows || held >= 4 * TableCells::mostOfRow;
        if (row + 1 < plan.rowCount && !brimming && (!full || joined > row + 1))
            continue;
        addPiece({block, 0, 1, start, rows}, start == 0 ? gap : 0, number, 34.0 * rows);
        start = row + 1;
        held = 0;
    }
}

void PageLayout::addPiece(const Extent& extent, float gap, int number, double estimate)
{
    m_extents.push_back(extent);
    m_made.push_back({gap, number});
    m_estimates.push_back(gap + estimate);
}

// ---- laying out ----

const LaidPiece& PageLayout::laid(int piece)
{
    std::unique_ptr<LaidPiece>& laid = m_laid[piece];
    if (laid)
        return *laid;
    const auto at = static_cast<size_t>(piece);
    const Extent& extent = m_extents[at];
    PieceFacts facts;
    facts.text = &m_text;
    facts.block = m_text.block(extent.block);
    facts.from = extent.from;
    facts.to = extent.to;
    facts.firstRow = extent.firstRow;
    facts.rowCount = extent.rowCount;
    facts.isFirst = at == 0 || m_extents[at - 1].block != extent.block;
    facts.isLast = at + 1 == m_extents.size() || m_extents[at + 1].block != extent.block;
    facts.rightToLeft = readsRightToLeft(
        m_text.text(facts.block.start, std::min(facts.block.end, facts.block.start + mostUnits)));
    facts.quoteGoesOn = !facts.isFirst || (extent.block > 0 && facts.block.what().isQuoted() &&
                                              m_text.block(extent.block - 1).what().isQuoted());
    facts.gap = m_made[at].gap;
    facts.number = m_made[at].number;
    facts.width = m_width;
    facts.style = &m_style;
    facts.items = &m_items;
    facts.pictures = &m_pictures;
    if (facts.block.what().kind == Block::Raw)
        facts.table = &m_tables[extent.block];
    laid = layOutPiece(facts);
    m_heights.setHeight(piece, laid->height());
    return *laid;
}

void PageLayout::keepOnly(int first, int last)
{
    m_laid.erase(m_laid.begin(), m_laid.lower_bound(first));
    m_laid.erase(m_laid.upper_bound(last), m_laid.end());
}

// ---- places ----

int PageLayout::pieceOf(qsizetype block, Units offset, int row) const
{
    const auto beyond = std::upper_bound(m_extents.begin(), m_extents.end(),
        std::tuple(block, offset, row), [](const auto& place, const Extent& extent) {
            return place < std::tuple(extent.block, extent.from, extent.firstRow);
        });
    const auto index = static_cast<int>(beyond - m_extents.begin()) - 1;
    return std::clamp(index, 0, std::max(0, count() - 1));
}

int PageLayout::pieceOf(const TextRange& range) const
{
    const Units at = range.placeAt(0);
    const FlatText::BlockAt block = m_text.blockAt(at);
    int row = 0;
    if (!range.cells.empty()) {
        const int piece = pieceOf(block.index, 0);
        const bool isLong = extent(piece).rowCount > 0;
        const auto table = isLong ? tableAt(m_text, at) : nullptr;
        const auto cell = static_cast<size_t>(range.cells.front().cell);
        if (table && cell < table->plan.cells.size())
            row = table->plan.cells[cell].row;
    }
    return pieceOf(block.index, at - block.start, row);
}

Units PageLayout::startOf(int piece) const
{
    return m_text.block(extent(piece).block).start + extent(piece).from;
}

PagePlace PageLayout::placeAt(int piece, QPointF at)
{
    const FlatText::BlockAt block = m_text.block(extent(piece).block);
    PagePlace place = laid(piece).placeAt(at);
    if (place.cells.empty())
        place.at = std::clamp(place.at, block.start, block.end);
    return place;
}

double PageLayout::shift(int piece) const
{
    const auto table = m_tables.find(extent(piece).block);
    return table == m_tables.end() ? 0 : table->second.shift;
}

void PageLayout::forgetShifts()
{
    for (auto& [block, table] : m_tables)
        table.shift = 0;
}

void PageLayout::setShift(int piece, double shift)
{
    m_tables[extent(piece).block].shift = std::clamp(shift, 0.0, mostShift(piece));
}

} // namespace corvelle
