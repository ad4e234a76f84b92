#include "interface/page/CellColumn.h"

#include "pages/ListNumbers.h"

#include <algorithm>

namespace corvelle {

namespace {

FlatText cutOff(FlatText text, Units most)
{
    if (text.length() <= most)
        return text;
    const bool inCharacter = most > 0 && text.at(most - 1).isHighSurrogate();
    text = text.slice(0, most - (inCharacter ? 1 : 0));
    text.replace(text.length(), text.length(), FlatText(u"…"));
    return text;
}

} // namespace

CellColumn::CellColumn(const PieceFacts& table, FlatText text, Units most, bool isHead,
    Qt::Alignment alignment, double width)
    : m_text(cutOff(std::move(text), most))
    , m_style(table.style->inCell(isHead))
    , m_depth(table.depth + 1)
{
    ListNumbers numbers;
    std::optional<Block> above;
    bool isQuoted = false;
    m_text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        const BlockStyle& style = block.what();
        PieceFacts facts = table;
        facts.text = &m_text;
        facts.block = block;
        facts.from = 0;
        facts.to = block.length();
        facts.firstRow = facts.rowCount = 0;
        facts.isFirst = facts.isLast = true;
        facts.rightToLeft = readsRightToLeft(m_text.text(block.start, block.end));
        facts.quoteGoesOn = isQuoted && style.isQuoted();
        facts.number = numbers.next(style);
        facts.gap = above ? std::max(m_style.gapBelow(*above), m_style.gapAbove(style.kind)) : 0;
        facts.width = width;
        facts.depth = m_depth;
        facts.alignment = alignment;
        facts.style = &m_style;
        facts.table = nullptr;
        Part part{facts, layOutPiece(facts), m_height};
        m_height += part.piece->height();
        m_parts.push_back(std::move(part));
        above = style.kind;
        isQuoted = style.isQuoted();
        return true;
    });
}

CellColumn::~CellColumn() = default;

void CellColumn::draw(QPainter& painter, QPointF at, const Paint& paint) const
{
    for (const Part& part : m_parts) {
        const double top = at.y() + part.top;
        if (top > paint.visible.bottom() || top + part.piece->height() < paint.visible.top())
            continue;
        Paint inner = paint;
        inner.found =
            foundWithin(paint.found, m_depth, part.facts.block.start, part.facts.block.end);
        part.piece->draw(painter, QPointF(at.x(), top), inner);
    }
}

// ---- places ----

const CellColumn::Part& CellColumn::partAt(Units place) const
{
    const auto beyond = std::partition_point(m_parts.begin(), m_parts.end(),
        [place](const Part& part) { return part.facts.block.start <= place; });
    return beyond == m_parts.begin() ? m_parts.front() : *(beyond - 1);
}

const CellColumn::Part& CellColumn::partAtHeight(double y) const
{
    const auto beyond = std::partition_point(
        m_parts.begin(), m_parts.end(), [y](const Part& part) { return part.top <= y; });
    return beyond == m_parts.begin() ? m_parts.front() : *(beyond - 1);
}

PagePlace CellColumn::placeAt(QPointF at) const
{
    const Part& part = partAtHeight(at.y());
    return part.piece->placeAt(at - QPointF(0, part.top));
}

PageTarget CellColumn::targetAt(QPointF at) const
{
    const Part& part = partAtHeight(at.y());
    return part.piece->targetAt(at - QPointF(0, part.top));
}

QRectF CellColumn::rectOf(const TextRange& range) const
{
    const Part& part = partAt(range.placeAt(m_depth));
    return part.piece->rectOf(range).translated(0, part.top);
}

QRectF CellColumn::caretAt(const PagePlace& place) const
{
    const Units at = m_depth < place.cells.size() ? place.cells[m_depth].table : place.at;
    const Part& part = partAt(at);
    return part.piece->caretAt(place).translated(0, part.top);
}

} // namespace corvelle
