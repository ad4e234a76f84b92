#include "canvas/FileWords.h"

#include <iterator>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

struct Rule
{
    QStringView part; // of the type
    QStringView badge;
};

// The first part that the type contains decides.
constexpr Rule rules[] = {
    {u"application/pdf", u"PDF"},
    {u"spreadsheet", u"XLS"},
    {u"ms-excel", u"XLS"},
    {u"text/csv", u"XLS"},
    {u"presentation", u"PPT"},
    {u"ms-powerpoint", u"PPT"},
    {u"wordprocessing", u"DOC"},
    {u"msword", u"DOC"},
    {u"opendocument.text", u"DOC"},
    {u"text/rtf", u"DOC"},
    {u"application/rtf", u"DOC"},
    {u"markdown", u"MD"},
    {u"message/rfc822", u"EML"},
    {u"zip", u"ZIP"},
    {u"x-7z", u"ZIP"},
    {u"rar", u"ZIP"},
    {u"x-tar", u"ZIP"},
    {u"compressed", u"ZIP"},
    {u"audio/", u"AUD"},
    {u"video/", u"VID"},
    {u"text/", u"TXT"},
    {u"json", u"TXT"},
    {u"xml", u"TXT"},
    {u"yaml", u"TXT"},
    {u"javascript", u"TXT"},
    {u"x-shellscript", u"TXT"},
};

} // namespace

QString fileBadge(const QString& mime, const QString& name)
{
    for (const Rule& rule : rules)
        if (mime.contains(rule.part))
            return rule.badge.toString();
    return name.endsWith(u".md", Qt::CaseInsensitive) ? u"MD"_s : u"FILE"_s;
}

QString sizeWords(qint64 bytes)
{
    if (bytes == 1)
        return u"1 byte"_s;
    if (bytes < 1000)
        return u"%1 bytes"_s.arg(bytes);
    constexpr QStringView units[] = {u"KB", u"MB", u"GB", u"TB"};
    double amount = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    // What would be rounded to a thousand is one of the next unit.
    while (amount >= 999.5 && unit + 1 < std::size(units)) {
        amount /= 1000;
        ++unit;
    }
    const int decimals = unit > 0 && amount < 9.95 ? 1 : 0;
    QString number = QString::number(amount, 'f', decimals);
    if (number.endsWith(u".0"))
        number.chop(2);
    return number + u' ' + units[unit].toString();
}

} // namespace corvelle
