#include "documents/NumberFormat.h"

#include "documents/DateForm.h"
#include "documents/NumberForm.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// The section's words, with this in the place of its value.
QString filled(const FormatSection& section, const QString& value)
{
    QString result;
    for (const FormatToken& token : section.tokens) {
        const bool placed =
            token.kind == FormatToken::Kind::General || token.kind == FormatToken::Kind::Text;
        result += placed ? value : token.words;
    }
    return result;
}

bool isForText(const FormatSection& section)
{
    return section.kind == FormatSection::Kind::Text;
}

} // namespace

NumberFormat::NumberFormat(QStringView code)
    : m_sections(formatSections(code))
{
    m_hasText = m_sections.size() == 4 || isForText(m_sections.back());
    m_numeric = m_sections.size() - (m_hasText ? 1 : 0);
}

bool NumberFormat::isGeneral() const
{
    const FormatSection& first = m_sections.front();
    return m_sections.size() == 1 && first.kind == FormatSection::Kind::General &&
           first.tokens.size() == 1;
}

QString NumberFormat::number(double value, DateSystem dates) const
{
    if (m_numeric == 0 || !std::isfinite(value))
        return generalForm(value);
    const size_t place = value < 0 && m_numeric > 1 ? 1 : value == 0 && m_numeric > 2 ? 2 : 0;
    const FormatSection& section = m_sections[place];
    const bool negative = value < 0 && place == 0;
    const QString sign = negative ? u"-"_s : QString();
    const double magnitude = std::abs(value);
    switch (section.kind) {
    case FormatSection::Kind::Nothing:
        return {};
    case FormatSection::Kind::Number:
        return sign + numberForm(section, Decimal::magnitudeOf(value));
    case FormatSection::Kind::Date: {
        const auto form =
            negative && !section.isElapsed ? std::nullopt : dateForm(section, magnitude, dates);
        return form ? sign + *form : generalForm(negative ? value : magnitude);
    }
    case FormatSection::Kind::Fraction:
        return sign + generalForm(magnitude);
    case FormatSection::Kind::General:
    case FormatSection::Kind::Text:
    case FormatSection::Kind::Words:
        break;
    }
    return sign + filled(section, generalForm(magnitude));
}

QString NumberFormat::text(const QString& text) const
{
    if (!m_hasText)
        return text;
    const FormatSection& section = m_sections.back();
    return section.kind == FormatSection::Kind::Nothing ? QString() : filled(section, text);
}

} // namespace corvelle
