// The numbered, one-time repairs of stored data that `PRAGMA user_version` counts.
#pragma once

#include "store/SQLite.h"

namespace corvelle {

// Runs the steps that the database hasn't had yet, each in one transaction with its number. A step
// that fails is logged and tried again at the next opening. For a queue of the background with a
// connection of its own.
void runDataSteps(SQLite& connection);

} // namespace corvelle
