#include "interface/widgets/PanelShadow.h"

#include "interface/theme/Shadows.h"
#include "interface/widgets/Look.h"

#include <QPainter>
#include <QPainterPath>

namespace corvelle {

PanelShadow::PanelShadow(Elevation elevation, double radius, Edge edge, QWidget* parent)
    : QWidget(parent)
    , m_elevation(elevation)
    , m_radius(radius)
    , m_edge(edge)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

void PanelShadow::surround(const QRect& panel)
{
    const int reach = shadowReach(m_elevation);
    setGeometry(panel.adjusted(-reach, -reach, reach, reach));
}

void PanelShadow::setOpacity(double opacity)
{
    m_opacity = opacity;
    update();
}

void PanelShadow::paintEvent(QPaintEvent*)
{
    const int reach = shadowReach(m_elevation);
    const QRectF panel = rect().adjusted(reach, reach, -reach, -reach);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    const Scheme scheme = schemeOf(*this);
    drawShadow(painter, panel, m_radius, m_elevation, scheme);
    if (m_edge == Edge::None)
        return;
    QPainterPath line;
    line.addRoundedRect(panel.adjusted(-1, -1, 1, 1), m_radius + 1, m_radius + 1);
    line.addRoundedRect(panel, m_radius, m_radius); // odd-even filling leaves the panel out
    painter.fillPath(line, corvelle::palette(scheme).glassEdge);
}

} // namespace corvelle
