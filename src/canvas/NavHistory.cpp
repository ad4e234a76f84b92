#include "canvas/NavHistory.h"

namespace corvelle {

namespace {

constexpr size_t mostPlaces = 60;

} // namespace

void NavHistory::record(const Place& place)
{
    if (place == m_current)
        return;
    m_back.push_back(m_current);
    if (m_back.size() > mostPlaces)
        m_back.pop_front();
    m_forward.clear();
    m_current = place;
}

std::optional<NavHistory::Place> NavHistory::back(const Exists& exists)
{
    return travel(m_back, m_forward, exists);
}

std::optional<NavHistory::Place> NavHistory::forward(const Exists& exists)
{
    return travel(m_forward, m_back, exists);
}

std::optional<NavHistory::Place> NavHistory::travel(
    std::deque<Place>& from, std::deque<Place>& to, const Exists& exists)
{
    while (!from.empty()) {
        const Place place = from.back();
        from.pop_back();
        if (place == m_current || !exists(place))
            continue;
        to.push_back(m_current);
        m_current = place;
        return place;
    }
    return std::nullopt;
}

} // namespace corvelle
