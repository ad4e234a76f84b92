#include "interface/widgets/MenuPanel.h"

#include "interface/theme/Fonts.h"
#include "interface/theme/Theme.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int edge = 5, rowHeight = 30, lineHeight = 11, discRow = 31;
constexpr int sidePad = 9, signSize = 18, menuGap = 9, menuKeyGap = 28, menuLeastWidth = 252;
constexpr double discSize = 19, discGap = 6.5;
constexpr double rowRadius = 7;

QString colorName(NodeColor color)
{
    QString name = word(color);
    name[0] = name[0].toUpper();
    return name;
}

} // namespace

MenuRow menuLine()
{
    MenuRow row;
    row.kind = MenuRow::Kind::Line;
    return row;
}

// A row or a disc.
class MenuPanel::Item : public QAbstractButton
{
public:
    Item(const MenuRow& row, std::optional<NodeColor> disc, QWidget* parent)
        : QAbstractButton(parent)
        , m_row(row)
        , m_disc(disc)
    {
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_Hover);
        setEnabled(row.enabled);
        setAccessibleName(disc ? colorName(*disc) : row.words);
        if (!row.key.isEmpty())
            setAccessibleDescription(row.key);
        setCheckable(disc.has_value());
        setChecked(disc && row.color == disc);
    }

    QString id() const { return m_disc ? u"color:"_s + word(*m_disc) : m_row.id; }
    bool isDisc() const { return m_disc.has_value(); }
    bool isCurrent() const { return m_current; }
    void setCurrent(bool current)
    {
        m_current = current;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        if (m_disc)
            paintDisc(painter, colors);
        else
            paintRow(painter, colors);
    }

private:
    void paintDisc(QPainter& painter, const Palette& colors) const
    {
        const QPointF centre = QRectF(rect()).center();
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.tones(*m_disc).solid);
        painter.drawEllipse(centre, discSize / 2, discSize / 2);
        painter.setBrush(Qt::NoBrush);
        if (isChecked() || m_current) {
            painter.setPen(
                QPen(colors.accent, 1.5, m_current && !isChecked() ? Qt::DotLine : Qt::SolidLine));
            painter.drawEllipse(centre, discSize / 2 + 2.75, discSize / 2 + 2.75);
        } else {
            painter.setPen(QPen(colors.hairline, 1));
            painter.drawEllipse(centre, discSize / 2 - 0.5, discSize / 2 - 0.5);
        }
    }

    void paintRow(QPainter& painter, const Palette& colors) const
    {
        QColor ink = m_row.danger ? colors.danger : colors.ink;
        QColor second = m_row.danger ? colors.danger : colors.ink2;
        QColor keyInk = colors.ink3;
        if (!isEnabled()) {
            ink = second = keyInk = colors.ink4;
        } else if (m_current) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(m_row.danger ? colors.dangerSoft : colors.accentSoft);
            painter.drawRoundedRect(rect(), rowRadius, rowRadius);
            if (!m_row.danger)
                ink = second = keyInk = colors.accentInk;
        }
        if (m_row.icon)
            drawIcon(painter, *m_row.icon,
                QRectF(sidePad, (height() - signSize) / 2.0, signSize, signSize), second);
        const Lettering letters(TypeStyle::LabelText);
        painter.setPen(ink);
        const double left = sidePad + signSize + menuGap;
        letters.draw(painter, QRectF(left, 0, width() - left - sidePad, height()), Qt::AlignLeft,
            m_row.words);
        painter.setPen(keyInk);
        Lettering(TypeStyle::Key)
            .draw(painter, QRectF(0, 0, width() - sidePad, height()), Qt::AlignRight, m_row.key);
    }

    const MenuRow m_row;
    const std::optional<NodeColor> m_disc;
    bool m_current = false;
};

MenuPanel::MenuPanel(std::vector<MenuRow> rows, QPoint at, QWidget& host)
    : QWidget(&host)
    , m_rows(std::move(rows))
    , m_host(host)
    , m_panel(new GlassPanel(GlassPanel::Fill::Panel, radius::menu, this))
    , m_focusBefore(QApplication::focusWidget())
{
    setAccessibleName(u"Menu"_s);
    setFocusPolicy(Qt::StrongFocus);
    setGeometry(host.rect());
    build();
    constexpr int margin = 8;
    const int x = std::clamp(at.x(), margin, std::max(margin, width() - m_panel->width() - margin));
    const int below = at.y(), above = at.y() - m_panel->height();
    const int y =
        below + m_panel->height() + margin <= height() || above < margin
            ? std::clamp(below, margin, std::max(margin, height() - m_panel->height() - margin))
            : above;
    m_panel->move(x, y);
    host.installEventFilter(this);
    show();
    raise();
    m_panel->appear();
    setFocus(Qt::PopupFocusReason);
}

