// The ground of a canvas: one colour and a grid of dots.
#pragma once

#include "interface/theme/Theme.h"

#include <QPointF>
#include <QSize>

class QPainter;

namespace corvelle {

// `origin` is where the canvas point (0, 0) lies on screen: a dot stands there. Dots are 28 points
// apart, and twice as far as often as it takes to keep 18 pixels between them; they are fainter
// below zoom 0.5 and gone below 0.35.
void paintGround(QPainter& painter, QSize size, QPointF origin, double zoom, const Palette& colors,
    bool showDots);

} // namespace corvelle
