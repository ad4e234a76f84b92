#include "interface/widgets/Arrival.h"

#include "interface/widgets/Look.h"

#include <QEasingCurve>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <algorithm>

namespace corvelle {

Arrival::Arrival(QWidget& surface)
    : m_surface(surface)
{
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(1.0);
    m_motion.setDuration(motion::baseMs);
    m_motion.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_motion, &QVariantAnimation::valueChanged, &surface, qOverload<>(&QWidget::update));
    connect(&m_motion, &QVariantAnimation::finished, this, &Arrival::end);
}

bool Arrival::begin(const QRect& place, const QRectF& card)
{
    if (isMotionReduced(m_surface) || card.isEmpty() || !m_surface.isVisible())
        return false;
    m_picture = m_surface.grab(place);
    m_from = card;
    m_motion.start();
    return true;
}

void Arrival::end()
{
    m_motion.stop();
    m_picture = {};
    emit ended();
}

double Arrival::share() const
{
    return isComing() ? m_motion.currentValue().toDouble() : 1;
}

void Arrival::paint(QPainter& painter, const QRectF& place, double radius) const
{
    const auto between = [at = share()](double a, double b) { return a + (b - a) * at; };
    const QRectF box(between(m_from.left(), place.left()), between(m_from.top(), place.top()),
        between(m_from.width(), place.width()), between(m_from.height(), place.height()));
    painter.setOpacity(std::min(1.0, 0.25 + share()));
    QPainterPath shape;
    shape.addRoundedRect(box, radius, radius);
    painter.setClipPath(shape);
    painter.drawPixmap(box, m_picture, QRectF(m_picture.rect()));
}

} // namespace corvelle
