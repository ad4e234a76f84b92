#include "canvas/Gestures.h"

namespace corvelle {

namespace {

constexpr double leastMarquee = 3; // points on the screen
constexpr double leastExtent = 0.01;

} // namespace

void PanGesture::move(QPointF to)
{
    const QPointF d = m_start - to;
    Camera camera = panned(m_camera, d.x(), d.y());
    camera.zoom = m_model.camera().zoom;
    m_model.moveCamera(camera);
}

void MarqueeGesture::move(QPointF to)
{
    const QRectF rect = QRectF(m_start, to).normalized();
    if (m_rect.isNull() && rect.width() < leastMarquee && rect.height() < leastMarquee)
        return;
    m_rect = rect;
    // A line meets cards as well: drawn straight down, the rectangle has no area.
    const QSizeF size =
        rect.size().expandedTo(QSizeF(leastExtent, leastExtent)) / m_model.camera().scale();
    const QRectF onCanvas(toCanvas(rect.topLeft(), m_model.camera(), m_model.viewport()), size);
    QSet<QString> keys = m_base;
    for (const int index : m_model.cardsMeeting(onCanvas)) {
        const QString& key = m_model.cards()[static_cast<size_t>(index)].key;
        if (m_base.contains(key))
            keys.remove(key);
        else
            keys.insert(key);
    }
    m_model.select(keys);
}

} // namespace corvelle
