#include "interface/theme/Shadows.h"

#include <QHash>
#include <QImage>
#include <QMutex>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <cstring>
#include <list>
#include <map>
#include <tuple>
#include <vector>

namespace corvelle {
namespace {

// Beyond two and a half deviations less than a hundredth of the shadow is left.
constexpr double deviationsShown = 2.5;

int reach(const ShadowLayer& layer)
{
    return static_cast<int>(std::ceil(layer.blur / 2 * deviationsShown + std::abs(layer.dy)));
}

// One channel of light, 0 to 1.
struct Mask
{
    int width = 0, height = 0;
    std::vector<float> values;
};

// A running mean over 2 * half + 1 values, with nothing beyond the ends.
void meanOf(const float* from, float* to, int count, int step, int half)
{
    const float share = 1.0F / static_cast<float>(2 * half + 1);
    float sum = 0;
    for (int i = 0; i < std::min(half, count); ++i)
        sum += from[i * step];
    for (int i = 0; i < count; ++i) {
        if (i + half < count)
            sum += from[(i + half) * step];
        if (i - half - 1 >= 0)
            sum -= from[(i - half - 1) * step];
        to[i * step] = sum * share;
    }
}

// Three means in a row come within three percent of a Gaussian; below a deviation of 2 they are too
// coarse for it.
void blurByMeans(Mask& mask, double deviation)
{
    // The width of a mean whose variance is a third of the wanted one.
    const double ideal = std::sqrt(4 * deviation * deviation + 1);
    int halves[3];
    const int lower = std::max(0, static_cast<int>((ideal - 1) / 2));
    const double lowerWidth = 2 * lower + 1;
    const double lowerCount =
        (12 * deviation * deviation - 3 * lowerWidth * lowerWidth - 12 * lowerWidth - 9) /
        (-4 * lowerWidth - 4);
    for (int i = 0; i < 3; ++i)
        halves[i] = i < std::lround(lowerCount) ? lower : lower + 1;

    std::vector<float> other(mask.values.size());
    for (const int half : halves) {
        for (int y = 0; y < mask.height; ++y)
            meanOf(&mask.values[static_cast<std::size_t>(y) * mask.width],
                &other[static_cast<std::size_t>(y) * mask.width], mask.width, 1, half);
        mask.values.swap(other);
    }
    for (const int half : halves) {
        for (int x = 0; x < mask.width; ++x)
            meanOf(&mask.values[x], &other[x], mask.height, mask.width, half);
        mask.values.swap(other);
    }
}

void blurByKernel(Mask& mask, double deviation)
{
    const int half = static_cast<int>(std::ceil(deviation * 3));
    std::vector<float> kernel;
    float total = 0;
    for (int i = -half; i <= half; ++i) {
        kernel.push_back(static_cast<float>(std::exp(-i * i / (2 * deviation * deviation))));
        total += kernel.back();
    }
    const auto pass = [&](const std::vector<float>& from, std::vector<float>& to, int along,
                          int across, int step, int stride) {
        for (int a = 0; a < across; ++a) {
            for (int i = 0; i < along; ++i) {
                float sum = 0;
                for (int k = std::max(-half, -i); k <= std::min(half, along - 1 - i); ++k)
                    sum += kernel[k + half] * from[a * stride + (i + k) * step];
                to[a * stride + i * step] = sum / total;
            }
        }
    };
    std::vector<float> other(mask.values.size());
    pass(mask.values, other, mask.width, mask.height, 1, mask.width);
    pass(other, mask.values, mask.height, mask.width, mask.width, 1);
}

void blur(Mask& mask, double deviation)
{
    if (deviation >= 2)
        blurByMeans(mask, deviation);
    else if (deviation > 0)
        blurByKernel(mask, deviation);
}

Mask maskOf(const QPainterPath& silhouette, int width, int height)
{
    QImage image(width, height, QImage::Format_Alpha8);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(silhouette, Qt::black);
    painter.end();

    Mask mask{width, height, std::vector<float>(static_cast<std::size_t>(width) * height)};
    for (int y = 0; y < height; ++y) {
        const uchar* line = image.constScanLine(y);
        for (int x = 0; x < width; ++x)
            mask.values[static_cast<std::size_t>(y) * width + x] = line[x] / 255.0F;
    }
    return mask;
}

// The silhouette lies in device pixels, inside a picture of that size that leaves room for the
// reach.
QImage shadowOf(const QPainterPath& silhouette, int width, int height, Elevation elevation,
    Scheme scheme, double pixelRatio)
{
    std::vector<float> clear(
        static_cast<std::size_t>(width) * height, 1); // what the layers let through
    QColor color;
    for (const ShadowLayer& layer : shadowLayers(elevation, scheme)) {
        if (layer.color.alpha() == 0)
            continue;
        Mask mask = maskOf(silhouette.translated(0, layer.dy * pixelRatio), width, height);
        blur(mask, layer.blur / 2 * pixelRatio);
        for (std::size_t i = 0; i < clear.size(); ++i)
            clear[i] *= 1 - mask.values[i] * layer.color.alphaF();
        color = layer.color;
    }

    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const float alpha = 1 - clear[static_cast<std::size_t>(y) * width + x];
            line[x] = qPremultiply(qRgba(color.red(), color.green(), color.blue(),
                static_cast<int>(std::lround(alpha * 255))));
        }
    }
    return image;
}

