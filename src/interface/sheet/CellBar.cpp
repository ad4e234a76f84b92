#include "interface/sheet/CellBar.h"

#include "documents/Xlsx.h"
#include "interface/sheet/SheetLayout.h"
#include "interface/theme/Fonts.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/ScrollThumb.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int textLeft = 104, textRight = 16, room = 11;
constexpr int moreEdge = 8, moreRoom = 48; // of the button behind the text
constexpr int mostLines = static_cast<int>(SheetLimits().characters) + 1;

Lettering letters()
{
    return Lettering(TypeStyle::SheetCell);
}

int lineHeight()
{
    return static_cast<int>(letters().lineHeight());
}

} // namespace

CellBar::CellBar(QWidget* parent)
    : QWidget(parent)
    , m_more(new BarButton(Icon::ChevronDown, u"Whole text"_s, this))
{
    setAccessibleName(u"Cell"_s);
    m_more->setSignSize(16);
    m_more->setFocusPolicy(Qt::NoFocus); // Space does the same
    m_more->hide();
    connect(m_more, &QAbstractButton::clicked, this, [this] { setOpen(!m_isOpen); });
}

// ---- what is shown ----

void CellBar::setCell(const QString& place, const QString& text)
{
    if (place == m_place && text == m_text)
        return;
    setOpen(false);
    m_place = place;
    m_text = text;
    setAccessibleDescription(place + u' ' + text);
    layOut();
}

void CellBar::setTaken(int pixels)
{
    if (std::exchange(m_taken, pixels) != pixels)
        layOut();
}

bool CellBar::hasMore() const
{
    const double wide = width() - m_taken - textLeft - textRight;
    const QString line = lineOf(m_text); // no longer than anybody sees
    return line.size() < m_text.size() || m_text.contains(u'\n') || m_text.contains(u'\r') ||
           letters().width(line) > wide;
}

void CellBar::setOpen(bool opens)
{
    if (opens == m_isOpen || (opens && !hasMore()))
        return;
    m_isOpen = opens;
    m_scroll = 0;
    layOut();
    emit openChanged();
}

// ---- layout ----

double CellBar::textWidth(int pixels) const
{
    return std::max(
        40, pixels - m_taken - textLeft - (m_isOpen || hasMore() ? moreRoom : textRight));
}

std::vector<QString> CellBar::linesIn(int pixels) const
{
    QString broken = m_text;
    broken.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    return letters().lines(broken, textWidth(pixels), mostLines);
}

int CellBar::heightFor(int pixels, int most) const
{
    if (!m_isOpen)
        return rowHeight;
    const int lines = static_cast<int>(linesIn(pixels).size());
    return std::clamp(2 * room + lines * lineHeight(), rowHeight, std::max(rowHeight, most));
}

int CellBar::scrollRange() const
{
    const int all = 2 * room + static_cast<int>(m_lines.size()) * lineHeight();
    return m_isOpen ? std::max(0, all - height()) : 0;
}

void CellBar::layOut()
{
    m_lines = m_isOpen ? linesIn(width()) : std::vector<QString>();
    m_scroll = std::min(m_scroll, scrollRange());
    m_more->setVisible(m_isOpen || hasMore());
    m_more->setSign(m_isOpen ? Icon::ChevronUp : Icon::ChevronDown);
    m_more->setName(m_isOpen ? u"One line"_s : u"Whole text"_s,
        QKeySequence(Qt::Key_Space).toString(QKeySequence::NativeText));
    m_more->resize(m_more->sizeHint());
    m_more->move(
        width() - m_taken - moreEdge - m_more->width(), (rowHeight - m_more->height()) / 2);
    update();
}

void CellBar::resizeEvent(QResizeEvent*)
{
    layOut();
}

// ---- scrolling ----

void CellBar::scrollTo(int place)
{
    m_scroll = std::clamp(place, 0, scrollRange());
    update();
}

void CellBar::wheelEvent(QWheelEvent* event)
{
    const int by =
        event->pixelDelta().isNull() ? event->angleDelta().y() / 2 : event->pixelDelta().y();
    scrollTo(m_scroll - by);
    event->accept();
}

// The window knows this key as well.
bool CellBar::event(QEvent* event)
{
    const bool isCopy = event->type() == QEvent::ShortcutOverride &&
                        static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy);
    if (!isCopy)
        return QWidget::event(event);
    event->accept();
    return true;
}

void CellBar::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        return QGuiApplication::clipboard()->setText(m_text); // as it is read here
    if (event->modifiers() & Qt::ControlModifier)
        return QWidget::keyPressEvent(event); // to another sheet
    const int page = std::max(lineHeight(), height() - 2 * room - lineHeight());
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Escape:
        return setOpen(false);
    case Qt::Key_Up:
        return scrollTo(m_scroll - lineHeight());
    case Qt::Key_Down:
        return scrollTo(m_scroll + lineHeight());
    case Qt::Key_PageUp:
        return scrollTo(m_scroll - page);
    case Qt::Key_PageDown:
        return scrollTo(m_scroll + page);
    case Qt::Key_Home:
        return scrollTo(0);
    case Qt::Key_End:
        return scrollTo(scrollRange());
    default:
        QWidget::keyPressEvent(event);
    }
}

ScrollThumb CellBar::thumb() const
{
    ScrollThumb thumb(Qt::Vertical);
    thumb.set(QRect(0, rowHeight, width(), height() - rowHeight), m_scroll, scrollRange());
    return thumb;
}

// ---- painting ----

// Where reading begins.
Qt::Alignment CellBar::side() const
{
    return m_text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
}

void CellBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.fillRect(rect(), colors.surface);
    painter.fillRect(
        QRect(0, height() - 1, width(), 1), m_isOpen ? colors.hairlineStrong : colors.hairline);
    painter.fillRect(QRect(91, 11, 1, 18), colors.hairline);
    painter.setPen(colors.ink);
    Lettering(TypeStyle::LabelStrong)
        .draw(painter, QRectF(0, 0, 91, rowHeight - 1), Qt::AlignHCenter, m_place);
    if (m_isOpen)
        paintLines(painter);
    else
        paintLine(painter);
}

void CellBar::paintLine(QPainter& painter) const
{
    const double wide = textWidth(width());
    const qsizetype end = m_text.indexOf(u'\n');
    QString line = lineOf(m_text);
    if (end >= 0 || line.size() < m_text.size())
        line = lineOf(m_text.left(end)) + u'…';
    letters().draw(painter, QRectF(textLeft, 0, wide, rowHeight - 1), side(),
        letters().elided(line, wide, Qt::ElideRight));
}

void CellBar::paintLines(QPainter& painter) const
{
    painter.setClipRect(QRect(0, room, width(), height() - 2 * room));
    const Lettering lettering = letters();
    const int step = lineHeight();
    int top = room - m_scroll;
    for (const QString& line : m_lines) {
        if (top + step > 0 && top < height())
            lettering.draw(painter, QRectF(textLeft, top, textWidth(width()), step), side(), line);
        top += step;
    }
    painter.setClipping(false);
    if (const QRectF bar = thumb().rect(); !bar.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(corvelle::palette(schemeOf(*this)).ink4);
        painter.drawRoundedRect(bar, 3, 3);
    }
}

} // namespace corvelle
