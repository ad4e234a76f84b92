// How a sheet's view is painted: from the cells in sight, and from nothing else.
#include "interface/sheet/SheetView.h"
#include "interface/theme/Fonts.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace corvelle {

namespace {

// What a translucent line comes to on an area. Lines as long as the view are far quicker to paint
// in a full colour.
QColor lineOn(const QColor& area, const QColor& line)
{
    const float share = line.alphaF();
    const auto mixed = [share](
                           float below, float above) { return below + (above - below) * share; };
    return QColor::fromRgbF(mixed(area.redF(), line.redF()), mixed(area.greenF(), line.greenF()),
        mixed(area.blueF(), line.blueF()));
}

} // namespace

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
    auto found = std::lower_bound(m_found.begin(), m_found.end(), seen.from.row,
        [](CellPlace place, int row) { return place.row < row; });
    for (; found != m_found.end() && found->row <= seen.to.row; ++found)
        if (seen.contains(*found))
            painter.fillRect(rectOf(*found), colors().mark);
    if (!picked.isOne())
        painter.fillRect(rectOf(picked.from).united(rectOf(picked.to)), colors().accentSofter);
    if (m_pick.hovered && m_pick.hovered != m_pick.picked)
        painter.fillRect(rectOf(*m_pick.hovered), colors().hover);

    // Lines end where no more is shown, though the file may go on.
    const int right = rectOf(seen.to).right(), bottom = rectOf(seen.to).bottom();
    const QColor line = lineOn(colors().surface, colors().hairlineFaint);
    for (int column = seen.from.column; column <= seen.to.column; ++column)
        painter.fillRect(
            QRect(rectOf({column, 0}).right(), area.top(), 1, bottom - area.top() + 1), line);
    for (int row = seen.from.row; row <= seen.to.row; ++row)
        painter.fillRect(
            QRect(area.left(), rectOf({0, row}).bottom(), right - area.left() + 1, 1), line);
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

void SheetView::paintTexts(QPainter& painter, const CellRange& seen) const
{
    const Lettering letters(TypeStyle::SheetCell);
    const int left = cells().left(), rows = std::min(seen.to.row + 1, m_layout.rows());
    // Two inks and few changes: first the plain texts, then those on a mark.
    for (const bool marked : {false, true}) {
        if (marked && m_found.empty())
            break;
        LetteringRun run(letters, painter, marked ? colors().markInk : colors().ink);
        for (int row = seen.from.row; row < rows; ++row) {
            const auto& texts = m_rows->rows[static_cast<size_t>(row)];
            const int columns = std::min(seen.to.column + 1, static_cast<int>(texts.size()));
            for (int column = firstReaching(row, seen.from.column); column < columns; ++column) {
                const SheetCell& cell = texts[static_cast<size_t>(column)];
                if (cell.text.isEmpty() || isFound({column, row}) != marked)
                    continue;
                const QRectF room = roomFor({column, row}, cell);
                if (room.right() > left)
                    run.draw(
                        room, cell.isNumber ? Qt::AlignRight : Qt::AlignLeft, lineOf(cell.text));
            }
        }
    }
}

// What comes into sight from the left may begin in a cell that is out of it.
int SheetView::firstReaching(int row, int column) const
{
    const auto& texts = m_rows->rows[static_cast<size_t>(row)];
    const auto isEmpty = [&texts](int at) {
        return at >= static_cast<int>(texts.size()) ||
               texts[static_cast<size_t>(at)].text.isEmpty();
    };
    while (column > 0 && isEmpty(column))
        --column;
    return column;
}

bool SheetView::isFound(CellPlace place) const
{
    return std::binary_search(m_found.begin(), m_found.end(), place, [](CellPlace a, CellPlace b) {
        return std::pair(a.row, a.column) < std::pair(b.row, b.column);
    });
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
    for (const bool isPicked : {false, true}) {
        LetteringRun run(letters, painter, isPicked ? colors().accentInk : colors().ink3);
        for (int column = seen.from.column; column <= seen.to.column; ++column) {
            if ((column >= picked.from.column && column <= picked.to.column) != isPicked)
                continue;
            const QRect cell = rectOf({column, 0});
            const QRect box(cell.left(), 0, cell.width(), area.top());
            if (isPicked)
                painter.fillRect(box, colors().accentSoft);
            run.draw(box, Qt::AlignHCenter, columnName(column));
            painter.fillRect(QRect(box.right(), 0, 1, area.top()), colors().hairline);
        }
    }
    painter.fillRect(QRect(0, 0, area.left(), area.top()), colors().sunken);
    painter.fillRect(
        QRect(0, area.top() - 1, width(), 1), lineOn(colors().sunken, colors().hairline));
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
    for (const bool isPicked : {false, true}) {
        LetteringRun run(letters, painter, isPicked ? colors().accentInk : colors().ink3);
        for (int row = seen.from.row; row <= seen.to.row; ++row) {
            if ((row >= picked.from.row && row <= picked.to.row) != isPicked)
                continue;
            const QRect box(0, rectOf({0, row}).top(), area.left(), SheetLayout::rowHeight);
            if (isPicked)
                painter.fillRect(box, colors().accentSoft);
            run.draw(box, Qt::AlignHCenter, QString::number(row + 1));
            painter.fillRect(QRect(0, box.bottom(), area.left(), 1), colors().hairlineFaint);
        }
    }
    painter.fillRect(QRect(area.left() - 1, area.top(), 1, area.height()),
        lineOn(colors().sunken, colors().hairline));
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
