#pragma once

namespace corvelle {

// Seconds since 1970-01-01 UTC. Every stored time has this form.
double now();

} // namespace corvelle
