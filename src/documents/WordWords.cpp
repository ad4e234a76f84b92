#include "documents/WordWords.h"

#include <QHash>

namespace corvelle {

namespace {

// The text up to the first of these, and what stands behind it.
qsizetype skipBlanks(QStringView text, qsizetype at)
{
    while (at < text.size() && text[at].isSpace())
        ++at;
    return at;
}

qsizetype endOfWord(QStringView text, qsizetype at)
{
    while (at < text.size() && !text[at].isSpace())
        ++at;
    return at;
}

// The quoted text at a place and the place behind it; without its second quotation mark it ends at
// a blank.
QString quotedAt(QStringView text, qsizetype at, qsizetype* behind)
{
    const qsizetype second = text.indexOf(u'"', at + 1);
    *behind = second < 0 ? endOfWord(text, at + 1) : second + 1;
    return text.sliced(at + 1, (second < 0 ? *behind : second) - at - 1).toString();
}

// What follows the switch \l, in quotes.
QString placeInside(QStringView text, qsizetype from)
{
    const qsizetype found = text.indexOf(u"\\l", from);
    if (found < 0)
        return {};
    const qsizetype at = skipBlanks(text, found + 2);
    qsizetype behind = 0;
    return at < text.size() && text[at] == u'"' ? quotedAt(text, at, &behind) : QString();
}

const QHash<uint, char16_t>& wingdings()
{
    static const QHash<uint, char16_t> symbols = {{0xA7, u'▪'}, {0xFC, u'✓'}, {0xFB, u'✗'},
        {0x6C, u'●'}, {0x6E, u'■'}, {0x71, u'❑'}, {0xD8, u'➢'}, {0xE0, u'→'}};
    return symbols;
}

const QHash<uint, char16_t>& otherSymbols()
{
    static const QHash<uint, char16_t> symbols = {{0xB7, u'•'}, {0xD7, u'×'}, {0xB1, u'±'},
        {0xAE, u'→'}, {0xDE, u'⇒'}, {0xA3, u'≤'}, {0xB3, u'≥'}, {0xB9, u'≠'}};
    return symbols;
}

} // namespace

std::optional<QString> hyperlinkTarget(QStringView instruction)
{
    constexpr QStringView word = u"HYPERLINK";
    qsizetype at = skipBlanks(instruction, 0);
    if (!instruction.sliced(at).startsWith(word))
        return std::nullopt;
    const qsizetype behindWord = at + word.size();
    at = skipBlanks(instruction, behindWord);
    if (at == behindWord)
        return std::nullopt;
    bool isInside = false;
    if (instruction.sliced(at).startsWith(u"\\l")) {
        const qsizetype next = skipBlanks(instruction, at + 2);
        isInside = next > at + 2;
        at = isInside ? next : at;
    }
    if (at == instruction.size() || instruction[at] == u'\\')
        return std::nullopt;

    qsizetype behind = endOfWord(instruction, at);
    QString target = instruction.sliced(at, behind - at).toString();
    if (instruction[at] == u'"')
        target = quotedAt(instruction, at, &behind);
    if (isInside)
        return u'#' + target;
    const QString place = placeInside(instruction, behind);
    return place.isEmpty() ? target : target + u'#' + place;
}

QString symbolText(const QString& font, const QString& hexadecimal)
{
    const bool isPrivate =
        hexadecimal.size() == 4 && hexadecimal.startsWith(u"F0", Qt::CaseInsensitive);
    bool isNumber = false;
    const uint code = QStringView(hexadecimal).sliced(isPrivate ? 2 : 0).toUInt(&isNumber, 16);
    if (!isNumber)
        return {};
    const QString family = font.toLower();
    const bool isWingdings = family.contains(u"wingdings");
    const auto& symbols = isWingdings ? wingdings() : otherSymbols();
    if (const auto found = symbols.constFind(code); found != symbols.cend())
        return QChar(*found);
    const bool isScalar = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    if (isWingdings || family.contains(u"symbol") || !isScalar)
        return {};
    const char32_t scalar = code;
    return QString::fromUcs4(&scalar, 1);
}

bool isOn(std::optional<QByteArrayView> value)
{
    return !value || (*value != "false" && *value != "0");
}

} // namespace corvelle
