// What the pointer does in a page, and how the mentions and links in it are gone through.
#include "interface/page/PageView.h"

#include "interface/page/CaretMoves.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr double wheelLine = 20;
constexpr double thumbNear = 28; // of the pointer to the right edge

} // namespace

void PageView::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        zoomBy(event->angleDelta().y() / 120.0);
        event->accept();
        return;
    }
    const double lines = QGuiApplication::styleHints()->wheelScrollLines();
    QPointF by =
        -(event->pixelDelta().isNull() ? QPointF(event->angleDelta()) / 120.0 * lines * wheelLine
                                       : QPointF(event->pixelDelta()));
    if ((event->modifiers() & Qt::ShiftModifier) && by.x() == 0)
        by = QPointF(by.y(), 0);
    event->accept();
    // One direction at a time: fingers on a pad don't move straight.
    if (std::abs(by.x()) > std::abs(by.y())) {
        if (const auto table = wideTableAt(event->position()))
            scrollSideways(*table, by.x());
        else if (event->modifiers() & Qt::ShiftModifier)
            scrollBy(by.x());
        return;
    }
    scrollBy(by.y());
}

// ---- pointer ----

PageView::Reach PageView::reachOf(const PagePlace& place) const
{
    if (m_drag != Drag::Words && m_drag != Drag::Blocks)
        return {place, place};
    const auto text = textIn(m_page.text, place.cells);
    if (!text)
        return {place, place};
    const FlatText::BlockAt block = text->blockAt(place.at);
    if (m_drag == Drag::Blocks)
        return {{place.cells, block.start}, {place.cells, block.end}};
    const auto word = wordAround(text->text(block.start, block.end), place.at - block.start);
    return {{place.cells, block.start + word.first}, {place.cells, block.start + word.second}};
}

void PageView::extend(QPointF at)
{
    const Reach reached = reachOf(placeAt(at));
    if (reached.second < m_dragStart.second)
        select(m_dragStart.second, reached.first);
    else
        select(std::min(m_dragStart.first, reached.first), reached.second);
}

// While the pointer is held beyond an edge, the faster the farther.
void PageView::autoScroll()
{
    const auto beyond = [](double at, double from, double to) {
        return at < from ? at - from : std::max(0.0, at - to);
    };
    scrollBy(beyond(m_dragAt.y(), 0, height()) / 4);
    const QRectF place = column();
    if (const auto table = wideTableOfDrag())
        scrollSideways(*table, beyond(m_dragAt.x(), place.left(), place.right()) / 4);
    extend(m_dragAt);
}

void PageView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const QStyleHints& hints = *QGuiApplication::styleHints();
    const double away = QLineF(m_pressedAt, event->position()).length();
    const bool third = m_lastDouble.isValid() &&
                       m_lastDouble.elapsed() < hints.mouseDoubleClickInterval() &&
                       away <= hints.startDragDistance();
    m_pressedAt = m_dragAt = event->position();
    if (isOnTrack(event->position())) {
        const QRectF bar = thumb();
        m_drag = Drag::Thumb;
        const bool onThumb = bar.adjusted(-4, 0, 4, 0).contains(event->position());
        m_thumbGrip = onThumb ? event->position().y() - bar.top() : bar.height() / 2;
        dragThumb(event->position().y());
        return;
    }
    if (grabSideways(event->position()))
        return;
    const PagePlace place = placeAt(event->position());
    m_drag = third ? Drag::Blocks : Drag::Characters;
    const bool goesOn = !third && m_isPlaced && (event->modifiers() & Qt::ShiftModifier);
    m_dragStart = goesOn ? Reach(m_anchor, m_anchor) : reachOf(place);
    select(m_dragStart.first, goesOn ? place : m_dragStart.second);
}

void PageView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_layout.count() == 0)
        return;
    if (isOnTrack(event->position()) || grabSideways(event->position()))
        return mousePressEvent(event);
    m_lastDouble.start();
    m_pressedAt = m_dragAt = event->position();
    m_drag = Drag::Words;
    m_dragStart = reachOf(placeAt(event->position()));
    select(m_dragStart.first, m_dragStart.second);
}

