#pragma once

namespace corvelle {

// What a time that nobody knows reads as: the first day of the year 1.
inline constexpr double distantPast = -62135596800.0;

// Seconds since 1970-01-01 UTC. Every stored time has this form.
double now();

} // namespace corvelle
