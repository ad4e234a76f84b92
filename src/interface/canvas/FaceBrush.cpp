#include "interface/canvas/FaceBrush.h"

#include <QPainterPath>

#include <cmath>

namespace corvelle {

QRectF FaceBrush::box(double x, double y, double width, double height) const
{
    return {card.x() + px(x), card.y() + px(y), px(width), px(height)};
}

double FaceBrush::sharp(double pixels) const
{
    const double ratio = painter.device()->devicePixelRatio();
    return std::round(pixels * ratio) / ratio;
}

QRectF FaceBrush::sharp(double x, double y, double width, double height) const
{
    const QRectF exact = box(x, y, width, height);
    return {QPointF(sharp(exact.left()), sharp(exact.top())),
        QPointF(sharp(exact.right()), sharp(exact.bottom()))};
}

void FaceBrush::fillRounded(const QRectF& box, double radius, const QColor& color) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(box, radius, radius);
}

void FaceBrush::bar(const QRectF& box, double opacity) const
{
    QColor ink = colors.ink4;
    ink.setAlphaF(static_cast<float>(opacity));
    fillRounded(box, box.height() / 2, ink);
}

Lettering FaceBrush::lettering(TypeStyle style, double least) const
{
    const TypeSpec& spec = typeSpec(style);
    return Lettering(spec, std::max(scale, least / spec.size));
}

void FaceBrush::text(const Lettering& lettering, const QRectF& box, const QColor& color,
    const QString& text, Qt::TextElideMode mode) const
{
    painter.setPen(color);
    lettering.draw(painter, box, Qt::AlignLeft, lettering.elided(text, box.width(), mode));
}

void FaceBrush::picture(const QRectF& box, const QImage& picture, Crop crop) const
{
    if (picture.isNull() || box.isEmpty())
        return;
    const double ratio = painter.device()->devicePixelRatio();
    QSizeF whole = QSizeF(picture.size()).scaled(box.size(), Qt::KeepAspectRatioByExpanding);
    if (crop == Crop::Below)
        whole = QSizeF(box.width(), box.width() * picture.height() / picture.width());
    const double shown = std::min(box.height(), whole.height());
    const QSize pixels = (whole * ratio).toSize().expandedTo({1, 1});
    // The painter itself looks at four pixels for each it makes, too few for a picture that
    // shrinks.
    const QImage fitting =
        pixels.width() < picture.width()
            ? picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            : picture;

    const QSizeF perPixel(fitting.width() / whole.width(), fitting.height() / whole.height());
    const double over = crop != Crop::Middle ? 0 : (whole.height() - box.height()) / 2;
    const QRectF source((whole.width() - box.width()) / 2 * perPixel.width(),
        over * perPixel.height(), box.width() * perPixel.width(), shown * perPixel.height());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(box.topLeft(), QSizeF(box.width(), shown)), fitting, source);
}

void FaceBrush::hatch(const QRectF& box) const
{
    painter.save();
    painter.setClipRect(box, Qt::IntersectClip);
    painter.setPen(QPen(colors.hairlineFaint, 1));
    const double step = px(8) * std::sqrt(2.0);
    for (double x = box.left(); x < box.right() + box.height(); x += step)
        painter.drawLine(QPointF(x, box.top()), QPointF(x - box.height(), box.bottom()));
    painter.restore();
}

} // namespace corvelle
