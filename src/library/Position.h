// Sort keys of siblings in the fractional-index form: an integer part whose first character tells
// its own length, over the 62 digits 0–9, A–Z, a–z. Keys are compared byte by byte. They are only
// ever made for the end of a parent.
#pragma once

#include <QString>

namespace corvelle {

// The key after `key`; the first key, "a0", after none.
QString positionAfter(const QString& key);

} // namespace corvelle
