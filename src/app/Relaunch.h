#pragma once

namespace corvelle {

// Starts this program again once this process has ended: on the library that is remembered, without
// the variables that name another one, in the background when it ran there.
void relaunch(bool background);

} // namespace corvelle