void PageView::mouseMoveEvent(QMouseEvent* event)
{
    m_dragAt = event->position();
    if (!(event->buttons() & Qt::LeftButton))
        letGo();
    if (m_drag == Drag::None) {
        updateCursor(event->position());
        return;
    }
    if (m_drag == Drag::Thumb) {
        dragThumb(event->position().y());
        return;
    }
    if (m_drag == Drag::Sideways) {
        if (const auto table = wideTableInSight())
            scrollSideways(*table, m_sideways.placeFor(event->position()) - m_layout.shift(*table));
        return;
    }
    extend(event->position());
    const QPointF at = event->position();
    const QRectF place = column();
    const bool beside = (at.x() < place.left() || at.x() > place.right()) && wideTableOfDrag();
    const bool beyond = at.y() < 0 || at.y() > height() || beside;
    if (beyond && !m_autoScroll.isActive())
        m_autoScroll.start();
    else if (!beyond)
        m_autoScroll.stop();
}

void PageView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    const Drag ended = std::exchange(m_drag, Drag::None);
    m_autoScroll.stop();
    update();
    const double moved = QLineF(m_pressedAt, event->position()).length();
    if (ended != Drag::Characters || hasSelection() ||
        moved > QGuiApplication::styleHints()->startDragDistance())
        return;
    follow(targetAt(event->position()));
}

void PageView::follow(const PageTarget& target)
{
    if (!target.item.isEmpty())
        emit itemWanted(target.item);
    else if (target.link)
        emit addressWanted(target.link->href);
}

void PageView::contextMenuEvent(QContextMenuEvent* event)
{
    emit menuWanted(event->pos());
}

void PageView::updateCursor(QPointF at)
{
    const bool near = at.x() >= width() - thumbNear;
    if (std::exchange(m_isNearThumb, near) != near)
        update();
    noticeSideways(at);
    const auto wide = m_isOverWide ? wideTableInSight() : std::nullopt;
    if (isOnTrack(at) || (wide && sidewaysThumb(*wide).isOnTrack(at)))
        setCursor(Qt::ArrowCursor);
    else
        setCursor(targetAt(at).isNothing() ? Qt::IBeamCursor : Qt::PointingHandCursor);
}

// ---- mentions and links ----

// Tab goes from one mention or link to the next, beginning with the first in sight, and behind the
// last one on to the next control.
bool PageView::focusNextPrevChild(bool next)
{
    if (m_targets.empty())
        m_targets = pageTargets(m_page.text);
    const int count = static_cast<int>(m_targets.size());
    int wanted = m_focused + (next ? 1 : -1);
    if (m_focused < 0 && m_layout.count() > 0) {
        const auto here = std::partition_point(
            m_targets.begin(), m_targets.end(), [this](const TargetInPage& target) {
                return m_layout.pieceOf(target.range) < m_topPiece;
            });
        wanted = static_cast<int>(here - m_targets.begin()) - (next ? 0 : 1);
    }
    if (wanted < 0 || wanted >= count) {
        leaveTargets();
        return QWidget::focusNextPrevChild(next);
    }
    m_focused = wanted;
    showRange(m_targets[static_cast<size_t>(wanted)].range);
    setAccessibleDescription(nameOf(m_targets[static_cast<size_t>(wanted)]));
    update();
    return true;
}

void PageView::leaveTargets()
{
    m_focused = -1;
    setAccessibleDescription({});
    update();
}

QString PageView::nameOf(const TargetInPage& target) const
{
    return target.target.link ? target.target.link->href : target.label;
}

std::vector<std::pair<TargetInPage, QRectF>> PageView::targetsInSight()
{
    std::vector<std::pair<TargetInPage, QRectF>> found;
    if (m_layout.count() == 0)
        return found;
    const int last = lastInSight();
    for (const TargetInPage& target : pageTargets(m_page.text)) {
        const int piece = m_layout.pieceOf(target.range);
        if (piece < m_topPiece || piece > last)
            continue;
        const QRectF rect = m_layout.laid(piece).rectOf(target.range);
        const double middle = rect.center().x(); // in a wide table it may be beyond the column
        if (middle >= 0 && middle <= m_layout.width())
            found.emplace_back(target, rect.translated(column().left(), topOf(piece)));
    }
    return found;
}

} // namespace corvelle
