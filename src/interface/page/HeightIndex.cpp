#include "interface/page/HeightIndex.h"

#include <algorithm>
#include <bit>

namespace corvelle {

void HeightIndex::assign(std::vector<double> heights)
{
    m_heights = std::move(heights);
    m_sums = m_heights;
    for (size_t i = 1; i <= m_sums.size(); ++i) {
        const size_t above = i + (i & (~i + 1));
        if (above <= m_sums.size())
            m_sums[above - 1] += m_sums[i - 1];
    }
}

void HeightIndex::setHeight(int index, double height)
{
    const auto at = static_cast<size_t>(index);
    const double difference = height - m_heights[at];
    m_heights[at] = height;
    if (difference == 0)
        return;
    for (size_t i = at + 1; i <= m_sums.size(); i += i & (~i + 1))
        m_sums[i - 1] += difference;
}

double HeightIndex::top(int index) const
{
    double sum = 0;
    for (auto i = static_cast<size_t>(index); i > 0; i &= i - 1)
        sum += m_sums[i - 1];
    return sum;
}

int HeightIndex::at(double y) const
{
    if (m_heights.empty())
        return -1;
    size_t found = 0;
    double left = std::max(0.0, y);
    for (size_t step = std::bit_floor(m_sums.size()); step > 0; step >>= 1)
        if (found + step <= m_sums.size() && m_sums[found + step - 1] <= left) {
            found += step;
            left -= m_sums[found - 1];
        }
    return static_cast<int>(std::min(found, m_sums.size() - 1));
}

} // namespace corvelle
