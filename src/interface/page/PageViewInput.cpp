// What the pointer and the keyboard do in a page.
#include "interface/page/PageView.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QStyleHints>
#include <QToolTip>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double zoomStep = 1.1;
constexpr double lineStep = 48; // of the arrow keys
constexpr double wheelLine = 20;
constexpr double thumbNear = 28; // of the pointer to the right edge

// The word round a place of a text, or the blanks or signs between two.
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

} // namespace

void PageView::wheelEvent(QWheelEvent* event)
{
    if (event->modifiers() & Qt::ControlModifier) {
        setZoom(m_zoom * std::pow(zoomStep, event->angleDelta().y() / 120.0));
        event->accept();
        return;
    }
    const double lines = QGuiApplication::styleHints()->wheelScrollLines();
    scrollBy(-(event->pixelDelta().isNull() ? event->angleDelta().y() / 120.0 * lines * wheelLine
                                            : event->pixelDelta().y()));
    event->accept();
}

// ---- pointer ----

void PageView::extend(QPointF at)
{
    const Units place = placeAt(at);
    std::pair<Units, Units> reached(place, place);
    const FlatText::BlockAt block = m_page.text.blockAt(place);
    if (m_drag == Drag::Blocks) {
        reached = {block.start, block.end};
    } else if (m_drag == Drag::Words) {
        const auto word = wordAround(m_page.text.text(block.start, block.end), place - block.start);
        reached = {block.start + word.first, block.start + word.second};
    }
    if (reached.second >= m_dragStart.second)
        select(std::min(m_dragStart.first, reached.first), reached.second);
    else
        select(m_dragStart.second, reached.first);
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
    const Units place = placeAt(event->position());
    if (third) {
        const FlatText::BlockAt block = m_page.text.blockAt(place);
        m_drag = Drag::Blocks;
        m_dragStart = {block.start, block.end};
        select(block.start, block.end);
    } else {
        m_drag = Drag::Characters;
        const Units from = event->modifiers() & Qt::ShiftModifier ? m_anchor : place;
        m_dragStart = {from, from};
        select(from, place);
    }
}

void PageView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_layout.count() == 0)
        return;
    if (isOnTrack(event->position()))
        return mousePressEvent(event);
    m_lastDouble.start();
    m_pressedAt = m_dragAt = event->position();
    m_drag = Drag::Words;
    const Units place = placeAt(event->position());
    const FlatText::BlockAt block = m_page.text.blockAt(place);
    const auto word = wordAround(m_page.text.text(block.start, block.end), place - block.start);
    m_dragStart = {block.start + word.first, block.start + word.second};
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
    extend(event->position());
    const bool beyond = event->position().y() < 0 || event->position().y() > height();
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
    if (isOnTrack(at))
        setCursor(Qt::ArrowCursor);
    else
        setCursor(targetAt(at).isNothing() ? Qt::IBeamCursor : Qt::PointingHandCursor);
}

// ---- keys ----

void PageView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        return copy();
    if (event->matches(QKeySequence::SelectAll))
        return selectAll();
    if (event->modifiers() & Qt::ControlModifier) {
        const int key = event->key();
        if (key == Qt::Key_Plus || key == Qt::Key_Equal)
            return setZoom(m_zoom * zoomStep);
        if (key == Qt::Key_Minus)
            return setZoom(m_zoom / zoomStep);
        if (key == Qt::Key_0)
            return setZoom(1);
    }
    const double screen = std::max(40.0, height() - 60.0);
    switch (event->key()) {
    case Qt::Key_Up:
        return scrollBy(-lineStep);
    case Qt::Key_Down:
        return scrollBy(lineStep);
    case Qt::Key_PageUp:
        return scrollBy(-screen);
    case Qt::Key_PageDown:
        return scrollBy(screen);
    case Qt::Key_Space:
        return scrollBy(event->modifiers() & Qt::ShiftModifier ? -screen : screen);
    case Qt::Key_Home:
        return scrollTo(0);
    case Qt::Key_End:
        return scrollTo(scrollRange());
    case Qt::Key_F3:
        return goToFound(event->modifiers() & Qt::ShiftModifier ? -1 : 1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_focused >= 0)
            follow(m_targets[static_cast<size_t>(m_focused)].target);
        return;
    case Qt::Key_Escape:
        if (m_focused >= 0)
            return leaveTargets();
        if (hasSelection())
            return select(m_head, m_head);
        emit closeWanted();
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

// Keys that the window knows as well are the page's while it has the keyboard.
bool PageView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    } else if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const PageTarget target = targetAt(help->pos());
        QToolTip::showText(help->globalPos(),
            target.link ? target.link->href.left(300).toHtmlEscaped() : QString(), this);
        return true;
    }
    return QWidget::event(event);
}

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
        const QRectF rect =
            m_layout.laid(piece).rectOf({target.range.cell, {target.range.from, target.range.to}});
        found.emplace_back(
            target, rect.translated(column().left(),
                        m_layout.top(piece) - m_layout.top(m_topPiece) - m_topOffset));
    }
    return found;
}

} // namespace corvelle
