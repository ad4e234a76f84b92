#include "interface/canvas/FrameMeter.h"

#include <algorithm>

namespace corvelle {

FrameSummary FrameMeter::summary() const
{
    FrameSummary result;
    result.frames = static_cast<int>(m_frames.size());
    if (m_frames.empty())
        return result;
    std::vector<float> sorted = m_frames;
    std::sort(sorted.begin(), sorted.end());
    const auto at = [&](double share) {
        return static_cast<double>(
            sorted[static_cast<size_t>(share * static_cast<double>(sorted.size() - 1))]);
    };
    result.p50Ms = at(0.5);
    result.p95Ms = at(0.95);
    result.maxMs = at(1);
    result.slow = static_cast<int>(std::count_if(sorted.begin(), sorted.end(),
        [this](float ms) { return static_cast<double>(ms) > m_limitMs; }));
    return result;
}

} // namespace corvelle
