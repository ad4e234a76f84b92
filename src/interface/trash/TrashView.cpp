#include "interface/trash/TrashView.h"

#include "interface/theme/Fonts.h"
#include "interface/theme/Icons.h"
#include "interface/theme/Shadows.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/PushButton.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostWidth = 1000, leastSide = 24;
constexpr int titleTop = 94, sentenceTop = 130, listTop = 170;
constexpr int headHeight = 36, rowHeight = 64;
constexpr int barBottom = 20, roomBelow = 96;

// Where the columns stand, as shares of a list 1,000 wide.
struct Columns
{
    double thumb, name, wasIn, moved, right;
};

Columns columnsOf(const QRect& list)
{
    const double width = list.width();
    return {list.left() + 18.0, list.left() + 78.0, list.left() + width * 0.542,
        list.left() + width * 0.742, list.right() - 19.0};
}

QString daysWords(int days)
{
    return days == 1 ? u"1 day"_s : u"%1 days"_s.arg(days);
}

} // namespace

TrashView::TrashView(QWidget* parent)
    : QWidget(parent)
    , m_empty(new PushButton(u"Empty Trash…"_s, PushButton::Role::SecondaryDanger, this))
    , m_bar(new GlassPanel(GlassPanel::Fill::Glass, radius::bar, this))
    , m_count(new QLabel(m_bar))
{
    setAccessibleName(u"Trash"_s);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(m_empty, &QAbstractButton::clicked, this, &TrashView::emptyWanted);
    auto* forGood = new PushButton(u"Delete for Good…"_s, PushButton::Role::SecondaryDanger, m_bar);
    auto* back = new PushButton(u"Put Back"_s, PushButton::Role::Primary, m_bar);
    back->setSign(Icon::Restore);
    connect(forGood, &QAbstractButton::clicked, this, [this] { emit deleteWanted(selected()); });
    connect(back, &QAbstractButton::clicked, this, [this] { emit putBackWanted(selected()); });
    auto* row = new QHBoxLayout(m_bar);
    row->setContentsMargins(18, 8, 8, 8);
    row->setSpacing(12);
    row->addWidget(m_count);
    row->addWidget(forGood);
    row->addWidget(back);
    m_bar->hide();
}

void TrashView::setRows(std::vector<TrashRow> rows)
{
    const QString current = m_current >= 0 ? m_rows[static_cast<size_t>(m_current)].id : QString();
    m_rows = std::move(rows);
    QSet<QString> ids;
    m_current = m_anchor = m_hovered = -1;
    for (size_t i = 0; i < m_rows.size(); ++i) {
        ids.insert(m_rows[i].id);
        if (m_rows[i].id == current)
            m_current = m_anchor = static_cast<int>(i);
    }
    m_selection.intersect(ids);
    m_empty->setVisible(!m_rows.empty());
    scrollTo(m_scroll);
    selectionChanged();
}

std::vector<QString> TrashView::selected() const
{
    std::vector<QString> ids;
    for (const TrashRow& row : m_rows)
        if (m_selection.contains(row.id))
            ids.push_back(row.id);
    return ids;
}

void TrashView::select(const QSet<QString>& ids)
{
    m_selection = ids;
    selectionChanged();
}

void TrashView::selectionChanged()
{
    const auto count = m_selection.size();
    auto* label = static_cast<QLabel*>(m_count);
    label->setFont(corvelle::font(TypeStyle::Label));
    label->setText(u"%1 selected"_s.arg(count));
    m_bar->setVisible(count > 0);
    layOut();
    update();
}

// ---- layout ----

QRect TrashView::column() const
{
    const int wide = std::min(mostWidth, width() - 2 * leastSide);
    return QRect((width() - wide) / 2, titleTop, wide, height() - titleTop);
}

QRect TrashView::list() const
{
    const QRect area = column();
    const int wanted = headHeight + static_cast<int>(m_rows.size()) * rowHeight;
    const int most = std::max(headHeight, height() - listTop - roomBelow);
    return QRect(area.left(), listTop, area.width(), std::min(wanted, most));
}

QRect TrashView::rowRect(int row) const
{
    const QRect area = list();
    return QRect(
        area.left(), area.top() + headHeight + row * rowHeight - m_scroll, area.width(), rowHeight);
}

QRect TrashView::rowPlace(const QString& id) const
{
    for (size_t i = 0; i < m_rows.size(); ++i)
        if (m_rows[i].id == id)
            return rowRect(static_cast<int>(i)).intersected(list().adjusted(0, headHeight, 0, 0));
    return {};
}

