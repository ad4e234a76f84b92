#include "documents/FormatSection.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Kind = FormatToken::Kind;

constexpr qsizetype longestCode = 1024;
constexpr size_t mostSections = 4;
constexpr int mostSecondDecimals = 9;

bool isDateKind(Kind kind)
{
    return kind >= Kind::Year && kind <= Kind::HalfDay;
}

std::optional<Kind> dateKind(QChar letter)
{
    switch (letter.toLower().unicode()) {
    case u'y':
        return Kind::Year;
    case u'm':
        return Kind::Month;
    case u'd':
        return Kind::Day;
    case u'h':
        return Kind::Hour;
    case u's':
        return Kind::Second;
    default:
        return std::nullopt;
    }
}

// ---- cutting ----

class Cutter
{
public:
    explicit Cutter(QStringView code)
        : m_code(code)
    {}

    std::vector<FormatSection> sections()
    {
        m_sections.emplace_back();
        while (m_at < m_code.size())
            takeNext();
        if (m_sections.size() > mostSections)
            m_sections.resize(mostSections);
        return std::move(m_sections);
    }

private:
    bool startsWith(QStringView words) const
    {
        return m_code.mid(m_at).startsWith(words, Qt::CaseInsensitive);
    }

    void add(FormatToken token)
    {
        auto& tokens = m_sections.back().tokens;
        if (token.kind == Kind::Words && !tokens.empty() && tokens.back().kind == Kind::Words)
            tokens.back().words += token.words;
        else
            tokens.push_back(std::move(token));
    }
    void addWords(QStringView words) { add({.words = words.toString()}); }
    void addSign(Kind kind, qsizetype length = 1)
    {
        const QStringView words = m_code.mid(m_at, length);
        add({.kind = kind, .sign = words.back().unicode(), .words = words.toString()});
        m_at += length;
    }

    // The units of the character at a place.
    qsizetype unitsAt(qsizetype place) const
    {
        const bool pair = place + 1 < m_code.size() && m_code[place].isHighSurrogate() &&
                          m_code[place + 1].isLowSurrogate();
        return pair ? 2 : 1;
    }

    void takeNext();
    void takeQuoted();
    void takeBracket();
    void takeLetters(Kind kind);
    void takeOther();

    const QStringView m_code;
    qsizetype m_at = 0;
    std::vector<FormatSection> m_sections;
};

void Cutter::takeNext()
{
    switch (const char16_t sign = m_code[m_at].unicode()) {
    case u'"':
        return takeQuoted();
    case u'\\':
    case u'_':
    case u'*': {
        const qsizetype units = m_at + 1 < m_code.size() ? unitsAt(m_at + 1) : 0;
        if (sign == u'\\')
            addWords(m_code.mid(m_at + 1, units));
        m_at += 1 + units;
        // A section that holds nothing but these isn't an empty one.
        if (sign != u'\\')
            addWords(u"");
        return;
    }
    case u'[':
        return takeBracket();
    case u';':
        ++m_at;
        m_sections.emplace_back();
        return;
    case u'0':
    case u'#':
    case u'?':
        return addSign(Kind::Digit);
    case u'.':
        return addSign(Kind::Point);
    case u',':
        return addSign(Kind::Comma);
    case u'%':
        return addSign(Kind::Percent);
    case u'/':
        return addSign(Kind::Slash);
    case u'@':
        return addSign(Kind::Text);
    default:
        return takeOther();
    }
}

void Cutter::takeOther()
{
    if (startsWith(u"general"))
        return addSign(Kind::General, 7);
    if (startsWith(u"am/pm"))
        return addSign(Kind::HalfDay, 5);
    if (startsWith(u"a/p"))
        return addSign(Kind::HalfDay, 3);
    if (startsWith(u"e+") || startsWith(u"e-"))
        return addSign(Kind::Exponent, 2);
    if (const auto kind = dateKind(m_code[m_at]))
        return takeLetters(*kind);
    addWords(m_code.mid(m_at++, 1));
}

void Cutter::takeQuoted()
{
    qsizetype end = m_code.indexOf(u'"', m_at + 1);
    if (end < 0)
        end = m_code.size();
    addWords(m_code.mid(m_at + 1, end - m_at - 1));
    m_at = end + 1;
}

