// What the keyboard does in a page.
#include "interface/page/PageView.h"

#include "interface/page/CaretMoves.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr double lineStep = 48; // of the arrow keys

// With Shift these take the end of the selection along.
bool extendsSelection(const QKeyEvent& event)
{
    constexpr int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home,
        Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown};
    const auto mods = event.modifiers() & ~Qt::KeypadModifier;
    return (mods == Qt::ShiftModifier || mods == (Qt::ShiftModifier | Qt::ControlModifier)) &&
           std::find(std::begin(keys), std::end(keys), event.key()) != std::end(keys);
}

} // namespace

// ---- selecting ----

// Once a press or a selection has said where it begins.
bool PageView::selectByKey(QKeyEvent* event)
{
    if (!m_isPlaced || !extendsSelection(*event) || m_layout.count() == 0)
        return false;
    const bool far = event->modifiers() & Qt::ControlModifier;
    const auto moved = [this](CaretStep step, bool forward) {
        return movedBy(step, forward, m_page.text, m_anchor, m_head);
    };
    PagePlace head = m_head;
    bool keepsColumn = false;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        head = moved(far ? CaretStep::Word : CaretStep::Character,
            (event->key() == Qt::Key_Right) != isHeadReversed());
        break;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const bool down = event->key() == Qt::Key_Down;
        keepsColumn = !far;
        head = far ? moved(CaretStep::Block, down) : movedByLine(down);
        break;
    }
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        keepsColumn = true;
        head = movedByScreen(event->key() == Qt::Key_PageDown);
        break;
    default:
        head = far ? moved(CaretStep::Page, event->key() == Qt::Key_End)
                   : lineEdge(event->key() == Qt::Key_End);
    }
    const auto goal = m_goalX;
    select(m_anchor, head);
    if (keepsColumn)
        m_goalX = goal;
    showPlace(head);
    return true;
}

// Whether the words at the head read from right to left.
bool PageView::isHeadReversed() const
{
    const auto text = textIn(m_page.text, m_head.cells);
    if (!text || isAcrossCells(m_page.text, m_anchor, m_head))
        return false;
    const FlatText::BlockAt block = text->blockAt(m_head.at);
    return readsRightToLeft(
        text->text(block.start, std::min(block.end, block.start + PageLayout::mostUnits)));
}

QRectF PageView::caretAt(const PagePlace& place)
{
    const int piece = m_layout.pieceOf(place);
    return m_layout.laid(piece).caretAt(place).translated(column().left(), topOf(piece));
}

// A place that the pointer could give, as one that the selection can end at by the keyboard.
PagePlace PageView::reachableAt(QPointF at, bool down)
{
    const PagePlace place = placeAt(at);
    return isAcrossCells(m_page.text, m_anchor, place) ? place : outOfTables(m_anchor, place, down);
}

PagePlace PageView::movedByLine(bool down)
{
    if (isAcrossCells(m_page.text, m_anchor, m_head)) {
        const auto cell = cellBeside(m_page.text, m_anchor, m_head, down ? 1 : -1, 0);
        return cell ? *cell : outOfTables(m_anchor, m_head, down);
    }
    const PagePlace from = outOfTables(m_anchor, m_head, down);
    showPlace(from);
    const QRectF caret = caretAt(from);
    if (!m_goalX)
        m_goalX = caret.left();
    // Over gaps, the room in cells and what is beside taller cells.
    constexpr double stride = 8, farthest = 2'400;
    double y = down ? caret.bottom() + 1 : caret.top() - 1;
    for (double gone = 0; gone < farthest; gone += stride, y += down ? stride : -stride) {
        if (y < 0) {
            const double before = scrollPlace();
            scrollBy(-height() / 2.0);
            y += before - scrollPlace();
        }
        const PagePlace place = reachableAt(QPointF(*m_goalX, y), down);
        const bool isBeyond = down ? from < place : place < from;
        if (isBeyond && caretAt(place).top() != caretAt(from).top())
            return place;
    }
    return movedBy(CaretStep::Page, down, m_page.text, m_anchor, from);
}

PagePlace PageView::movedByScreen(bool down)
{
    showPlace(m_head);
    const QRectF caret = caretAt(m_head);
    if (!m_goalX)
        m_goalX = caret.left();
    const double before = scrollPlace(), screen = std::max(40.0, height() - 60.0);
    scrollBy(down ? screen : -screen);
    if (std::abs(scrollPlace() - before) < 1)
        return movedBy(CaretStep::Page, down, m_page.text, m_anchor, m_head);
    return reachableAt(QPointF(*m_goalX, caret.center().y()), down);
}

// The end of the head's line, or of its row of cells.
PagePlace PageView::lineEdge(bool end)
{
    if (isAcrossCells(m_page.text, m_anchor, m_head)) {
        PagePlace head = m_head;
        while (const auto next = cellBeside(m_page.text, m_anchor, head, 0, end ? 1 : -1)) {
            if (!isAcrossCells(m_page.text, m_anchor, *next))
                return *next;
            head = *next;
        }
        return head;
    }
    const PagePlace from = outOfTables(m_anchor, m_head, end);
    const auto text = textIn(m_page.text, from.cells);
    if (!text)
        return m_head;
    const FlatText::BlockAt block = text->blockAt(from.at);
    const double top = caretAt(from).top();
    // Lines follow one another, so the line's places lie together.
    Units inside = from.at, outside = end ? block.end + 1 : block.start - 1;
    while (std::abs(outside - inside) > 1) {
        const Units middle = (inside + outside) / 2;
        (std::abs(caretAt({from.cells, middle}).top() - top) < 1 ? inside : outside) = middle;
    }
    return {from.cells, inside};
}

// ---- keys ----

void PageView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        return copy();
    if (event->matches(QKeySequence::SelectAll))
        return selectAll();
    if (selectByKey(event))
        return;
    if (event->modifiers() & Qt::ControlModifier) {
        const int key = event->key();
        if (key == Qt::Key_Plus || key == Qt::Key_Equal)
            return zoomBy(1);
        if (key == Qt::Key_Minus)
            return zoomBy(-1);
        if (key == Qt::Key_0)
            return setZoom(1);
    }
    const double screen = std::max(40.0, height() - 60.0);
    switch (event->key()) {
    case Qt::Key_Up:
        return scrollBy(-lineStep);
    case Qt::Key_Down:
        return scrollBy(lineStep);
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (const auto table = wideTableInSight(); table && !event->modifiers())
            scrollSideways(*table, event->key() == Qt::Key_Left ? -lineStep : lineStep);
        else
            QWidget::keyPressEvent(event);
        return;
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
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll) ||
            (m_isPlaced && extendsSelection(*key))) {
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

} // namespace corvelle
