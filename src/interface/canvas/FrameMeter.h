// Counts painted frames and how long each kept the main thread.
#pragma once

#include <vector>

namespace corvelle {

struct FrameSummary
{
    int frames = 0;
    double p50Ms = 0, p95Ms = 0, maxMs = 0;
    int slow = 0; // over the limit
};

class FrameMeter
{
public:
    void setSlowLimit(double ms) { m_limitMs = ms; }
    double slowLimitMs() const { return m_limitMs; }
    void add(double ms) { m_frames.push_back(static_cast<float>(ms)); }
    void reset() { m_frames.clear(); }
    FrameSummary summary() const;

private:
    double m_limitMs = 25;
    std::vector<float> m_frames;
};

} // namespace corvelle
