// Names for what the table takes from a benchmark's report.
#pragma once

#include <benchmark/benchmark.h>

namespace corvelle {

// How many things one iteration worked through: the table tells the time of one.
inline void workedThrough(benchmark::State& state, size_t items)
{
    state.counters["items"] = benchmark::Counter(static_cast<double>(items));
}

} // namespace corvelle