int TrashView::rowAt(QPoint at) const
{
    if (!list().adjusted(0, headHeight, 0, 0).contains(at))
        return -1;
    const int row = (at.y() - list().top() - headHeight + m_scroll) / rowHeight;
    return row < static_cast<int>(m_rows.size()) ? row : -1;
}

void TrashView::layOut()
{
    const QRect area = column();
    m_empty->resize(m_empty->sizeHint());
    m_empty->move(area.right() + 1 - m_empty->width(), listTop - 20 - m_empty->height());
    m_bar->resize(m_bar->layout()->sizeHint());
    m_bar->move((width() - m_bar->width()) / 2, height() - barBottom - m_bar->height());
}

void TrashView::resizeEvent(QResizeEvent*)
{
    layOut();
    scrollTo(m_scroll);
}

void TrashView::scrollTo(int pixels)
{
    const int shown = list().height() - headHeight;
    const int most = static_cast<int>(m_rows.size()) * rowHeight - shown;
    m_scroll = std::clamp(pixels, 0, std::max(0, most));
    update();
}

// ---- painting ----

void TrashView::paintHead(QPainter& painter) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    const QRect area = column();
    painter.setPen(colors.ink);
    Lettering(TypeStyle::H1)
        .draw(painter, QRectF(area.left(), titleTop - 2, area.width(), 32), Qt::AlignLeft,
            u"Trash"_s);
    painter.setPen(colors.ink2);
    Lettering(TypeStyle::Body)
        .draw(painter, QRectF(area.left(), sentenceTop, area.width(), 20), Qt::AlignLeft,
            m_rows.empty() ? u"There is nothing in the Trash."_s
                           : u"Things stay here for 30 days, then they’re deleted for good."_s);
}

void TrashView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.fillRect(rect(), colors.ground);
    paintHead(painter);
    if (m_rows.empty())
        return;
    const QRect area = list();
    drawShadow(painter, area, radius::bar, Elevation::Rest, schemeOf(*this));
    QPainterPath surface;
    surface.addRoundedRect(area, radius::bar, radius::bar);
    painter.fillPath(surface, colors.surface);

    painter.save();
    painter.setClipPath(surface);
    painter.setClipRect(area.adjusted(0, headHeight, 0, 0), Qt::IntersectClip);
    const int first = m_scroll / rowHeight;
    const int last = std::min(
        static_cast<int>(m_rows.size()) - 1, (m_scroll + area.height() - headHeight) / rowHeight);
    for (int row = first; row <= last; ++row)
        paintRow(painter, row);
    painter.restore();

    const Columns at = columnsOf(area);
    const Lettering heading(TypeStyle::Small);
    const QRectF head(area.left(), area.top(), area.width(), headHeight);
    const auto name = [&](double x, const QString& words) {
        heading.draw(painter, QRectF(x, head.top(), 200, headHeight), Qt::AlignLeft, words);
    };
    painter.setPen(colors.ink2);
    name(at.name, u"Name"_s);
    name(at.wasIn, u"Was in"_s);
    name(at.moved, u"Moved here"_s);
    heading.draw(
        painter, QRectF(at.right - 80, head.top(), 80, headHeight), Qt::AlignRight, u"Left"_s);
    painter.fillRect(
        QRect(area.left(), area.top() + headHeight - 1, area.width(), 1), colors.hairline);
    painter.setPen(QPen(colors.hairline, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(area).adjusted(-0.5, -0.5, 0.5, 0.5), radius::bar, radius::bar);
}

void TrashView::paintRow(QPainter& painter, int index) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    const TrashRow& row = m_rows[static_cast<size_t>(index)];
    const QRect box = rowRect(index);
    const bool isSelected = m_selection.contains(row.id);
    if (isSelected)
        painter.fillRect(box, colors.accentSoft);
    else if (index == m_hovered)
        painter.fillRect(box, colors.hover);
    if (index > 0)
        painter.fillRect(QRect(box.left(), box.top(), box.width(), 1), colors.hairlineFaint);

    const Columns at = columnsOf(list());
    const QRectF thumb(at.thumb, box.center().y() - 20, 42, 42);
    const NodeTones& tones = colors.tones(row.color);
    painter.setPen(QPen(colors.hairline, 1));
    painter.setBrush(row.kind == NodeKind::Folder ? tones.fill : colors.sunken);
    painter.drawRoundedRect(thumb, 8, 8);
    drawIcon(painter, kindIcon(row.kind, row.picture),
        QRectF(thumb.center() - QPointF(11, 11), QSizeF(22, 22)),
        row.kind == NodeKind::Folder ? tones.ink : colors.ink2);

    const Lettering strong(TypeStyle::BodyStrong), body(TypeStyle::Label), small(TypeStyle::Small);
    const double nameRoom = at.wasIn - at.name - 16, inRoom = at.moved - at.wasIn - 16;
    painter.setPen(colors.ink);
    strong.draw(painter, QRectF(at.name, box.top() + 13, nameRoom, 20), Qt::AlignLeft,
        strong.elided(row.title, nameRoom, Qt::ElideMiddle));
    painter.setPen(colors.ink2);
    small.draw(painter, QRectF(at.name, box.top() + 33, nameRoom, 18), Qt::AlignLeft,
        small.elided(row.about, nameRoom, Qt::ElideRight));
    body.draw(painter, QRectF(at.wasIn, box.top(), inRoom, rowHeight), Qt::AlignLeft,
        body.elided(row.wasIn, inRoom, Qt::ElideRight));
    body.draw(painter, QRectF(at.moved, box.top(), 160, rowHeight), Qt::AlignLeft, row.movedAt);
    painter.setPen(row.daysLeft <= fewDaysLeft ? colors.danger : colors.ink);
    body.draw(painter, QRectF(at.right - 100, box.top(), 100, rowHeight), Qt::AlignRight,
        daysWords(row.daysLeft));
    if (hasFocus() && index == m_current) {
        painter.setPen(QPen(colors.accent, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(box).adjusted(3, 3, -3, -3), 8, 8);
    }
}

