#include "canvas/Gestures.h"

#include <algorithm>
#include <cmath>

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

// ---- carrying cards ----

DragGesture::DragGesture(CanvasModel& model, QString lead, QPointF start)
    : m_model(model)
    , m_lead(std::move(lead))
    , m_keys(model.selection())
    , m_start(toCanvas(start, model.camera(), model.viewport()))
    , m_startScreen(start)
    , m_at(start)
{
    m_keys.insert(m_lead);
    for (const QString& key : std::as_const(m_keys))
        if (const PlacedCard* card = model.card(key))
            m_origins[key] = card->centre;
}

bool DragGesture::move(QPointF to)
{
    constexpr double clickReach = 3;
    m_at = to;
    const QPointF way = to - m_startScreen;
    m_moved = m_moved || std::hypot(way.x(), way.y()) >= clickReach;
    if (m_moved)
        m_offset = toCanvas(to, m_model.camera(), m_model.viewport()) - m_start;
    return m_moved;
}

bool DragGesture::accepts(const QString& folder) const
{
    if (folder == m_model.folderID())
        return false;
    const auto above = m_model.library().tree().ancestors(folder);
    return std::none_of(
        above.begin(), above.end(), [this](const QString& id) { return m_keys.contains(id); });
}

QString DragGesture::dropTarget() const
{
    const QString key = m_model.cardAt(m_at, m_keys);
    const Node* node = m_model.library().node(key);
    return node && node->kind == NodeKind::Folder && accepts(key) ? key : QString();
}

std::map<QString, QPointF> DragGesture::places() const
{
    std::map<QString, QPointF> places;
    for (const auto& [key, origin] : m_origins)
        places[key] = origin + m_offset;
    return places;
}

std::vector<QString> DragGesture::ids() const
{
    std::vector<QString> ids;
    for (const PlacedCard& card : m_model.cards())
        if (m_keys.contains(card.key))
            ids.push_back(card.key);
    return ids;
}

} // namespace corvelle
