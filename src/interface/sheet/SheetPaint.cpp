// How a sheet's view is painted: from the cells in sight, and from nothing else.
#include "interface/sheet/SheetView.h"
#include "interface/theme/Fonts.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace corvelle {

void SheetView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    for (const QRect& part : event->region())
        paintPart(painter, part);
    if (std::exchange(m_isUnpainted, false))
        emit painted();
}

void SheetView::paintPart(QPainter& painter, const QRect& part)
{
    const CellRange seen = placesIn(part);
    const QRect area = cells();
    painter.setClipRect(part & area);
    painter.fillRect(part & area, colors().surface);
    if (part.intersects(area)) {
        paintGrid(painter, seen);
        paintTexts(painter, seen);
        paintPick(painter);
    }
    painter.setClipRect(part);
    if (part.top() < area.top())
        paintLetters(painter, seen);
    if (part.left() < area.left())
        paintNumbers(painter, seen);
    paintThumbs(painter);
}

void SheetView::paintGrid(QPainter& painter, const CellRange& seen) const
{
    const QRect area = cells();
    const CellRange picked = m_pick.range();
    for (const CellPlace place : m_found)
        if (seen.contains(place))
            painter.fillRect(rectOf(place), colors().mark);
    if (!picked.isOne())
        painter.fillRect(rectOf(picked.from).united(rectOf(picked.to)), colors().accentSofter);
    if (m_pick.hovered && m_pick.hovered != m_pick.picked)
        painter.fillRect(rectOf(*m_pick.hovered), colors().hover);

    // Lines end where no more is shown, though the file may go on.
    const int right = rectOf(seen.to).right(), bottom = rectOf(seen.to).bottom();
    for (int column = seen.from.column; column <= seen.to.column; ++column)
        painter.fillRect(QRect(rectOf({column, 0}).right(), area.top(), 1, bottom - area.top() + 1),
            colors().hairlineFaint);
    for (int row = seen.from.row; row <= seen.to.row; ++row)
        painter.fillRect(QRect(area.left(), rectOf({0, row}).bottom(), right - area.left() + 1, 1),
            colors().hairlineFaint);
    const QRegion beyond = QRegion(area) - QRect(area.topLeft(), QPoint(right, bottom));
    for (const QRect& part : beyond)
        painter.fillRect(part, colors().sunken);
}

// A text goes on over empty cells behind it, as long as it is in sight.
QRectF SheetView::roomFor(CellPlace place, const SheetCell& cell) const
{
    QRect box = rectOf(place);
    if (cell.isNumber)
        return box.adjusted(SheetLayout::side, 0, -SheetLayout::side, 0);
    const auto& row = m_rows->rows[static_cast<size_t>(place.row)];
    const int end = std::max(SheetLimits().columns, m_layout.columns());
    for (int column = place.column + 1; column < end && box.right() < width(); ++column) {
        const auto at = static_cast<size_t>(column);
        if (at < row.size() && !row[at].text.isEmpty())
            break;
        box.setRight(rectOf({column, place.row}).right());
    }
    return box.adjusted(SheetLayout::side, 0, -SheetLayout::side, 0);
}

void SheetView::paintText(QPainter& painter, CellPlace place, const SheetCell& cell) const
{
    const Lettering letters(TypeStyle::SheetCell);
    const QRectF room = roomFor(place, cell);
    if (room.right() < cells().left())
        return;
    const bool marked =
        std::binary_search(m_found.begin(), m_found.end(), place, [](CellPlace a, CellPlace b) {
            return std::pair(a.row, a.column) < std::pair(b.row, b.column);
        });
    painter.setPen(marked ? colors().markInk : colors().ink);
    letters.draw(painter, room, cell.isNumber ? Qt::AlignRight : Qt::AlignLeft,
        letters.elided(lineOf(cell.text), room.width(), Qt::ElideRight));
}

