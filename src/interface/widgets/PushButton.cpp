#include "interface/widgets/PushButton.h"

#include <QPainter>

#include <cmath>

namespace corvelle {
namespace {

constexpr int buttonKeyGap = 10;

// At another size than the label's own.
Lettering resized(TypeStyle style, double size)
{
    TypeSpec spec = typeSpec(style);
    spec.size = size;
    return Lettering(spec);
}

} // namespace

PushButton::PushButton(const QString& words, Role role, QWidget* parent, Size size)
    : ButtonBase(size == Size::Small ? Measures{28, 28, 10, 7, 16, radius::control}
                                     : Measures{34, 34, 14, 7, 18, radius::button},
          parent)
    , m_role(role)
    , m_size(size)
{
    setText(words);
    setAccessibleName(words);
}

void PushButton::setKey(const QString& key)
{
    m_key = key;
    updateGeometry();
    update();
}

void PushButton::setSnug()
{
    Measures snug = measures();
    snug.padding = 11;
    setMeasures(snug);
}

QSize PushButton::sizeHint() const
{
    QSize size = ButtonBase::sizeHint();
    if (!m_key.isEmpty())
        size.rwidth() +=
            buttonKeyGap + static_cast<int>(std::ceil(resized(TypeStyle::Label, 13).width(m_key)));
    return size;
}

Lettering PushButton::lettering() const
{
    return resized(
        isFilled() ? TypeStyle::LabelStrong : TypeStyle::Label, m_size == Size::Small ? 12 : 13);
}

QColor PushButton::fill() const
{
    const Palette& tokens = colors();
    if (m_role == Role::Primary)
        return isDown() ? tokens.accentPressed : underMouse() ? tokens.accentHover : tokens.accent;
    if (m_role == Role::PrimaryDanger)
        return isDown() || underMouse() ? tokens.dangerHover : tokens.danger;
    return tokens.scheme == Scheme::Dark ? tokens.field : tokens.surface;
}

QColor PushButton::ink() const
{
    const Palette& tokens = colors();
    if (!isEnabled())
        return tokens.ink4;
    switch (m_role) {
    case Role::Primary:
        return tokens.onAccent;
    case Role::PrimaryDanger:
        return tokens.onDanger;
    case Role::SecondaryDanger:
        return tokens.danger;
    case Role::Secondary:
        break;
    }
    return tokens.ink;
}

void PushButton::paintEvent(QPaintEvent*)
{
    const Palette& tokens = colors();
    const double radius = measures().radius;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (isEnabled()) {
        painter.setBrush(fill());
        painter.drawRoundedRect(rect(), radius, radius);
        if (!isFilled() && (isDown() || underMouse())) {
            painter.setBrush(isDown() ? tokens.pressed : tokens.hover);
            painter.drawRoundedRect(rect(), radius, radius);
        }
    }
    if (!isFilled() || !isEnabled()) {
        painter.setPen(
            QPen(tokens.scheme == Scheme::Dark ? tokens.hairline : tokens.hairlineStrong, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
    }
    if (m_key.isEmpty()) {
        drawContent(painter, ink(), ink());
        return;
    }
    const Lettering keyType = resized(TypeStyle::Label, 13);
    const double keyWidth = keyType.width(m_key) + buttonKeyGap;
    painter.translate(-keyWidth / 2, 0);
    drawContent(painter, ink(), ink());
    painter.translate(keyWidth / 2, 0);
    QColor pale = ink();
    pale.setAlphaF(0.78F);
    painter.setPen(pale);
    keyType.draw(
        painter, QRectF(rect()).adjusted(0, 0, -measures().padding, 0), Qt::AlignRight, m_key);
}

} // namespace corvelle
