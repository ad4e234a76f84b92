#include "documents/Decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace corvelle {

namespace {

constexpr int keptDigits = 15;

Decimal trimmed(std::string digits, int point)
{
    const auto last = digits.find_last_not_of('0');
    if (last == std::string::npos)
        return {};
    digits.resize(last + 1);
    const auto first = digits.find_first_not_of('0');
    digits.erase(0, first);
    return {std::move(digits), point - static_cast<int>(first)};
}

} // namespace

Decimal Decimal::magnitudeOf(double value)
{
    char text[40];
    const auto end = std::to_chars(std::begin(text), std::end(text), std::abs(value),
        std::chars_format::scientific, keptDigits - 1)
                         .ptr;
    char* const mark = std::find(std::begin(text), end, 'e');
    if (mark == end)
        return {}; // not a finite number
    int power = 0;
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), end, power);
    std::string digits(std::begin(text), mark);
    std::erase(digits, '.');
    return trimmed(std::move(digits), power + 1);
}

Decimal Decimal::shifted(int tens) const
{
    return isZero() ? Decimal() : Decimal{digits, point + tens};
}

Decimal Decimal::rounded(int decimals) const
{
    const int kept = point + decimals; // of the digits
    if (isZero() || kept >= static_cast<int>(digits.size()))
        return *this;
    if (kept < 0)
        return {};
    const bool up = digits[static_cast<size_t>(kept)] >= '5';
    std::string result = '0' + digits.substr(0, static_cast<size_t>(kept));
    if (up) {
        size_t place = result.size() - 1;
        while (result[place] == '9')
            result[place--] = '0';
        ++result[place];
    }
    return trimmed(std::move(result), point + 1);
}

char Decimal::digitAt(int power) const
{
    const int place = point - 1 - power;
    return place < 0 || place >= static_cast<int>(digits.size())
               ? '0'
               : digits[static_cast<size_t>(place)];
}

int Decimal::decimalPlaces() const
{
    return std::max(0, static_cast<int>(digits.size()) - point);
}

} // namespace corvelle