// A currency, an elapsed time, or a colour, a condition or a language, which aren't shown.
void Cutter::takeBracket()
{
    const qsizetype end = m_code.indexOf(u']', m_at);
    if (end < 0)
        return addWords(m_code.mid(m_at++, 1));
    const QStringView inside = m_code.mid(m_at + 1, end - m_at - 1);
    m_at = end + 1;
    if (inside.startsWith(u'$'))
        return addWords(inside.mid(1, inside.indexOf(u'-') < 0 ? -1 : inside.indexOf(u'-') - 1));
    const auto kind = inside.isEmpty() ? std::nullopt : dateKind(inside[0]);
    const bool timed = kind && *kind != Kind::Year && *kind != Kind::Day;
    if (timed && inside.count(inside[0], Qt::CaseInsensitive) == inside.size())
        add({.kind = *kind == Kind::Month ? Kind::Minute : *kind,
            .count = static_cast<int>(inside.size()),
            .elapsed = true});
}

void Cutter::takeLetters(Kind kind)
{
    const QChar letter = m_code[m_at].toLower();
    const qsizetype from = m_at;
    while (m_at < m_code.size() && m_code[m_at].toLower() == letter)
        ++m_at;
    add({.kind = kind,
        .count = static_cast<int>(m_at - from),
        .words = m_code.mid(from, m_at - from).toString()});
}

// ---- what the parts mean together ----

void turnIntoWords(FormatToken& token)
{
    token.kind = Kind::Words;
}

// An "m" is a minute behind an hour or before a second.
void findMinutes(FormatSection& section)
{
    FormatToken* before = nullptr;
    for (FormatToken& token : section.tokens) {
        if (!isDateKind(token.kind) || token.kind == Kind::HalfDay)
            continue;
        const bool minutes = before && token.kind == Kind::Second;
        if (minutes && before->kind == Kind::Month && before->count <= 2)
            before->kind = Kind::Minute;
        const bool afterHour = before && before->kind == Kind::Hour;
        if (token.kind == Kind::Month && token.count <= 2 && (afterHour || section.isElapsed))
            token.kind = Kind::Minute;
        before = &token;
    }
}

// A point and zeros behind a second are its decimals; other signs of numbers are words here.
void findSecondParts(FormatSection& section)
{
    std::vector<FormatToken> tokens;
    Kind last = Kind::Words; // of the date's parts
    for (FormatToken& token : section.tokens) {
        const bool point = !tokens.empty() && tokens.back().kind == Kind::Point;
        if (token.kind == Kind::Digit && token.sign == u'0' && last == Kind::Second && point) {
            tokens.back() = {.kind = Kind::SecondPart, .count = 1, .words = u"."_s};
        } else if (token.kind == Kind::Digit && token.sign == u'0' && !tokens.empty() &&
                   tokens.back().kind == Kind::SecondPart) {
            ++tokens.back().count;
        } else {
            if (isDateKind(token.kind))
                last = token.kind;
            tokens.push_back(std::move(token));
        }
    }
    for (FormatToken& token : tokens) {
        if (token.kind == Kind::SecondPart)
            section.secondDecimals =
                std::min(std::max(section.secondDecimals, token.count), mostSecondDecimals);
        else if (!isDateKind(token.kind))
            turnIntoWords(token);
    }
    section.tokens = std::move(tokens);
}

bool has(const FormatSection& section, Kind kind)
{
    return std::any_of(section.tokens.begin(), section.tokens.end(),
        [kind](const FormatToken& token) { return token.kind == kind; });
}

bool isElapsedKind(const FormatSection& section, Kind kind)
{
    return std::any_of(section.tokens.begin(), section.tokens.end(),
        [kind](const FormatToken& token) { return token.kind == kind && token.elapsed; });
}

