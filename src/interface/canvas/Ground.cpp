#include "interface/canvas/Ground.h"

#include "interface/canvas/CardWords.h"

#include <QImage>
#include <QPainter>

#include <cmath>

namespace corvelle {
namespace {

constexpr double spacingPt = 28, leastSpacing = 18, hiddenBelow = 0.35, faintBelow = 0.5;

// The first dot at or before the edge, and the distance between dots, in device pixels.
struct Row
{
    double first, step;
};

Row dotsAlong(double origin, double step)
{
    // The origin is rounded and the steps are rounded from it, so that dots keep their distances
    // while the camera pans.
    const double start = std::round(origin);
    return {start - std::ceil(start / step) * step, step};
}

} // namespace

void paintGround(QPainter& painter, QSize size, QPointF origin, double zoom, const Palette& colors,
    bool showDots)
{
    const QRectF whole(QPointF(0, 0), QSizeF(size));
    painter.fillRect(whole, colors.ground);
    constexpr double tolerance = 1e-6; // zoom steps are exact decimals
    if (!showDots || zoom + tolerance < hiddenBelow)
        return;

    double step = spacingPt * zoom * pixelsPerPoint;
    while (step < leastSpacing)
        step *= 2;
    const double ratio = painter.device()->devicePixelRatio();
    const int side = static_cast<int>(std::lround(2 * ratio)); // of a dot, in device pixels
    const Row across = dotsAlong(origin.x() * ratio, step * ratio);
    const Row down = dotsAlong(origin.y() * ratio, step * ratio);

    // One row of dots is drawn and laid down again and again: a copy of a few lines is faster than
    // any drawing.
    QImage strip(static_cast<int>(std::ceil(size.width() * ratio)), side, QImage::Format_RGB32);
    strip.fill(colors.ground);
    {
        QColor dot = colors.dot;
        if (zoom + tolerance < faintBelow)
            dot.setAlphaF(0.7F);
        QPainter dots(&strip);
        dots.setRenderHint(QPainter::Antialiasing);
        dots.setPen(Qt::NoPen);
        dots.setBrush(dot);
        for (int i = 0; across.first + i * across.step < strip.width() + side; ++i) {
            const double x = std::round(across.first + i * across.step);
            dots.drawEllipse(QRectF(x - side / 2, 0, side, side));
        }
    }
    strip.setDevicePixelRatio(ratio);
    for (int i = 0; down.first + i * down.step < size.height() * ratio + side; ++i) {
        const double y = std::round(down.first + i * down.step) - side / 2;
        painter.drawImage(QPointF(0, y / ratio), strip);
    }
}

} // namespace corvelle
