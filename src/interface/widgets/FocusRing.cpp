#include "interface/widgets/FocusRing.h"

#include "interface/theme/Theme.h"
#include "interface/widgets/Look.h"

#include <QEvent>
#include <QPainter>

namespace corvelle {

FocusRing::FocusRing(QWidget& control, double radius)
    : QWidget(control.parentWidget())
    , m_control(control)
    , m_radius(radius)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(&control, &QObject::destroyed, this, &QObject::deleteLater);
    control.installEventFilter(this);
    follow();
}

bool FocusRing::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::ParentChange:
        follow();
        break;
    default:
        break;
    }
    return false;
}

void FocusRing::follow()
{
    if (parentWidget() != m_control.parentWidget())
        setParent(m_control.parentWidget());
    setGeometry(m_control.geometry().adjusted(-reach, -reach, reach, reach));
    setVisible(m_control.hasFocus() && m_control.isVisible());
    raise();
}

void FocusRing::paintEvent(QPaintEvent*)
{
    constexpr double width = 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(corvelle::palette(schemeOf(*this)).accent, width));
    const double half = width / 2;
    const double radius = m_radius + reach - half;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), radius, radius);
}

} // namespace corvelle
