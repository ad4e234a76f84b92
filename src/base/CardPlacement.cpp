#include "base/CardPlacement.h"

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr double pictureArea = 176.0 * 224.0;
constexpr double longestSide = 300.0;
constexpr double leastAspect = 0.32;
constexpr double greatestAspect = 3.125;

constexpr int perRow = 4;
constexpr double columnStep = 256;
constexpr double rowStep = 264;
constexpr double gapBelow = 28 + 132;
constexpr double firstRowOfEmptyFolder = 160;

QSizeF pictureSize(int pixelWidth, int pixelHeight)
{
    const double aspect =
        std::clamp(static_cast<double>(pixelWidth) / pixelHeight, leastAspect, greatestAspect);
    double width = std::sqrt(aspect * pictureArea);
    double height = width / aspect;
    const double scale = std::min(1.0, longestSide / std::max(width, height));
    return QSizeF(std::round(width * scale), std::round(height * scale));
}

} // namespace

QSizeF cardSize(const CardShape& shape)
{
    switch (shape.kind) {
    case NodeKind::Folder:
        return QSizeF(224, 176);
    case NodeKind::Link:
        return QSizeF(240, 150);
    case NodeKind::Page:
        return QSizeF(176, 224);
    case NodeKind::File:
        break;
    }
    if (shape.picture && shape.pixelWidth > 0 && shape.pixelHeight > 0)
        return pictureSize(shape.pixelWidth, shape.pixelHeight);
    return QSizeF(176, 224);
}

QPointF freeSpot(QPointF wanted, QSizeF size, std::span<const QRectF> taken)
{
    constexpr int rings = 12;
    constexpr double gap = 24;
    const auto isFree = [&](QPointF centre) {
        const QRectF rect(centre - QPointF(size.width() / 2, size.height() / 2), size);
        return std::none_of(
            taken.begin(), taken.end(), [&](const QRectF& card) { return card.intersects(rect); });
    };
    if (isFree(wanted))
        return wanted;
    for (int ring = 1; ring <= rings; ++ring) {
        std::optional<QPointF> best;
        double nearest = 0;
        for (int j = -ring; j <= ring; ++j)
            for (int i = -ring; i <= ring; ++i) {
                if (std::max(std::abs(i), std::abs(j)) != ring)
                    continue;
                const QPointF step(i * (size.width() + gap), j * (size.height() + gap));
                const double distance = std::hypot(step.x(), step.y());
                if ((!best || distance < nearest) && isFree(wanted + step)) {
                    best = wanted + step;
                    nearest = distance;
                }
            }
        if (best)
            return *best;
    }
    return wanted;
}

void NextFreePlace::include(QPointF centre, QSizeF size)
{
    const double lower = centre.y() + size.height() / 2;
    m_left = std::min(m_left.value_or(centre.x()), centre.x());
    m_lower = std::max(m_lower.value_or(lower), lower);
}

QPointF NextFreePlace::next()
{
    const double x = m_left.value_or(0);
    const double y = m_lower ? *m_lower + gapBelow : firstRowOfEmptyFolder;
    const int n = m_placed++;
    return QPointF(x + (n % perRow) * columnStep, y + (n / perRow) * rowStep);
}

} // namespace corvelle
