#include "interface/widgets/GlassPanel.h"

#include "interface/widgets/Look.h"
#include "interface/widgets/PanelShadow.h"

#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QPainterPath>

namespace corvelle {
namespace {

constexpr int risePixels = 8;

Elevation elevationOf(GlassPanel::Fill fill)
{
    switch (fill) {
    case GlassPanel::Fill::Glass:
        return Elevation::Glass;
    case GlassPanel::Fill::Panel:
    case GlassPanel::Fill::Inverse:
        return Elevation::Panel;
    case GlassPanel::Fill::Hint:
        return Elevation::Hint;
    }
    return Elevation::Glass;
}

bool isInverse(GlassPanel::Fill fill)
{
    return fill == GlassPanel::Fill::Inverse || fill == GlassPanel::Fill::Hint;
}

QEasingCurve easing(const motion::Curve& curve)
{
    QEasingCurve result(QEasingCurve::BezierSpline);
    result.addCubicBezierSegment(curve.first, curve.second, QPointF(1, 1));
    return result;
}

} // namespace

GlassPanel::GlassPanel(Fill fill, double radius, QWidget* parent)
    : QWidget(parent)
    , m_fill(fill)
    , m_radius(radius)
    , m_shadow(new PanelShadow(elevationOf(fill), radius,
          isInverse(fill) ? PanelShadow::Edge::None : PanelShadow::Edge::Line, parent))
{
    // A press beside the buttons of a bar must not fall through to the canvas.
    setAttribute(Qt::WA_NoMousePropagation);
    m_motion.setEasingCurve(easing(motion::out));
    connect(&m_motion, &QVariantAnimation::valueChanged, this,
        [this](const QVariant& value) { setShown(value.toDouble()); });
    connect(&m_motion, &QVariantAnimation::finished, this, [this] {
        if (graphicsEffect() != nullptr)
            setGraphicsEffect(nullptr); // it costs a copy of the panel with every repaint
        if (!m_isLeaving)
            return;
        m_isLeaving = false;
        hide();
        emit left();
    });
    m_shadow->hide();
}

GlassPanel::~GlassPanel()
{
    delete m_shadow;
}

void GlassPanel::setBare(bool bare)
{
    m_isBare = bare;
    if (m_shadow)
        m_shadow->setVisible(!bare && isVisible());
    update();
}

void GlassPanel::appear()
{
    m_motion.stop();
    m_isLeaving = false;
    m_place = pos();
    const bool reduced = isMotionReduced(*this);
    animate(0, 1, reduced ? motion::tapMs : motion::baseMs, !reduced);
    show();
}

void GlassPanel::leave()
{
    if (isHidden() || m_isLeaving)
        return;
    m_motion.stop();
    m_place = pos();
    m_offset = 0;
    m_isLeaving = true;
    animate(1, 0, motion::tapMs, false);
}

void GlassPanel::animate(double from, double to, int durationMs, bool rising)
{
    m_isRising = rising;
    m_motion.setStartValue(from);
    m_motion.setEndValue(to);
    m_motion.setDuration(durationMs);
    setShown(from);
    m_motion.start();
}

void GlassPanel::setShown(double share)
{
    auto* effect = qobject_cast<QGraphicsOpacityEffect*>(graphicsEffect());
    if (effect == nullptr) {
        effect = new QGraphicsOpacityEffect(this);
        setGraphicsEffect(effect);
    }
    effect->setOpacity(share);
    if (m_shadow)
        m_shadow->setOpacity(share);
    if (!m_isRising)
        return;
    m_offset = qRound((1 - share) * risePixels);
    move(m_place + QPoint(0, m_offset));
}

QColor GlassPanel::fillColor() const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    if (isInverse(m_fill))
        return colors.inverse;
    return m_fill == Fill::Glass ? colors.glass : colors.panel;
}

void GlassPanel::paintEvent(QPaintEvent*)
{
    if (m_isBare)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath surface;
    surface.addRoundedRect(rect(), m_radius, m_radius);
    painter.fillPath(surface, fillColor());
    if (!isInverse(m_fill))
        painter.fillPath(
            surface - surface.translated(0, 1), corvelle::palette(schemeOf(*this)).glassTop);
}

bool GlassPanel::event(QEvent* event)
{
    const bool handled = QWidget::event(event);
    switch (event->type()) {
    case QEvent::Move:
        // A layout that moves a rising panel moves the place where it will stand.
        if (pos() != m_place + QPoint(0, m_offset))
            m_place = pos();
        placeShadow();
        break;
    case QEvent::Resize:
    case QEvent::ZOrderChange:
        placeShadow();
        break;
    case QEvent::ParentChange:
        if (m_shadow)
            m_shadow->setParent(parentWidget());
        placeShadow();
        break;
    case QEvent::Show:
    case QEvent::ShowToParent:
        placeShadow();
        if (m_shadow && !m_isBare)
            m_shadow->show();
        break;
    case QEvent::HideToParent:
        if (m_shadow)
            m_shadow->hide();
        break;
    default:
        break;
    }
    return handled;
}

void GlassPanel::placeShadow()
{
    if (!m_shadow)
        return;
    m_shadow->surround(geometry());
    m_shadow->stackUnder(this);
}

} // namespace corvelle
