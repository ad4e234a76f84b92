// Heights of things in a column: where each begins, and which is at a place, in O(log n).
//
// A Fenwick tree (P. M. Fenwick, "A new data structure for cumulative frequency tables", 1994).
#pragma once

#include <cstddef>
#include <vector>

namespace corvelle {

class HeightIndex
{
public:
    void assign(std::vector<double> heights);

    int count() const { return static_cast<int>(m_heights.size()); }
    double height(int index) const { return m_heights[static_cast<size_t>(index)]; }
    void setHeight(int index, double height);

    // Where the thing begins; of count() where all end.
    double top(int index) const;
    double total() const { return top(count()); }

    // The last one that begins at or above y; 0 when there is none above, -1 when there are none.
    int at(double y) const;

private:
    std::vector<double> m_heights;
    std::vector<double> m_sums; // m_sums[i - 1] is the sum of the (i & -i) heights up to i
};

} // namespace corvelle