void SheetView::paintTexts(QPainter& painter, const CellRange& seen) const
{
    const int rows = std::min(seen.to.row + 1, m_layout.rows());
    for (int row = seen.from.row; row < rows; ++row) {
        const auto& cellsOfRow = m_rows->rows[static_cast<size_t>(row)];
        const int columns = std::min(seen.to.column + 1, static_cast<int>(cellsOfRow.size()));
        // What comes into sight from the left may begin in a cell that is out of it.
        int first = seen.from.column;
        while (first > 0 &&
               (first >= columns || cellsOfRow[static_cast<size_t>(first)].text.isEmpty()))
            --first;
        for (int column = std::min(first, columns); column < columns; ++column) {
            const SheetCell& cell = cellsOfRow[static_cast<size_t>(column)];
            if (!cell.text.isEmpty())
                paintText(painter, {column, row}, cell);
        }
    }
}

void SheetView::paintPick(QPainter& painter) const
{
    // On the lines of the grid; before the first row and column there is none.
    const auto frame = [&](const CellRange& range, int thickness) {
        const QRect outer =
            rectOf(range.from)
                .united(rectOf(range.to))
                .adjusted(range.from.column > 0 ? -1 : 0, range.from.row > 0 ? -1 : 0, 0, 0);
        const QRegion line =
            QRegion(outer) - outer.adjusted(thickness, thickness, -thickness, -thickness);
        for (const QRect& part : line)
            painter.fillRect(part, colors().accent);
    };
    if (!m_pick.range().isOne())
        frame(m_pick.range(), 1);
    frame({m_pick.picked, m_pick.picked}, 2);
}

void SheetView::paintLetters(QPainter& painter, const CellRange& seen) const
{
    const Lettering letters(TypeStyle::Caption);
    const QRect area = cells();
    const CellRange picked = m_pick.range();
    painter.save();
    painter.setClipRect(QRect(0, 0, width(), area.top()), Qt::IntersectClip);
    painter.fillRect(QRect(0, 0, width(), area.top()), colors().sunken);
    for (int column = seen.from.column; column <= seen.to.column; ++column) {
        const QRect cell = rectOf({column, 0});
        const QRect box(cell.left(), 0, cell.width(), area.top());
        const bool isPicked = column >= picked.from.column && column <= picked.to.column;
        if (isPicked)
            painter.fillRect(box, colors().accentSoft);
        painter.setPen(isPicked ? colors().accentInk : colors().ink3);
        letters.draw(painter, box, Qt::AlignHCenter, columnName(column));
        painter.fillRect(QRect(box.right(), 0, 1, area.top()), colors().hairline);
    }
    painter.fillRect(QRect(0, 0, area.left(), area.top()), colors().sunken);
    painter.fillRect(QRect(0, area.top() - 1, width(), 1), colors().hairline);
    painter.restore();
}

void SheetView::paintNumbers(QPainter& painter, const CellRange& seen) const
{
    const Lettering letters(TypeStyle::Caption);
    const QRect area = cells();
    const CellRange picked = m_pick.range();
    painter.save();
    painter.setClipRect(QRect(0, area.top(), area.left(), area.height()), Qt::IntersectClip);
    painter.fillRect(QRect(0, area.top(), area.left(), area.height()), colors().sunken);
    for (int row = seen.from.row; row <= seen.to.row; ++row) {
        const QRect box(0, rectOf({0, row}).top(), area.left(), SheetLayout::rowHeight);
        const bool isPicked = row >= picked.from.row && row <= picked.to.row;
        if (isPicked)
            painter.fillRect(box, colors().accentSoft);
        painter.setPen(isPicked ? colors().accentInk : colors().ink3);
        letters.draw(painter, box, Qt::AlignHCenter, QString::number(row + 1));
        painter.fillRect(QRect(0, box.bottom(), area.left(), 1), colors().hairlineFaint);
    }
    painter.fillRect(QRect(area.left() - 1, area.top(), 1, area.height()), colors().hairline);
    painter.restore();
}

// Quiet at rest: they come with scrolling and with the pointer.
void SheetView::paintThumbs(QPainter& painter) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto& [thumb, drag] :
        {std::pair(&m_down, Drag::Down), std::pair(&m_across, Drag::Across)}) {
        const bool shown = m_drag == drag || m_thumbsLinger.isActive() ||
                           (m_drag == Drag::None && thumb->isOnTrack(m_dragAt));
        const QRectF box = thumb->rect();
        if (!shown || box.isEmpty())
            continue;
        QPainterPath path;
        path.addRoundedRect(box, 3, 3);
        painter.fillPath(path, m_drag == drag ? colors().ink3 : colors().ink4);
    }
    painter.restore();
}

} // namespace corvelle
