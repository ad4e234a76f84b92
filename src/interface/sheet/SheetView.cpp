#include "interface/sheet/SheetView.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/Look.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QStyleHints>
#include <QToolTip>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr SheetLimits limits;
constexpr int endRoom = 40; // behind the last row and column
constexpr double wheelLine = 20;
constexpr int thumbsLingerMs = 900, autoScrollMs = 16;

} // namespace

SheetView::SheetView(QWidget* parent)
    : QWidget(parent)
    , m_rows(std::make_shared<const SheetRows>())
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_thumbsLinger.setSingleShot(true);
    m_thumbsLinger.setInterval(thumbsLingerMs);
    connect(&m_thumbsLinger, &QTimer::timeout, this, &SheetView::updateThumbs);
    m_autoScroll.setInterval(autoScrollMs);
    connect(&m_autoScroll, &QTimer::timeout, this, [this] {
        const QRect area = cells();
        const auto beyond = [](int at, int from, int to) {
            return at < from ? at - from : std::max(0, at - to);
        };
        scrollTo(m_scroll + QPoint(beyond(m_dragAt.x(), area.left(), area.right()),
                                beyond(m_dragAt.y(), area.top(), area.bottom())) /
                                4);
        dragTo(m_dragAt);
    });
}

const Palette& SheetView::colors() const
{
    return corvelle::palette(schemeOf(*this));
}

// ---- what is shown ----

void SheetView::takeRows(Rows rows)
{
    m_rows = std::move(rows);
    const Lettering letters(TypeStyle::SheetCell);
    m_layout =
        SheetLayout(*m_rows, [&letters](const QString& text) { return letters.width(text); });
}

void SheetView::open(const QString& name, Rows rows)
{
    m_name = name;
    m_drag = Drag::None;
    m_autoScroll.stop();
    m_isUnpainted = true;
    m_found.clear();
    m_pick = {};
    m_scroll = {};
    takeRows(std::move(rows));
    setThumbs();
    update();
    tellPick();
}

void SheetView::refresh(Rows rows)
{
    takeRows(std::move(rows));
    scrollTo(m_scroll);
    setThumbs();
    update();
    tellPick();
}

// ---- places ----

QRect SheetView::cells() const
{
    return rect().adjusted(m_layout.numbersWidth(), SheetLayout::headHeight, 0, 0);
}

CellPlace SheetView::last() const
{
    const QRect area = cells();
    const int columns = std::max(m_layout.columns(), m_layout.columnAt(area.width()));
    const int rows = std::max(m_layout.rows(), SheetLayout::rowAt(area.height()));
    return {std::clamp(columns, 1, std::max(limits.columns, m_layout.columns())) - 1,
        std::clamp(rows, 1, std::max(limits.rows, m_layout.rows())) - 1};
}

CellRange SheetView::placesIn(const QRect& part) const
{
    const QRect area = cells();
    const int columns = std::max(limits.columns, m_layout.columns());
    const int rows = std::max(limits.rows, m_layout.rows());
    const QPoint from =
        QPoint(std::max(part.left(), area.left()), std::max(part.top(), area.top())) -
        area.topLeft() + m_scroll;
    const QPoint to = part.bottomRight() - area.topLeft() + m_scroll;
    return {{m_layout.columnAt(from.x()), SheetLayout::rowAt(from.y())},
        {std::min(columns - 1, m_layout.columnAt(std::max(0, to.x()))),
            std::min(rows - 1, SheetLayout::rowAt(std::max(0, to.y())))}};
}

QRect SheetView::rectOf(CellPlace place) const
{
    return QRect(m_layout.left(place.column), SheetLayout::top(place.row),
        m_layout.width(place.column), SheetLayout::rowHeight)
        .translated(cells().topLeft() - m_scroll);
}

std::optional<CellPlace> SheetView::placeAt(QPoint at) const
{
    const QRect area = cells();
    if (!area.contains(at))
        return std::nullopt;
    const QPoint in = at - area.topLeft() + m_scroll;
    const CellPlace place{m_layout.columnAt(in.x()), SheetLayout::rowAt(in.y())}, end = last();
    const bool isThere = place.column <= end.column && place.row <= end.row;
    return isThere ? std::optional(place) : std::nullopt;
}