// Pictures by what they depend on; the least recently used ones go first.
template<class Key>
class Shelf
{
public:
    template<class Make>
    QImage picture(const Key& key, Make make)
    {
        {
            const QMutexLocker lock(&m_mutex);
            if (const QImage* found = find(key))
                return *found;
        }
        const QImage made =
            make(); // outside of the lock: two threads may make the same one, and one is kept
        const QMutexLocker lock(&m_mutex);
        if (find(key) == nullptr) {
            m_order.push_front(key);
            m_pictures[key] = {made, m_order.begin()};
            if (m_order.size() > most) {
                m_pictures.erase(m_order.back());
                m_order.pop_back();
            }
        }
        return made;
    }

private:
    static constexpr std::size_t most = 96;

    struct Entry
    {
        QImage image;
        typename std::list<Key>::iterator place;
    };

    const QImage* find(const Key& key)
    {
        const auto found = m_pictures.find(key);
        if (found == m_pictures.end())
            return nullptr;
        m_order.splice(m_order.begin(), m_order, found->second.place);
        return &found->second.image;
    }

    QMutex m_mutex; // shadows are drawn by the window and by the threads that draw card faces
    std::map<Key, Entry> m_pictures;
    std::list<Key> m_order;
};

double pixelRatioOf(const QPainter& painter)
{
    return painter.device() != nullptr ? painter.device()->devicePixelRatio() : 1;
}

} // namespace

int shadowReach(Elevation elevation)
{
    int most = 0;
    for (const ShadowLayer& layer : shadowLayers(elevation, Scheme::Light))
        most = std::max(most, reach(layer));
    return most;
}

void drawShadow(
    QPainter& painter, const QRectF& box, double radius, Elevation elevation, Scheme scheme)
{
    const double ratio = pixelRatioOf(painter);
    const int margin = static_cast<int>(std::ceil(shadowReach(elevation) * ratio));
    // From this far inside the box on, the shadow along an edge no longer changes.
    const int corner = margin + static_cast<int>(std::ceil(radius * ratio));
    const int width = std::min(static_cast<int>(std::lround(box.width() * ratio)), 2 * corner + 1);
    const int height =
        std::min(static_cast<int>(std::lround(box.height() * ratio)), 2 * corner + 1);
    if (width <= 0 || height <= 0)
        return;

    static Shelf<std::tuple<Elevation, Scheme, int, int, int, int>> shelf;
    const auto key = std::tuple(elevation, scheme, static_cast<int>(std::lround(radius * 16)),
        static_cast<int>(std::lround(ratio * 64)), width, height);
    const QImage image = shelf.picture(key, [&] {
        QPainterPath silhouette;
        silhouette.addRoundedRect(
            QRectF(margin, margin, width, height), radius * ratio, radius * ratio);
        return shadowOf(
            silhouette, width + 2 * margin, height + 2 * margin, elevation, scheme, ratio);
    });

    // Columns and rows: what stands before the stretched pixel, that pixel, and what stands after
    // it.
    const auto cuts = [&](int source, double from, double to, double inner[4], int pixels[4]) {
        const int whole = source + 2 * margin;
        pixels[0] = 0;
        pixels[1] = whole / 2;
        pixels[2] = pixels[1] + 1;
        pixels[3] = whole;
        inner[0] = from - margin / ratio;
        inner[3] = to + margin / ratio;
        inner[1] = inner[0] + pixels[1] / ratio;
        inner[2] = inner[3] - (whole - pixels[2]) / ratio;
    };
    double x[4], y[4];
    int sourceX[4], sourceY[4];
    cuts(width, box.left(), box.right(), x, sourceX);
    cuts(height, box.top(), box.bottom(), y, sourceY);

    const bool smooth = painter.testRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const QRectF target(QPointF(x[column], y[row]), QPointF(x[column + 1], y[row + 1]));
            const QRectF source(QPointF(sourceX[column], sourceY[row]),
                QPointF(sourceX[column + 1], sourceY[row + 1]));
            if (!target.isEmpty())
                painter.drawImage(target, image, source);
        }
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
}

void drawShadow(
    QPainter& painter, const QPainterPath& silhouette, Elevation elevation, Scheme scheme)
{
    const double ratio = pixelRatioOf(painter);
    const int margin = static_cast<int>(std::ceil(shadowReach(elevation) * ratio));
    const QRectF bounds = silhouette.boundingRect();
    const QSize size(static_cast<int>(std::ceil(bounds.width() * ratio)) + 2 * margin,
        static_cast<int>(std::ceil(bounds.height() * ratio)) + 2 * margin);
    const QTransform toPicture = QTransform::fromTranslate(-bounds.left(), -bounds.top()) *
                                 QTransform::fromScale(ratio, ratio) *
                                 QTransform::fromTranslate(margin, margin);
    const QPainterPath inPicture = toPicture.map(silhouette);

    std::vector<float> shape;
    for (int i = 0; i < inPicture.elementCount(); ++i) {
        const QPainterPath::Element element = inPicture.elementAt(i);
        shape.insert(shape.end(), {static_cast<float>(element.x), static_cast<float>(element.y)});
    }
    static Shelf<std::tuple<Elevation, Scheme, int, std::vector<float>>> shelf;
    const auto key =
        std::tuple(elevation, scheme, static_cast<int>(std::lround(ratio * 64)), std::move(shape));
    const QImage image = shelf.picture(key,
        [&] { return shadowOf(inPicture, size.width(), size.height(), elevation, scheme, ratio); });
    painter.drawImage(
        QRectF(bounds.topLeft() - QPointF(margin, margin) / ratio, QSizeF(size) / ratio), image);
}

} // namespace corvelle