void MenuPanel::build()
{
    const Lettering letters(TypeStyle::LabelText), keys(TypeStyle::Key);
    double width = menuLeastWidth;
    for (const MenuRow& row : m_rows) {
        const double key = row.key.isEmpty() ? 0 : menuKeyGap + keys.width(row.key);
        width = std::max(width,
            2 * (edge + sidePad) + signSize + menuGap + std::ceil(letters.width(row.words) + key));
    }
    int y = edge;
    for (const MenuRow& row : m_rows) {
        if (row.kind == MenuRow::Kind::Line) {
            auto* line = new QWidget(m_panel);
            line->setGeometry(
                edge + sidePad, y + 5, static_cast<int>(width) - 2 * (edge + sidePad), 1);
            line->setAutoFillBackground(true);
            QPalette colors = line->palette();
            colors.setColor(QPalette::Window, corvelle::palette(schemeOf(m_host)).hairline);
            line->setPalette(colors);
            y += lineHeight;
        } else if (row.kind == MenuRow::Kind::Colors) {
            double x = edge + sidePad - 3;
            for (const NodeColor color : allNodeColors) {
                auto* disc = new Item(row, color, m_panel);
                disc->setGeometry(QRectF(x, y + 2, discSize + 6, discSize + 6).toRect());
                x += discSize + discGap;
                m_items.push_back(disc);
            }
            y += discRow;
        } else {
            auto* item = new Item(row, {}, m_panel);
            item->setGeometry(edge, y, static_cast<int>(width) - 2 * edge, rowHeight);
            if (row.enabled)
                m_items.push_back(item);
            y += rowHeight;
        }
    }
    m_panel->resize(static_cast<int>(width), y + edge);
    for (Item* item : m_items) {
        item->installEventFilter(this);
        connect(item, &QAbstractButton::clicked, this, [this, item] { choose(item->id()); });
    }
}

std::vector<std::pair<QString, QRect>> MenuPanel::places() const
{
    std::vector<std::pair<QString, QRect>> result;
    for (const Item* item : m_items)
        result.emplace_back(item->id(), QRect(item->mapTo(&m_host, QPoint(0, 0)), item->size()));
    return result;
}

// ---- moving ----

void MenuPanel::goTo(QWidget* wanted)
{
    for (Item* item : m_items) {
        if (item->isCurrent() == (item == wanted))
            continue;
        item->setCurrent(item == wanted);
        if (item == wanted) {
            QAccessibleEvent event(item, QAccessible::Focus);
            QAccessible::updateAccessibility(&event);
        }
    }
}

// Down and up go by rows, the discs as one; left and right go along the discs.
void MenuPanel::go(int step)
{
    if (m_items.empty())
        return;
    const auto at = std::find_if(
        m_items.begin(), m_items.end(), [](const Item* item) { return item->isCurrent(); });
    const int count = static_cast<int>(m_items.size());
    int index =
        at == m_items.end() ? (step > 0 ? -1 : count) : static_cast<int>(at - m_items.begin());
    const bool fromDisc = at != m_items.end() && (*at)->isDisc();
    do {
        index = (index + step + count) % count;
    } while (fromDisc && m_items[static_cast<size_t>(index)]->isDisc() &&
             m_items[static_cast<size_t>(index)] != *at);
    // Coming to the discs from below: the first of them, as from above.
    while (!fromDisc && index > 0 && m_items[static_cast<size_t>(index)]->isDisc() &&
           m_items[static_cast<size_t>(index - 1)]->isDisc())
        --index;
    goTo(m_items[static_cast<size_t>(index)]);
}

bool MenuPanel::goToLetter(const QString& letter)
{
    if (letter.trimmed().isEmpty())
        return false;
    const auto current = std::find_if(
        m_items.begin(), m_items.end(), [](const Item* item) { return item->isCurrent(); });
    const size_t start =
        current == m_items.end() ? 0 : static_cast<size_t>(current - m_items.begin()) + 1;
    for (size_t i = 0; i < m_items.size(); ++i) {
        Item* item = m_items[(start + i) % m_items.size()];
        if (!item->isDisc() && item->accessibleName().startsWith(letter, Qt::CaseInsensitive)) {
            goTo(item);
            return true;
        }
    }
    return false;
}

void MenuPanel::keyPressEvent(QKeyEvent* event)
{
    const auto current = std::find_if(
        m_items.begin(), m_items.end(), [](const Item* item) { return item->isCurrent(); });
    const bool onDisc = current != m_items.end() && (*current)->isDisc();
    switch (event->key()) {
    case Qt::Key_Escape:
        closeMenu();
        break;
    case Qt::Key_Down:
        go(1);
        break;
    case Qt::Key_Up:
        go(-1);
        break;
    case Qt::Key_Home:
        goTo(m_items.front());
        break;
    case Qt::Key_End:
        goTo(m_items.back());
        break;
    case Qt::Key_Right:
    case Qt::Key_Left: {
        const auto next = event->key() == Qt::Key_Right ? current + 1 : current - 1;
        if (onDisc && next >= m_items.begin() && next < m_items.end() && (*next)->isDisc())
            goTo(*next);
        break;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (current != m_items.end())
            choose((*current)->id());
        break;
    default:
        goToLetter(event->text());
    }
    // All other keys end here: what they mean to the window must not happen below a menu.
}

bool MenuPanel::focusNextPrevChild(bool next)
{
    go(next ? 1 : -1);
    return true;
}

// ---- ending ----

void MenuPanel::choose(const QString& id)
{
    if (m_isClosing)
        return;
    closeMenu();
    emit chosen(id);
}

void MenuPanel::closeMenu()
{
    if (m_isClosing)
        return;
    m_isClosing = true;
    m_host.removeEventFilter(this);
    hide();
    if (m_focusBefore)
        m_focusBefore->setFocus(Qt::PopupFocusReason);
    emit closed();
    deleteLater();
}

void MenuPanel::mousePressEvent(QMouseEvent*)
{
    closeMenu();
}

void MenuPanel::wheelEvent(QWheelEvent* event)
{
    event->accept();
}

void MenuPanel::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason)
        closeMenu();
}

bool MenuPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_host) {
        if (event->type() == QEvent::Resize)
            closeMenu();
    } else if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove) {
        goTo(static_cast<QWidget*>(watched));
    }
    return false;
}

} // namespace corvelle
