#pragma once

namespace corvelle {

// Whether this is the thread of the application object. Also true before there is one, as in plain
// tests. Operations that belong to the main thread assert it at their head.
bool onMainThread();

} // namespace corvelle
