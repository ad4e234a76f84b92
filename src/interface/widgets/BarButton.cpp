#include "interface/widgets/BarButton.h"

#include "interface/widgets/Tip.h"

#include <QPainter>

#include <utility>

namespace corvelle {
namespace {

constexpr QSize dockItem(64, 52);
constexpr double dockRadius = 9;

} // namespace

BarButton::BarButton(const QString& words, QWidget* parent, Form form)
    : ButtonBase({32, 32, form == Form::Crumb ? 7 : 10, 6, form == Form::Dock ? 22 : 20,
                     form == Form::Dock ? dockRadius : radius::control},
          parent)
    , m_form(form)
{
    setText(words);
    setAccessibleName(words);
}

BarButton::BarButton(Icon sign, const QString& name, QWidget* parent, Form form)
    : BarButton(QString(), parent, form)
{
    Measures narrow = measures();
    narrow.padding = 6;
    setMeasures(narrow);
    setSign(sign);
    if (form == Form::Dock) {
        setText(name);
        setAccessibleName(name);
    } else {
        setName(name);
    }
}

void BarButton::setName(const QString& name, const QString& key)
{
    setAccessibleName(name);
    if (m_tip == nullptr)
        m_tip = new Tip(*this, name, key);
    else
        m_tip->setWords(name, key);
}

void BarButton::setHere(bool here)
{
    m_isHere = here;
    updateGeometry();
    update();
}

void BarButton::setSignSize(int pixels)
{
    Measures changed = measures();
    changed.signSize = pixels;
    setMeasures(changed);
}

void BarButton::setTargeted(bool targeted)
{
    if (std::exchange(m_isTargeted, targeted) != targeted)
        update();
}

QSize BarButton::sizeHint() const
{
    return m_form == Form::Dock ? dockItem : ButtonBase::sizeHint();
}

Lettering BarButton::lettering() const
{
    if (m_form == Form::Dock)
        return Lettering(TypeStyle::DockLabel);
    return Lettering(m_isHere ? TypeStyle::LabelStrong : TypeStyle::Label);
}

void BarButton::paintEvent(QPaintEvent*)
{
    const Palette& tokens = colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool active = isEnabled() && (underMouse() || isDown() || isChecked());
    if (active) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isDown() || isChecked() ? tokens.pressed : tokens.hover);
        painter.drawRoundedRect(rect(), measures().radius, measures().radius);
    }
    if (m_isTargeted) {
        painter.setPen(QPen(tokens.accent, 2));
        painter.setBrush(tokens.accentSoft);
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(1, 1, -1, -1), measures().radius, measures().radius);
    }
    QColor ink = active || m_isHere ? tokens.ink : tokens.ink2;
    if (!isEnabled())
        ink = tokens.ink4;
    if (m_form == Form::Dock)
        drawDockItem(painter, ink);
    else
        drawContent(painter, ink, ink);
}

void BarButton::drawDockItem(QPainter& painter, const QColor& ink) const
{
    constexpr int gap = 3;
    const Lettering type = lettering();
    const int signSize = measures().signSize;
    const double top = (height() - signSize - gap - type.lineHeight()) / 2;
    const QRectF square((width() - signSize) / 2, top, signSize, signSize);
    drawIcon(painter, *sign(), square, isEnabled() ? colors().ink : ink);
    painter.setPen(ink);
    type.draw(painter, QRectF(0, square.bottom() + gap, width(), type.lineHeight()),
        Qt::AlignHCenter, text());
}

} // namespace corvelle
