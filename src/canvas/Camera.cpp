#include "canvas/Camera.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvelle {

namespace {

constexpr std::array cardZooms = {
    0.2, 0.25, 0.3, 0.35, 0.42, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 1.25, 1.5, 1.75, 2.0, 2.25, 2.5};

constexpr size_t mostFittedWhole = 20;
constexpr size_t mostFittedInPart = 80;
constexpr size_t fittedPart = 12;

QRectF grown(const QRectF& rect, double share)
{
    const double dx = rect.width() * share, dy = rect.height() * share;
    return rect.adjusted(-dx, -dy, dx, dy);
}

double area(const QRectF& rect)
{
    return rect.width() * rect.height();
}

// y of the cubic Bezier curve (0, 0), (0.22, 1), (0.36, 1), (1, 1) where its x is `time`.
double eased(double time)
{
    if (time <= 0 || time >= 1)
        return std::clamp(time, 0.0, 1.0);
    constexpr double x1 = 0.22, y1 = 1, x2 = 0.36, y2 = 1;
    const auto bezier = [](double a, double b, double t) {
        const double s = 1 - t;
        return 3 * s * s * t * a + 3 * s * t * t * b + t * t * t;
    };
    double low = 0, high = 1;
    for (int i = 0; i < 40; ++i) {
        const double middle = (low + high) / 2;
        (bezier(x1, x2, middle) < time ? low : high) = middle;
    }
    return bezier(y1, y2, (low + high) / 2);
}

} // namespace

double clampedZoom(double zoom)
{
    return std::isfinite(zoom) ? std::clamp(zoom, leastZoom, greatestZoom) : 1.0;
}

double cardZoom(double zoom)
{
    const auto step = std::lower_bound(cardZooms.begin(), cardZooms.end(), zoom);
    return step == cardZooms.end() ? cardZooms.back() : *step;
}

QPointF toScreen(QPointF canvas, const Camera& camera, QSizeF viewport)
{
    return QPointF(viewport.width() / 2 + (canvas.x() - camera.x) * camera.scale(),
        viewport.height() / 2 + (canvas.y() - camera.y) * camera.scale());
}

QPointF toCanvas(QPointF screen, const Camera& camera, QSizeF viewport)
{
    return QPointF(camera.x + (screen.x() - viewport.width() / 2) / camera.scale(),
        camera.y + (screen.y() - viewport.height() / 2) / camera.scale());
}

QRectF toScreen(const QRectF& canvas, const Camera& camera, QSizeF viewport)
{
    return QRectF(toScreen(canvas.topLeft(), camera, viewport), canvas.size() * camera.scale());
}

QRectF visibleRect(const Camera& camera, QSizeF viewport)
{
    return QRectF(toCanvas(QPointF(0, 0), camera, viewport), viewport / camera.scale());
}

Camera zoomedAt(const Camera& camera, double zoom, QPointF anchor, QSizeF viewport)
{
    const double target = clampedZoom(zoom);
    const double shift = (1 / camera.zoom - 1 / target) / screenScale;
    return {camera.x + (anchor.x() - viewport.width() / 2) * shift,
        camera.y + (anchor.y() - viewport.height() / 2) * shift, target};
}

Camera panned(const Camera& camera, double dx, double dy)
{
    return {camera.x + dx / camera.scale(), camera.y + dy / camera.scale(), camera.zoom};
}

Camera fitted(std::span<const QRectF> cards, QSizeF viewport)
{
    if (cards.empty())
        return {};
    QRectF box = cards.front();
    for (const QRectF& card : cards)
        box |= card;
    const QSizeF view = viewport / screenScale;
    const double zoom =
        std::min({1.0, (view.width() - 80) / box.width(), (view.height() - 180) / box.height()});
    return {box.center().x(), box.center().y(), std::max(zoom, leastZoom)};
}

Camera firstCamera(std::span<const QRectF> cards, QSizeF viewport)
{
    if (cards.size() <= mostFittedWhole)
        return fitted(cards, viewport);
    if (cards.size() <= mostFittedInPart)
        return fitted(cards.first(fittedPart), viewport);
    const QSizeF view = viewport / screenScale;
    const QPointF first = cards.front().center();
    const double zoom =
        clampedZoom(std::min({1.0, (view.width() - 80) / 224, (view.height() - 160) / 224}));
    return {first.x() + (view.width() / 2 - std::min(view.width() / 2, 160.0)) / zoom,
        first.y() + (view.height() / 2 - std::min(view.height() / 2, 180.0)) / zoom, zoom};
}

Camera showingSomeCard(const Camera& camera, std::span<const QRectF> cards, QSizeF viewport)
{
    const QRectF visible = visibleRect(camera, viewport);
    const bool seesOne = std::any_of(
        cards.begin(), cards.end(), [&](const QRectF& card) { return card.intersects(visible); });
    if (cards.empty() || seesOne)
        return camera;
    return {cards.front().center().x(), cards.front().center().y(), camera.zoom};
}

Camera glided(const Camera& from, const Camera& to, double progress)
{
    const double share = eased(progress);
    return {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share,
        from.zoom + (to.zoom - from.zoom) * share};
}

QRectF culledRect(const QRectF& current, const QRectF& visible)
{
    const QRectF needed = grown(visible, 0.15);
    if (!current.isNull() && current.contains(needed) && area(current) <= 3 * area(needed))
        return current;
    return grown(visible, 0.35);
}

} // namespace corvelle
