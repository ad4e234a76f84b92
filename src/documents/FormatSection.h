// The parts that a number format's code is cut into.
//
// ECMA-376 Part 1, 18.8.31 (numFmts) tells the codes; where it is silent, the sheets themselves do.
// Values; any thread.
#pragma once

#include <QString>

#include <vector>

namespace corvelle {

struct FormatToken
{
    enum class Kind : unsigned char {
        Words,
        // of numbers
        Digit, // `sign` is "0", "#" or "?"
        Point,
        Comma,
        Percent,
        Exponent, // `sign` is "+" or "-"
        Slash,
        // of dates, `count` letters long
        Year,
        Month,
        Day,
        Hour,
        Minute,
        Second,
        SecondPart, // `count` decimals
        HalfDay,    // `words` as they stand: AM/PM or A/P
        // of others
        General,
        Text,
    };

    Kind kind = Kind::Words;
    char16_t sign = 0;
    int count = 1;
    bool elapsed = false; // counts all hours, minutes or seconds
    QString words{};      // as they stand in the code
};

// What one sign of numbers, or texts, is shown by.
struct FormatSection
{
    enum class Kind : unsigned char {
        Nothing, // an empty section hides what it is for
        General,
        Date,
        Number,
        Fraction,
        Text,
        Words,
    };

    Kind kind = Kind::Nothing;
    std::vector<FormatToken> tokens{};

    // of a Number
    int integerPlaces = 0, decimalPlaces = 0, exponentPlaces = 0;
    bool groups = false; // thousands
    bool isScientific = false;
    int tens = 0; // that the number is shifted by, for percents and thousands

    // of a Date
    bool isElapsed = false;
    bool hasHalfDays = false;
    int secondDecimals = 0;
};

// At most four, and at least one. A code of unheard-of length is General.
std::vector<FormatSection> formatSections(QStringView code);

} // namespace corvelle
