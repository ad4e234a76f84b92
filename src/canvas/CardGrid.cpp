#include "canvas/CardGrid.h"

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

// About two cards wide: a card meets few cells, and a view few hundred.
constexpr double cellSide = 512;
// Beyond this many cells it is cheaper to look at each card.
constexpr double mostCells = 20'000;
constexpr double farthest = 1e12; // cards beyond share the outermost cells

qint64 cellIndex(double coordinate)
{
    return static_cast<qint64>(std::floor(std::clamp(coordinate, -farthest, farthest) / cellSide));
}

} // namespace

template<class Visit>
void CardGrid::eachCell(const QRectF& rect, Visit visit) const
{
    const qint64 right = cellIndex(rect.right()), bottom = cellIndex(rect.bottom());
    for (qint64 row = cellIndex(rect.top()); row <= bottom; ++row)
        for (qint64 column = cellIndex(rect.left()); column <= right; ++column)
            visit((row << 32) ^ (column & 0xffffffff));
}

void CardGrid::clear()
{
    m_cells.clear();
    m_rects.clear();
}

void CardGrid::reserve(size_t cards)
{
    m_rects.reserve(cards);
}

void CardGrid::put(int rank, const QRectF& rect)
{
    remove(rank);
    m_rects.emplace(rank, rect);
    eachCell(rect, [&](Cell cell) { m_cells[cell].push_back(rank); });
}

void CardGrid::remove(int rank)
{
    const auto found = m_rects.find(rank);
    if (found == m_rects.end())
        return;
    eachCell(found->second, [&](Cell cell) {
        const auto list = m_cells.find(cell);
        std::erase(list->second, rank);
        if (list->second.empty())
            m_cells.erase(list);
    });
    m_rects.erase(found);
}

std::vector<int> CardGrid::meeting(const QRectF& rect) const
{
    std::vector<int> ranks;
    const double cells = (rect.width() / cellSide + 2) * (rect.height() / cellSide + 2);
    if (cells > mostCells) {
        for (const auto& [rank, card] : m_rects)
            if (card.intersects(rect))
                ranks.push_back(rank);
    } else {
        eachCell(rect, [&](Cell cell) {
            if (const auto list = m_cells.find(cell); list != m_cells.end())
                for (const int rank : list->second)
                    if (m_rects.at(rank).intersects(rect))
                        ranks.push_back(rank);
        });
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    return ranks;
}

} // namespace corvelle