void prepareDate(FormatSection& section)
{
    section.kind = FormatSection::Kind::Date;
    section.hasHalfDays = has(section, Kind::HalfDay);
    section.isElapsed = std::any_of(section.tokens.begin(), section.tokens.end(),
        [](const FormatToken& token) { return token.elapsed; });
    findMinutes(section);
    findSecondParts(section);
    // What is counted in full has to be the largest unit.
    const bool hours = has(section, Kind::Hour) && !isElapsedKind(section, Kind::Hour);
    const bool minutes = has(section, Kind::Minute) && !isElapsedKind(section, Kind::Minute) &&
                         !isElapsedKind(section, Kind::Hour);
    if (section.isElapsed && (hours || (minutes && isElapsedKind(section, Kind::Second))))
        section = {.kind = FormatSection::Kind::General, .tokens = {{.kind = Kind::General}}};
    // Once a unit is counted in full, it is so wherever it stands.
    for (FormatToken& token : section.tokens)
        if (isDateKind(token.kind) && isElapsedKind(section, token.kind))
            token.elapsed = true;
}

// Digits of a denominator stand behind a slash; words may lie between.
bool isFraction(const FormatSection& section)
{
    bool digit = false, slash = false;
    for (const FormatToken& token : section.tokens) {
        if (token.kind == Kind::Digit && slash)
            return true;
        const bool number = token.kind == Kind::Words && !token.words.isEmpty() &&
                            token.words.front() >= u'1' && token.words.front() <= u'9';
        if (slash && number)
            return true;
        digit = digit || token.kind == Kind::Digit;
        slash = slash || (token.kind == Kind::Slash && digit);
    }
    return false;
}

// A comma between digits groups, one behind them scales, one before them is itself.
void placeCommas(FormatSection& section)
{
    auto& tokens = section.tokens;
    const auto isDigit = [](const FormatToken& token) { return token.kind == Kind::Digit; };
    const auto ends = [](const FormatToken& token) {
        return token.kind == Kind::Point || token.kind == Kind::Exponent;
    };
    for (auto token = tokens.begin(); token != tokens.end();) {
        if (token->kind != Kind::Comma) {
            ++token;
            continue;
        }
        const auto end = std::find_if(token, tokens.end(), ends);
        if (std::none_of(tokens.begin(), token, isDigit)) {
            turnIntoWords(*token++);
            continue;
        }
        const bool integer = std::none_of(tokens.begin(), token, ends);
        if (integer && std::any_of(token, end, isDigit))
            section.groups = true;
        else if (std::none_of(token, end, isDigit))
            section.tens -= 3;
        token = tokens.erase(token);
    }
}

void prepareNumber(FormatSection& section)
{
    section.kind = FormatSection::Kind::Number;
    placeCommas(section);
    bool point = false;
    for (FormatToken& token : section.tokens) {
        if (token.kind == Kind::Digit) {
            ++(section.isScientific ? section.exponentPlaces
                : point             ? section.decimalPlaces
                                    : section.integerPlaces);
        } else if (token.kind == Kind::Percent) {
            section.tens += 2;
            turnIntoWords(token);
        } else if (token.kind == Kind::Point && !point && !section.isScientific) {
            point = true;
        } else if (token.kind == Kind::Exponent && !section.isScientific &&
                   section.integerPlaces + section.decimalPlaces > 0) {
            section.isScientific = true;
        } else {
            turnIntoWords(token);
        }
    }
}

void prepare(FormatSection& section)
{
    if (section.tokens.empty())
        return;
    const auto& tokens = section.tokens;
    if (has(section, Kind::General)) {
        section.kind = FormatSection::Kind::General;
    } else if (std::any_of(tokens.begin(), tokens.end(),
                   [](const FormatToken& token) { return isDateKind(token.kind); })) {
        prepareDate(section);
    } else if (has(section, Kind::Digit)) {
        if (isFraction(section))
            section.kind = FormatSection::Kind::Fraction;
        else
            prepareNumber(section);
    } else {
        section.kind =
            has(section, Kind::Text) ? FormatSection::Kind::Text : FormatSection::Kind::Words;
    }
}

} // namespace

std::vector<FormatSection> formatSections(QStringView code)
{
    const FormatSection general{
        .kind = FormatSection::Kind::General, .tokens = {{.kind = Kind::General}}};
    if (code.isEmpty() || code.size() > longestCode)
        return {general};
    std::vector<FormatSection> sections = Cutter(code).sections();
    // Nothing but a colour: the number as it is.
    if (sections.size() == 1 && sections[0].tokens.empty())
        return {general};
    for (FormatSection& section : sections)
        prepare(section);
    return sections;
}

} // namespace corvelle
