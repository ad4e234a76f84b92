// A number as decimal digits, as a person would round it by hand.
#pragma once

#include <string>

namespace corvelle {

// The magnitude of a finite number: 0.DIGITS × 10^point, without zeros at either end of the digits.
// Zero has no digits. Any thread.
struct Decimal
{
    std::string digits;
    int point = 0;

    // The 15 digits that a sheet computes with: 0.1 + 0.2 is 0.3.
    static Decimal magnitudeOf(double value);

    bool isZero() const { return digits.empty(); }
    // The power of ten of the first digit; 0 for zero.
    int magnitude() const { return isZero() ? 0 : point - 1; }

    Decimal shifted(int tens) const;
    // Keeps so many places behind the point (before it, for a negative number of them); a half goes
    // away from zero.
    Decimal rounded(int decimals) const;

    // The digit with the value 10^power: '0' where there is none.
    char digitAt(int power) const;
    // How many digits stand before the point: none for 0.5.
    int integerPlaces() const { return isZero() || point < 0 ? 0 : point; }
    // How many digits stand behind it.
    int decimalPlaces() const;

    bool operator==(const Decimal&) const = default;
};

} // namespace corvelle
