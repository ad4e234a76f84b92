#include "interface/widgets/Departure.h"

#include "interface/theme/Theme.h"

#include <QPainter>

namespace corvelle {

void Departure::of(QWidget& surface)
{
    if (surface.isVisible() && surface.parentWidget())
        new Departure(surface);
}

Departure::Departure(QWidget& surface)
    : QWidget(surface.parentWidget())
    , m_picture(surface.grab())
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(surface.geometry());
    m_motion.setStartValue(1.0);
    m_motion.setEndValue(0.0);
    m_motion.setDuration(motion::tapMs);
    connect(&m_motion, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&m_motion, &QVariantAnimation::finished, this, &QObject::deleteLater);
    show();
    stackUnder(&surface);
    m_motion.start();
}

void Departure::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setOpacity(m_motion.currentValue().toDouble());
    painter.drawPixmap(0, 0, m_picture);
}

} // namespace corvelle