// ---- scrolling ----

QPoint SheetView::scrollRange() const
{
    const QSize size = m_layout.size();
    const QRect area = cells();
    const auto range = [](int whole, int shown) {
        return whole <= shown ? 0 : whole + endRoom - shown;
    };
    return {range(size.width(), area.width()), range(size.height(), area.height())};
}

void SheetView::scrollTo(QPoint place)
{
    const QPoint range = scrollRange();
    const QPoint wanted(std::clamp(place.x(), 0, range.x()), std::clamp(place.y(), 0, range.y()));
    if (wanted == m_scroll)
        return;
    const QPoint by = wanted - m_scroll;
    m_scroll = wanted;
    setThumbs();
    m_thumbsLinger.start();
    // What stays in sight is moved as a picture, headings and all.
    const QRect area = cells();
    const bool whole = devicePixelRatioF() == std::floor(devicePixelRatioF());
    if (!whole || (by.x() != 0 && by.y() != 0))
        update();
    else if (by.x() != 0)
        scroll(-by.x(), 0, QRect(area.left(), 0, area.width(), height()));
    else
        scroll(0, -by.y(), QRect(0, area.top(), width(), area.height()));
    updateThumbs();
}

void SheetView::setThumbs()
{
    const QPoint range = scrollRange();
    m_down.set(cells(), m_scroll.y(), range.y());
    m_across.set(cells(), m_scroll.x(), range.x());
}

// Where they were moved to is painted as well.
void SheetView::updateThumbs()
{
    const int strip = ScrollThumb::room + std::max(std::abs(m_lastScroll.x() - m_scroll.x()),
                                              std::abs(m_lastScroll.y() - m_scroll.y()));
    m_lastScroll = m_scroll;
    update(QRect(width() - strip, 0, strip, height()));
    update(QRect(0, height() - strip, width(), strip));
}

void SheetView::bringIntoSight(CellPlace place)
{
    const QRect area = cells(), cell = rectOf(place);
    const auto by = [](int from, int to, int areaFrom, int areaTo) {
        return from < areaFrom ? from - areaFrom
                               : std::max(0, std::min(to - areaTo, from - areaFrom));
    };
    scrollTo(m_scroll + QPoint(by(cell.left(), cell.right(), area.left(), area.right()),
                            by(cell.top(), cell.bottom(), area.top(), area.bottom())));
}

void SheetView::resizeEvent(QResizeEvent*)
{
    const QPoint range = scrollRange();
    m_scroll = QPoint(std::min(m_scroll.x(), range.x()), std::min(m_scroll.y(), range.y()));
    setThumbs();
    update();
}

void SheetView::wheelEvent(QWheelEvent* event)
{
    const double lines = QGuiApplication::styleHints()->wheelScrollLines();
    QPointF by = event->pixelDelta().isNull()
                     ? QPointF(event->angleDelta()) / 120.0 * lines * wheelLine
                     : QPointF(event->pixelDelta());
    if (event->modifiers() & Qt::ShiftModifier && by.x() == 0)
        by = QPointF(by.y(), 0);
    scrollTo(m_scroll - by.toPoint());
    setHovered(placeAt(event->position().toPoint()));
    event->accept();
}

// ---- picking ----

void SheetView::setPick(const SheetPick& pick)
{
    if (pick == m_pick)
        return;
    m_pick = pick;
    update();
    tellPick();
}

void SheetView::pickCell(CellPlace place, SheetPick::Reach reach)
{
    const CellPlace end = last();
    SheetPick pick = m_pick;
    pick.pick({std::clamp(place.column, 0, end.column), std::clamp(place.row, 0, end.row)}, reach);
    setPick(pick);
    bringIntoSight(pick.picked);
}

void SheetView::pickAll()
{
    SheetPick pick = m_pick;
    pick.anchor = {};
    pick.picked = {std::max(0, m_layout.columns() - 1), std::max(0, m_layout.rows() - 1)};
    setPick(pick);
}

