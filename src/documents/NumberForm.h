// How a section of a number format writes a number. Pure.
#pragma once

#include "documents/Decimal.h"
#include "documents/FormatSection.h"

namespace corvelle {

// The section is a Number.
QString numberForm(const FormatSection& section, const Decimal& magnitude);

} // namespace corvelle
