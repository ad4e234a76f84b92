#pragma once

#include <QString>

namespace corvelle {

// A fresh random UUID as lower-case text without braces. Any thread.
QString newID();

} // namespace corvelle
