#pragma once

#include "disk/DiskPlan.h"

namespace corvelle::DiskPlan {

// A folder that is gone says nothing about what lay in it, and the plan takes it away as a whole. A
// person who dissolves a folder moves its contents elsewhere first: what came in under the identity
// of something below a removed folder is that thing, moved, and rather than what a link to the same
// file in the Trash was. Turns such additions and returns into moves, before the removals.
// What came in twice under one identity matches nothing; for that, `scans` holds what lies in
// folders that came in.
void followOutOfRemovedFolders(
    Outcome& outcome, const Scans& scans, std::span<const Known> known, NameCase nameCase);

} // namespace corvelle::DiskPlan
