#include "documents/DateForm.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using Kind = FormatToken::Kind;

constexpr qint64 daySeconds = 86'400;
constexpr qint64 daysTo1904 = 1462;
constexpr qint64 lastDay = 2'958'465; // 31 December 9999

QDate firstDay()
{
    return QDate(1899, 12, 30);
}

qint64 daysBefore(DateSystem dates)
{
    return dates == DateSystem::From1904 ? daysTo1904 : 0;
}

QString padded(qint64 number, int places)
{
    return QString::number(number).rightJustified(std::min(places, 9), u'0');
}

struct Moment
{
    QDate day;
    qint64 seconds = 0; // of the day, or of all days when time passed is meant
    qint64 part = 0;    // of a second, in units of its decimals
    int decimals = 0;
};

QString yearForm(const FormatToken& token, const Moment& at)
{
    return token.count > 2 ? padded(at.day.year(), 4) : padded(at.day.year() % 100, 2);
}

QString monthForm(const FormatToken& token, const Moment& at)
{
    const int month = at.day.month();
    if (token.count <= 2)
        return padded(month, token.count);
    const QString name = QLocale::c().monthName(month, QLocale::LongFormat);
    return token.count == 3 ? name.left(3) : token.count == 5 ? name.left(1) : name;
}

QString dayForm(const FormatToken& token, const Moment& at)
{
    if (token.count <= 2)
        return padded(at.day.day(), token.count);
    const QString name = QLocale::c().dayName(at.day.dayOfWeek(), QLocale::LongFormat);
    return token.count == 3 ? name.left(3) : name;
}

QString hourForm(const FormatToken& token, const Moment& at, bool half)
{
    const qint64 hours = at.seconds / 3600;
    if (token.elapsed)
        return padded(hours, token.count);
    const qint64 shown = half ? (hours % 12 == 0 ? 12 : hours % 12) : hours % 24;
    return padded(shown, std::min(token.count, 2));
}

QString halfDayForm(const FormatToken& token, const Moment& at)
{
    const bool later = at.seconds / 3600 % 24 >= 12;
    if (token.words.size() > 3)
        return later ? u"PM"_s : u"AM"_s;
    return later ? token.words.mid(2, 1) : token.words.left(1);
}

QString secondPartForm(const FormatToken& token, const Moment& at)
{
    return u'.' + padded(at.part, at.decimals).left(token.count).leftJustified(token.count, u'0');
}

QString tokenForm(const FormatSection& section, const FormatToken& token, const Moment& at)
{
    switch (token.kind) {
    case Kind::Year:
        return yearForm(token, at);
    case Kind::Month:
        return monthForm(token, at);
    case Kind::Day:
        return dayForm(token, at);
    case Kind::Hour:
        return hourForm(token, at, section.hasHalfDays);
    case Kind::Minute:
        return token.elapsed ? padded(at.seconds / 60, token.count)
                             : padded(at.seconds / 60 % 60, std::min(token.count, 2));
    case Kind::Second:
        return token.elapsed ? padded(at.seconds, token.count)
                             : padded(at.seconds % 60, std::min(token.count, 2));
    case Kind::SecondPart:
        return secondPartForm(token, at);
    case Kind::HalfDay:
        return halfDayForm(token, at);
    default:
        return token.words;
    }
}

} // namespace

std::optional<QString> dateForm(const FormatSection& section, double serial, DateSystem dates)
{
    const auto before = static_cast<double>(daysBefore(dates));
    if (!(serial >= 0) || serial + before >= static_cast<double>(lastDay + 1))
        return std::nullopt;
    const qint64 unit = std::llround(std::pow(10, section.secondDecimals));
    auto day = static_cast<qint64>(std::floor(serial));
    qint64 parts =
        std::llround((serial - static_cast<double>(day)) * static_cast<double>(daySeconds * unit));
    if (parts == daySeconds * unit) { // a hair before midnight
        parts = 0;
        ++day;
    }
    if (day + daysBefore(dates) > lastDay)
        return std::nullopt;
    const Moment at{firstDay().addDays(day + daysBefore(dates)),
        parts / unit + (section.isElapsed ? day * daySeconds : 0), parts % unit,
        section.secondDecimals};
    QString result;
    result.reserve(24);
    for (const FormatToken& token : section.tokens)
        result += tokenForm(section, token, at);
    return result;
}

std::optional<double> serialOfIsoDate(QStringView text, DateSystem dates)
{
    // Year, month, day, hour, minute, second: each behind the sign that must stand before it.
    constexpr int widths[] = {4, 2, 2, 2, 2, 2};
    constexpr QStringView signs[] = {u"", u"-", u"-", u"T ", u":", u":"};
    int values[6] = {};
    qsizetype at = 0;
    int read = 0;
    for (; read < 6; ++read) {
        const int width = widths[read];
        const qsizetype from = at + (read > 0 ? 1 : 0);
        const QStringView digits = text.mid(std::min(from, text.size()), width);
        const bool signed_ = read == 0 || (at < text.size() && signs[read].contains(text[at]));
        const bool whole =
            digits.size() == width && std::all_of(digits.begin(), digits.end(),
                                          [](QChar c) { return c >= u'0' && c <= u'9'; });
        if (!signed_ || !whole)
            break;
        values[read] = digits.toInt();
        at = from + width;
    }
    const QDate day(values[0], values[1], values[2]);
    if (read < 3 || !day.isValid())
        return std::nullopt;
    // An hour without its minutes isn't a time.
    const int seconds = read < 5 ? 0 : values[3] * 3600 + values[4] * 60 + values[5];
    return static_cast<double>(firstDay().daysTo(day) - daysBefore(dates)) +
           static_cast<double>(seconds) / static_cast<double>(daySeconds);
}

} // namespace corvelle
