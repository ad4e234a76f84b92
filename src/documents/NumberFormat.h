// A number format: its code is read once, and then shows many values as a sheet's cell shows them.
//
// Codes as in ECMA-376 Part 1, 18.8.31. Numbers, month and day names are written in English forms.
// Conditions are passed over; fractions, and dates that the calendar doesn't have, are shown in
// general form. A value; any thread.
#pragma once

#include "documents/FormatSection.h"

#include <optional>
#include <vector>

namespace corvelle {

// From which day serial numbers count.
enum class DateSystem : unsigned char { From1900, From1904 };

class NumberFormat
{
public:
    explicit NumberFormat(QStringView code = {});

    // The value must be finite.
    QString number(double value, DateSystem dates = DateSystem::From1900) const;
    QString text(const QString& text) const;

    // Nothing but the value itself.
    bool isGeneral() const;

private:
    std::vector<FormatSection> m_sections;
    size_t m_numeric = 0;   // of them are for numbers
    bool m_hasText = false; // and the last of them for texts
};

// At most 11 characters and a sign.
QString generalForm(double value);

// The serial number of a moment that is written as ISO 8601 has it: "2020-01-01T12:30:00". Nothing
// for what doesn't begin like that, or isn't in the calendar.
std::optional<double> serialOfIsoDate(QStringView text, DateSystem dates);

} // namespace corvelle