void SheetView::tellPick()
{
    setAccessibleName(m_name);
    emit pickChanged();
    if (!QAccessible::isActive() || !hasFocus())
        return;
    QAccessibleInterface* table = QAccessible::queryAccessibleInterface(this);
    if (QAccessibleInterface* cell = table ? table->focusChild() : nullptr) {
        QAccessibleEvent event(cell, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

void SheetView::copy() const
{
    QGuiApplication::clipboard()->setText(copiedCells(*m_rows, m_pick.range()));
}

void SheetView::setHovered(std::optional<CellPlace> place)
{
    if (place == m_pick.hovered)
        return;
    for (const auto& hovered : {std::exchange(m_pick.hovered, place), place})
        if (hovered)
            update(rectOf(*hovered));
}

// ---- pointer ----

void SheetView::pickHeading(QPoint at, SheetPick::Reach reach)
{
    const QRect area = cells();
    const bool column = at.y() < area.top();
    const CellPlace end{std::max(0, m_layout.columns() - 1), std::max(0, m_layout.rows() - 1)};
    if (column && at.x() < area.left())
        return pickAll();
    const QPoint in = at - area.topLeft() + m_scroll;
    const int number = column ? std::clamp(m_layout.columnAt(std::max(0, in.x())), 0, last().column)
                              : std::clamp(SheetLayout::rowAt(std::max(0, in.y())), 0, last().row);
    SheetPick pick = m_pick;
    const bool alone = reach == SheetPick::Reach::Alone;
    // The far end is the anchor, so that the cell shown in full is one at the heading.
    pick.picked = column ? CellPlace{number, 0} : CellPlace{0, number};
    pick.anchor = column ? CellPlace{alone ? number : m_pick.anchor.column, end.row}
                         : CellPlace{end.column, alone ? number : m_pick.anchor.row};
    setPick(pick);
}

void SheetView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_dragAt = event->position().toPoint();
    m_pressedAt = m_dragAt;
    const auto reach =
        event->modifiers() & Qt::ShiftModifier ? SheetPick::Reach::Range : SheetPick::Reach::Alone;
    for (auto [thumb, drag] : {std::pair(&m_down, Drag::Down), std::pair(&m_across, Drag::Across)})
        if (thumb->isOnTrack(event->position())) {
            m_drag = drag;
            thumb->grab(event->position());
            return dragTo(m_dragAt);
        }
    if (const auto place = placeAt(m_dragAt)) {
        m_drag = Drag::Cells;
        pickCell(*place, reach);
    } else if (!cells().contains(m_dragAt)) {
        m_drag = m_dragAt.y() < cells().top() ? Drag::Columns : Drag::Rows;
        pickHeading(m_dragAt, reach);
    }
}

void SheetView::dragTo(QPoint at)
{
    const QRect area = cells();
    switch (m_drag) {
    case Drag::Down:
        return scrollTo({m_scroll.x(), m_down.placeFor(at)});
    case Drag::Across:
        return scrollTo({m_across.placeFor(at), m_scroll.y()});
    case Drag::Columns:
        return pickHeading({std::max(at.x(), area.left()), 0}, SheetPick::Reach::Range);
    case Drag::Rows:
        return pickHeading({0, std::max(at.y(), area.top())}, SheetPick::Reach::Range);
    case Drag::Cells: {
        const QPoint in = QPoint(std::clamp(at.x(), area.left(), area.right()),
                              std::clamp(at.y(), area.top(), area.bottom())) -
                          area.topLeft() + m_scroll;
        SheetPick pick = m_pick;
        const CellPlace end = last();
        pick.pick({std::min(m_layout.columnAt(in.x()), end.column),
                      std::min(SheetLayout::rowAt(in.y()), end.row)},
            SheetPick::Reach::Range);
        return setPick(pick);
    }
    case Drag::None:
        return;
    }
}

void SheetView::mouseMoveEvent(QMouseEvent* event)
{
    m_dragAt = event->position().toPoint();
    if (!(event->buttons() & Qt::LeftButton))
        m_drag = Drag::None;
    if (m_drag == Drag::None) {
        m_autoScroll.stop();
        setHovered(placeAt(m_dragAt));
        const bool onTrack = m_down.isOnTrack(m_dragAt) || m_across.isOnTrack(m_dragAt);
        if (std::exchange(m_isOnTrack, onTrack) != onTrack)
            updateThumbs();
        return;
    }
    // A hand that presses isn't quite still.
    if (m_drag == Drag::Cells && (m_dragAt - m_pressedAt).manhattanLength() <
                                     QGuiApplication::styleHints()->startDragDistance())
        return;
    dragTo(m_dragAt);
    const bool beyond = m_drag == Drag::Cells && !cells().contains(m_dragAt);
    if (beyond && !m_autoScroll.isActive())
        m_autoScroll.start();
    else if (!beyond)
        m_autoScroll.stop();
}

void SheetView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    m_drag = Drag::None;
    m_autoScroll.stop();
    update();
}

void SheetView::contextMenuEvent(QContextMenuEvent* event)
{
    if (event->reason() == QContextMenuEvent::Mouse) {
        const auto place = placeAt(event->pos());
        if (place && !m_pick.range().contains(*place))
            pickCell(*place);
        emit menuWanted(event->pos());
    } else {
        emit menuWanted(rectOf(m_pick.picked).bottomLeft());
    }
}

void SheetView::leaveEvent(QEvent*)
{
    m_dragAt = QPoint(-1, -1);
    m_isOnTrack = false;
    setHovered(std::nullopt);
}

// ---- keys ----

bool SheetView::moveByKey(const QKeyEvent& event)
{
    CellPlace to = m_pick.picked;
    const bool far = event.modifiers() & Qt::ControlModifier;
    const CellPlace end{std::max(0, m_layout.columns() - 1), std::max(0, m_layout.rows() - 1)};
    const int screen = std::max(1, cells().height() / SheetLayout::rowHeight - 1);
    switch (event.key()) {
    case Qt::Key_Left:
        to.column = far ? 0 : to.column - 1;
        break;
    case Qt::Key_Right:
        to.column = far ? end.column : to.column + 1;
        break;
    case Qt::Key_Up:
        to.row = far ? 0 : to.row - 1;
        break;
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        to.row = far ? end.row : to.row + 1;
        break;
    case Qt::Key_PageUp:
        to.row -= screen;
        break;
    case Qt::Key_PageDown:
        to.row += screen;
        break;
    case Qt::Key_Home:
        to = {0, far ? 0 : to.row};
        break;
    case Qt::Key_End:
        to = {end.column, far ? end.row : to.row};
        break;
    default:
        return false;
    }
    const bool extends = event.modifiers() & Qt::ShiftModifier;
    pickCell(to, extends ? SheetPick::Reach::Range : SheetPick::Reach::Alone);
    return true;
}

void SheetView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        return copy();
    if (event->matches(QKeySequence::SelectAll))
        return pickAll();
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (control && (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown)) {
        emit sheetWanted(event->key() == Qt::Key_PageDown ? 1 : -1);
    } else if (event->key() == Qt::Key_F3) {
        emit foundWanted(event->modifiers() & Qt::ShiftModifier ? -1 : 1);
    } else if (event->key() == Qt::Key_Space && !control) {
        emit wholeTextWanted();
    } else if (event->key() == Qt::Key_Escape && !m_pick.range().isOne()) {
        pickCell(m_pick.picked);
    } else if (event->key() == Qt::Key_Escape) {
        emit closeWanted();
    } else if (!moveByKey(*event)) {
        QWidget::keyPressEvent(event);
    }
}

// Keys that the window knows as well are the sheet's while it has the keyboard.
bool SheetView::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    } else if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const auto place = placeAt(help->pos());
        const SheetCell* cell = place ? cellAt(*m_rows, *place) : nullptr;
        const bool cut = cell && Lettering(TypeStyle::SheetCell).width(lineOf(cell->text)) >
                                     roomFor(*place, *cell).width();
        const QString words = cut ? cell->text.left(600).toHtmlEscaped() : QString();
        QToolTip::showText(help->globalPos(), words, this);
        return true;
    }
    return QWidget::event(event);
}

// ---- finding ----

void SheetView::setFound(std::vector<CellPlace> found)
{
    if (found == m_found)
        return;
    m_found = std::move(found);
    update();
}

} // namespace corvelle
