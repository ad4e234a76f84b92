// Tables wider than the page's column, which are scrolled sideways in it.
#include "interface/page/PageView.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace corvelle {

std::optional<int> PageView::wideTableAt(QPointF at)
{
    if (m_layout.count() == 0)
        return std::nullopt;
    const int piece = spotAt(at).piece;
    return m_layout.mostShift(piece) > 0 && areaOfTable(piece).contains(at.toPoint())
               ? std::optional(piece)
               : std::nullopt;
}

// The one that the pointer or the selection was in last, else the first.
std::optional<int> PageView::wideTableInSight()
{
    std::optional<int> first;
    if (m_layout.count() == 0)
        return first;
    for (int piece = m_topPiece, last = lastInSight(); piece <= last; ++piece) {
        if (m_layout.mostShift(piece) <= 0)
            continue;
        if (m_wideTable == m_layout.extent(piece).block)
            return piece;
        if (!first)
            first = piece;
    }
    return first;
}

// The one that both ends of the selection are in. Others keep still: the page may have scrolled,
// and where the press was, another one may be now.
std::optional<int> PageView::wideTableOfDrag()
{
    const bool inCells = !m_anchor.cells.empty() && !m_head.cells.empty();
    if (!inCells || m_anchor.cells.front().table != m_head.cells.front().table)
        return std::nullopt;
    const int piece = m_layout.pieceOf(m_head);
    return m_layout.mostShift(piece) > 0 ? std::optional(piece) : std::nullopt;
}

// What of it is in sight; a long one is several pieces.
QRect PageView::areaOfTable(int piece)
{
    const qsizetype block = m_layout.extent(piece).block;
    const Units start = m_page.text.block(block).start;
    QRectF area;
    for (int each = m_topPiece, last = lastInSight(); each <= last; ++each)
        if (m_layout.extent(each).block == block)
            area |= m_layout.laid(each)
                        .rectOf({{}, start, start + 1})
                        .translated(column().left(), topOf(each));
    return (area & QRectF(rect())).toAlignedRect();
}

bool PageView::scrollSideways(int piece, double pixels)
{
    const double before = m_layout.shift(piece);
    m_layout.setShift(piece, std::round(before + pixels));
    m_wideTable = m_layout.extent(piece).block;
    m_thumbLingers.start();
    update();
    return m_layout.shift(piece) != before;
}

ScrollThumb PageView::sidewaysThumb(int piece)
{
    ScrollThumb thumb(Qt::Horizontal);
    thumb.set(areaOfTable(piece), static_cast<int>(std::lround(m_layout.shift(piece))),
        static_cast<int>(std::lround(m_layout.mostShift(piece))));
    return thumb;
}

// A press on the thumb or beside it.
bool PageView::grabSideways(QPointF at)
{
    const auto piece = wideTableAt(at);
    if (!piece)
        return false;
    const ScrollThumb thumb = sidewaysThumb(*piece);
    if (!thumb.isOnTrack(at))
        return false;
    m_drag = Drag::Sideways;
    m_sideways = thumb;
    m_sideways.grab(at);
    scrollSideways(*piece, m_sideways.placeFor(at) - m_layout.shift(*piece));
    return true;
}

void PageView::noticeSideways(QPointF at)
{
    const auto piece = wideTableAt(at);
    const auto before = std::pair(m_isOverWide, m_wideTable);
    m_isOverWide = piece.has_value();
    if (piece)
        m_wideTable = m_layout.extent(*piece).block;
    if (before != std::pair(m_isOverWide, m_wideTable))
        update();
}

// Quiet at rest, as that of the page.
void PageView::paintSidewaysThumb(QPainter& painter)
{
    const bool isDragged = m_drag == Drag::Sideways;
    if (!m_wideTable || !(m_isOverWide || isDragged || m_thumbLingers.isActive()))
        return;
    const auto piece = wideTableInSight();
    if (!piece || m_layout.extent(*piece).block != *m_wideTable)
        return;
    const Palette& colors = m_layout.style().colors();
    const QRectF bar = sidewaysThumb(*piece).rect();
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDragged ? colors.ink4 : colors.hairlineStrong);
    painter.drawRoundedRect(bar, bar.height() / 2, bar.height() / 2);
}

} // namespace corvelle
