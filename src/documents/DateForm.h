// How a section of a number format writes a date, a time or a time that has passed. Pure.
#pragma once

#include "documents/NumberFormat.h"

#include <optional>

namespace corvelle {

// The section is a Date. Nothing for a day that the calendar doesn't have.
std::optional<QString> dateForm(const FormatSection& section, double serial, DateSystem dates);

} // namespace corvelle
