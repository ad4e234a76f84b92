#pragma once

#include <QString>

namespace corvelle {

// Writes one line to standard error, where the journal picks it up when the program runs under it.
// A line begins with the subsystem's label in lower case and a colon ("follow move: …"). There are
// no levels. Any thread.
void logLine(const QString& line);

} // namespace corvelle
