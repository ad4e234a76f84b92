// What lies round a floating panel: its soft shadow and the line along its edge. See GlassPanel.
#pragma once

#include "interface/theme/Theme.h"

#include <QWidget>

namespace corvelle {

class PanelShadow : public QWidget
{
    Q_OBJECT

public:
    // Without an edge only the shadow is drawn.
    enum class Edge : unsigned char { Line, None };

    PanelShadow(Elevation elevation, double radius, Edge edge, QWidget* parent);

    // Lies round that box of the parent.
    void surround(const QRect& panel);
    void setOpacity(double opacity);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Elevation m_elevation;
    const double m_radius;
    const Edge m_edge;
    double m_opacity = 1;
};

} // namespace corvelle
