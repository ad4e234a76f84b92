// The bar that tells where one is in something scrolled, and that moves it. Pure.
#pragma once

#include <QRectF>

namespace corvelle {

class ScrollThumb
{
public:
    static constexpr int room = 12; // from the area's edge

    explicit ScrollThumb(Qt::Orientation orientation)
        : m_orientation(orientation)
    {}

    // `range` is the last place; without one there is nothing to scroll and no thumb.
    void set(const QRect& area, int place, int range);

    QRectF rect() const;
    // Whether a press there is the thumb's or its track's.
    bool isOnTrack(QPointF at) const;

    // A drag begins at a point, and leads to places. Beside the thumb it is taken by its middle.
    void grab(QPointF at);
    int placeFor(QPointF at) const;

private:
    double along(QPointF at) const;
    double length() const;
    double track() const;

    Qt::Orientation m_orientation;
    QRect m_area;
    int m_place = 0, m_range = 0;
    double m_grip = 0;
};

} // namespace corvelle
