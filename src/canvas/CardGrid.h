// The cards of one folder by where they lie, so that what is in sight, under the pointer or in a
// rectangle is found without walking the folder.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>

#include <unordered_map>
#include <vector>

namespace corvelle {

class CardGrid
{
public:
    void clear();
    void reserve(size_t cards);

    // Puts a card in, or moves it. `rank` tells what is drawn later, and so on top.
    void put(int rank, const QRectF& rect);
    void remove(int rank);

    // The ranks of the cards that meet the rectangle, in ascending order.
    std::vector<int> meeting(const QRectF& rect) const;

private:
    using Cell = qint64;

    template<class Visit>
    void eachCell(const QRectF& rect, Visit visit) const;

    std::unordered_map<Cell, std::vector<int>> m_cells;
    std::unordered_map<int, QRectF> m_rects;
};

} // namespace corvelle
