#include "interface/widgets/ScrollThumb.h"

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr double thickness = 6, edge = 3, least = 32;

} // namespace

void ScrollThumb::set(const QRect& area, int place, int range)
{
    m_area = area;
    m_place = place;
    m_range = range;
}

double ScrollThumb::track() const
{
    const int whole = m_orientation == Qt::Vertical ? m_area.height() : m_area.width();
    return std::max(least, whole - 2 * edge);
}

double ScrollThumb::length() const
{
    return std::clamp(track() * track() / (m_range + track()), least, track());
}

QRectF ScrollThumb::rect() const
{
    if (m_range <= 0)
        return {};
    const double from = edge + (track() - length()) * m_place / m_range;
    return m_orientation == Qt::Vertical
               ? QRectF(m_area.right() + 1 - edge - thickness, m_area.top() + from, thickness,
                     length())
               : QRectF(m_area.left() + from, m_area.bottom() + 1 - edge - thickness, length(),
                     thickness);
}

bool ScrollThumb::isOnTrack(QPointF at) const
{
    const double beside =
        m_orientation == Qt::Vertical ? m_area.right() + 1 - at.x() : m_area.bottom() + 1 - at.y();
    return m_range > 0 && m_area.contains(at.toPoint()) && beside <= room;
}

double ScrollThumb::along(QPointF at) const
{
    return m_orientation == Qt::Vertical ? at.y() - m_area.top() : at.x() - m_area.left();
}

void ScrollThumb::grab(QPointF at)
{
    const double from = along(rect().topLeft());
    const bool inside = along(at) >= from && along(at) < from + length();
    m_grip = inside ? along(at) - from : length() / 2;
}

int ScrollThumb::placeFor(QPointF at) const
{
    const double free = track() - length();
    if (free <= 0)
        return 0;
    const double share = (along(at) - m_grip - edge) / free;
    return static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * m_range));
}

} // namespace corvelle