// ---- input ----

void TrashView::click(int row, Qt::KeyboardModifiers modifiers)
{
    const QString id = m_rows[static_cast<size_t>(row)].id;
    if ((modifiers & Qt::ShiftModifier) && m_anchor >= 0) {
        m_selection.clear();
        for (int i = std::min(m_anchor, row); i <= std::max(m_anchor, row); ++i)
            m_selection.insert(m_rows[static_cast<size_t>(i)].id);
    } else if (modifiers & Qt::ControlModifier) {
        if (!m_selection.remove(id))
            m_selection.insert(id);
        m_anchor = row;
    } else {
        m_selection = {id};
        m_anchor = row;
    }
    m_current = row;
    selectionChanged();
}

void TrashView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int row = rowAt(event->position().toPoint());
    if (row >= 0)
        click(row, event->modifiers());
    else if (!(event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)))
        select({});
}

void TrashView::mouseMoveEvent(QMouseEvent* event)
{
    const int row = rowAt(event->position().toPoint());
    if (std::exchange(m_hovered, row) != row)
        update();
}

void TrashView::leaveEvent(QEvent*)
{
    m_hovered = -1;
    update();
}

void TrashView::wheelEvent(QWheelEvent* event)
{
    const int dy =
        event->pixelDelta().isNull() ? event->angleDelta().y() / 2 : event->pixelDelta().y();
    scrollTo(m_scroll - dy);
    event->accept();
}

void TrashView::goTo(int row, Qt::KeyboardModifiers modifiers)
{
    if (m_rows.empty())
        return;
    row = std::clamp(row, 0, static_cast<int>(m_rows.size()) - 1);
    if (modifiers & Qt::ControlModifier)
        m_current = row;
    else
        click(row, modifiers & Qt::ShiftModifier);
    const int top = row * rowHeight, shown = list().height() - headHeight;
    if (top < m_scroll)
        scrollTo(top);
    else if (top + rowHeight > m_scroll + shown)
        scrollTo(top + rowHeight - shown);
    setAccessibleDescription(
        m_rows[static_cast<size_t>(row)].title + u", "_s + m_rows[static_cast<size_t>(row)].about);
    update();
}

void TrashView::keyPressEvent(QKeyEvent* event)
{
    const int last = static_cast<int>(m_rows.size()) - 1;
    switch (event->key()) {
    case Qt::Key_Escape:
        if (m_selection.isEmpty())
            emit closeWanted();
        else
            select({});
        return;
    case Qt::Key_Up:
        goTo(m_current < 0 ? last : m_current - 1, event->modifiers());
        return;
    case Qt::Key_Down:
        goTo(m_current + 1, event->modifiers());
        return;
    case Qt::Key_Home:
        goTo(0, event->modifiers());
        return;
    case Qt::Key_End:
        goTo(last, event->modifiers());
        return;
    case Qt::Key_Space:
        if (m_current >= 0)
            click(m_current, Qt::ControlModifier);
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (!m_selection.isEmpty())
            emit deleteWanted(selected());
        return;
    case Qt::Key_A:
        if (event->modifiers() == Qt::ControlModifier) {
            QSet<QString> all;
            for (const TrashRow& row : m_rows)
                all.insert(row.id);
            select(all);
            return;
        }
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void TrashView::focusInEvent(QFocusEvent*)
{
    update();
}

void TrashView::focusOutEvent(QFocusEvent*)
{
    update();
}

} // namespace corvelle
