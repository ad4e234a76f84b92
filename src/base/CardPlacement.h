// How big a card is and where the next one goes. Canvas points, y downward; a card's place is its
// centre.
#pragma once

#include "base/NodeKind.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>
#include <span>

namespace corvelle {

// What decides the size of a card.
struct CardShape
{
    NodeKind kind = NodeKind::File;
    bool picture = false;                // a file whose type is a picture
    int pixelWidth = 0, pixelHeight = 0; // of the picture; 0 when unknown
};

// A folder is 224 × 176, a page and a plain file 176 × 224, a website 240 × 150. A picture has its
// own shape at the area of a page, no side over 300, its aspect held to 0.32 … 3.125, in whole
// points.
QSizeF cardSize(const CardShape& shape);

// Gives the places of cards that come into one folder in one pass: rows of four, below what is
// there.
class NextFreePlace
{
public:
    // Adds a live card that already lies in the folder.
    void include(QPointF centre, QSizeF size);

    QPointF next();

private:
    std::optional<double> m_left;  // least x
    std::optional<double> m_lower; // greatest lower edge
    int m_placed = 0;
};

// The free place nearest to the wanted centre for a card of this size, margin included, searched in
// twelve rings around it; the wanted one when all of them are taken. `taken` holds the rectangles
// of the cards that are there.
QPointF freeSpot(QPointF wanted, QSizeF size, std::span<const QRectF> taken);

// The margin that a new card keeps to its neighbours.
inline constexpr double freeSpotMargin = 24;

// Where a thing made from a card goes, before the free spot is looked for.
inline QPointF besideCard(QPointF centre, QSizeF size)
{
    return QPointF(centre.x() + size.width() + 32, centre.y());
}

} // namespace corvelle
