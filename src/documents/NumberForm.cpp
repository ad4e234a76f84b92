#include "documents/NumberForm.h"

#include "documents/NumberFormat.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Kind = FormatToken::Kind;

constexpr int generalLength = 11;
constexpr int scientificDigits = 6;    // of the general form
constexpr int leastExponentDigits = 2; // of a format
constexpr qsizetype shortForm = 24;    // units of most numbers

// ---- places ----

// Writes the digits of one number into the places of a section, from left to right.
class Places
{
public:
    Places(const FormatSection& section, const Decimal& value)
        : m_section(section)
        , m_value(value)
        , m_left(section.integerPlaces)
    {}

    // A number can have more digits than places: the first place takes those before it.
    void addInteger(QString& out, char16_t sign)
    {
        const int power = --m_left;
        const bool first = power == m_section.integerPlaces - 1;
        const int digits = m_value.integerPlaces();
        for (int above = digits - 1; first && above > power; --above)
            addDigit(out, QLatin1Char(m_value.digitAt(above)), above);
        if (power < digits || sign == u'0')
            addDigit(out, QLatin1Char(m_value.digitAt(power)), power);
        else if (sign == u'?')
            addDigit(out, u' ', power);
    }

    void addPoint(QString& out) const
    {
        for (int power = m_value.integerPlaces() - 1; m_section.integerPlaces == 0 && power >= 0;
             --power)
            out += QLatin1Char(m_value.digitAt(power));
        out += u'.';
    }

    void addDecimal(QString& out, char16_t sign)
    {
        const int power = -++m_decimals;
        if (sign == u'0' || m_decimals <= m_value.decimalPlaces())
            out += QLatin1Char(m_value.digitAt(power));
        else if (sign == u'?')
            out += u' ';
    }

private:
    void addDigit(QString& out, QChar digit, int power) const
    {
        out += digit;
        if (m_section.groups && power > 0 && power % 3 == 0)
            out += digit == u' ' ? u' ' : u',';
    }

    const FormatSection& m_section;
    const Decimal& m_value;
    int m_left;
    int m_decimals = 0;
};

// ---- scientific ----

struct Scientific
{
    Decimal mantissa;
    int exponent = 0;
};

// With several places before the point the exponent is a multiple of their number.
Scientific scientific(const FormatSection& section, const Decimal& value)
{
    const int step = std::max(1, section.integerPlaces);
    int exponent =
        static_cast<int>(std::floor(static_cast<double>(value.magnitude()) / step)) * step;
    if (section.integerPlaces == 0 && !value.isZero())
        ++exponent; // all digits stand behind the point
    Decimal mantissa = value.shifted(-exponent).rounded(section.decimalPlaces);
    if (mantissa.integerPlaces() > section.integerPlaces) {
        exponent += step;
        mantissa = value.shifted(-exponent).rounded(section.decimalPlaces);
    }
    return {std::move(mantissa), exponent};
}

QString exponentForm(const FormatSection& section, char16_t sign, int exponent)
{
    const QString shown = exponent < 0 ? u"E-"_s : sign == u'+' ? u"E+"_s : u"E"_s;
    const int places = std::max(leastExponentDigits, section.exponentPlaces);
    return shown + QString::number(std::abs(exponent)).rightJustified(places, u'0');
}

// ---- the general form ----

QString plainForm(const Decimal& value)
{
    QString text;
    for (int power = std::max(1, value.integerPlaces()) - 1; power >= -value.decimalPlaces();
         --power) {
        if (power == -1)
            text += u'.';
        text += QLatin1Char(value.digitAt(power));
    }
    return text;
}

QString generalScientific(const Decimal& value)
{
    const auto form = [&](int digits) {
        const Decimal rounded = value.rounded(digits - value.point);
        const int exponent = rounded.magnitude();
        return plainForm(rounded.shifted(-exponent)) + (exponent < 0 ? u"e-"_s : u"e+"_s) +
               QString::number(std::abs(exponent));
    };
    const QString text = form(scientificDigits);
    return text.size() <= generalLength ? text : form(scientificDigits - 1);
}

QString generalMagnitude(const Decimal& value)
{
    // "0." takes two, the point one.
    const int most = value.integerPlaces() == 0
                         ? generalLength - 2
                         : std::max(0, generalLength - 1 - value.integerPlaces());
    const bool isTiny = value.magnitude() < -4 && value.decimalPlaces() > most;
    const Decimal rounded = value.rounded(most);
    return isTiny || rounded.integerPlaces() > generalLength ? generalScientific(value)
                                                             : plainForm(rounded);
}

} // namespace

QString numberForm(const FormatSection& section, const Decimal& magnitude)
{
    const Decimal value = magnitude.shifted(section.tens);
    const Scientific parts = section.isScientific
                                 ? scientific(section, value)
                                 : Scientific{value.rounded(section.decimalPlaces)};
    Places places(section, parts.mantissa);
    QString result;
    result.reserve(shortForm);
    int digits = 0; // that were met
    for (const FormatToken& token : section.tokens) {
        if (token.kind == Kind::Digit) {
            ++digits;
            if (digits <= section.integerPlaces)
                places.addInteger(result, token.sign);
            else if (digits <= section.integerPlaces + section.decimalPlaces)
                places.addDecimal(result, token.sign);
        } else if (token.kind == Kind::Point) {
            places.addPoint(result);
        } else if (token.kind == Kind::Exponent) {
            result += exponentForm(section, token.sign, parts.exponent);
        } else {
            result += token.words;
        }
    }
    return result;
}

QString generalForm(double value)
{
    if (!std::isfinite(value))
        return {};
    const QString text = generalMagnitude(Decimal::magnitudeOf(value));
    return value < 0 ? u'-' + text : text;
}

} // namespace corvelle
