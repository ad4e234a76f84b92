#include "library/Position.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QStringView digits = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// Characters of the integer part that begins with `head`, the head included; 0 for a character that
// is no head.
int integerLength(QChar head)
{
    if (head >= u'a' && head <= u'z')
        return head.unicode() - 'a' + 2;
    if (head >= u'A' && head <= u'Z')
        return 'Z' - head.unicode() + 2;
    return 0;
}

// Adds one in base 62. True when a carry is left over.
bool increment(QString& number)
{
    for (qsizetype i = number.size() - 1; i >= 0; --i) {
        const qsizetype value = digits.indexOf(number[i]);
        if (value >= 0 && value < digits.size() - 1) {
            number[i] = digits[value + 1];
            return false;
        }
        number[i] = digits.front();
    }
    return true;
}

} // namespace

QString positionAfter(const QString& key)
{
    if (key.isEmpty())
        return u"a0"_s;
    const QChar head = key.front();
    const int length = integerLength(head);
    if (length == 0 || key.size() < length)
        return key + u'V';
    QString number = key.mid(1, length - 1);
    if (!increment(number))
        return head + number;
    if (head == u'Z')
        return u"a0"_s;
    if (head == u'z')
        return key + u'V';
    const QChar next(head.unicode() + 1);
    if (next > u'a')
        number += u'0';
    else
        number.chop(1);
    return next + number;
}

} // namespace corvelle
