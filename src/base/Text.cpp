#include "base/Text.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>

namespace corvelle {

namespace {

bool isAscii(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

// An alias onto the text: ICU reads it in place.
icu::UnicodeString aliased(QStringView text)
{
    return icu::UnicodeString(false, text.utf16(), static_cast<int32_t>(text.size()));
}

QString toQString(const icu::UnicodeString& text)
{
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

} // namespace

QString composed(QStringView text)
{
    if (isAscii(text))
        return text.toString();
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status))
        return text.toString();
    const icu::UnicodeString source = aliased(text);
    if (nfc->isNormalized(source, status) && U_SUCCESS(status))
        return text.toString();
    status = U_ZERO_ERROR;
    const icu::UnicodeString result = nfc->normalize(source, status);
    return U_FAILURE(status) ? text.toString() : toQString(result);
}

QString lowerCased(QStringView text)
{
    if (isAscii(text)) {
        QString result = text.toString();
        for (QChar& c : result)
            if (c >= u'A' && c <= u'Z')
                c = QChar(c.unicode() + ('a' - 'A'));
        return result;
    }
    icu::UnicodeString folded(text.utf16(), static_cast<int32_t>(text.size()));
    folded.toLower(icu::Locale::getRoot());
    return toQString(folded);
}

QString pathKey(const QString& path, NameCase nameCase)
{
    // Composed a second time: of some letters with a mark ("J̌") only the small form is one
    // character.
    return nameCase == NameCase::Kept ? path : composed(lowerCased(composed(path)));
}

int compareByCodePoints(QStringView left, QStringView right)
{
    const qsizetype shared = std::min(left.size(), right.size());
    for (qsizetype i = 0; i < shared; ++i) {
        const char16_t l = left[i].unicode(), r = right[i].unicode();
        if (l == r)
            continue;
        // A surrogate stands for a code point above all that one unit can tell.
        const bool leftHigh = QChar::isSurrogate(l), rightHigh = QChar::isSurrogate(r);
        if (leftHigh != rightHigh)
            return leftHigh ? 1 : -1;
        return l < r ? -1 : 1;
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

int compareNaturally(QStringView left, QStringView right)
{
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    const auto endOfNumber = [&](QStringView text, qsizetype from) {
        while (from < text.size() && isDigit(text[from]))
            ++from;
        return from;
    };
    const auto withoutZeros = [](QStringView number) {
        while (number.size() > 1 && number.front() == u'0')
            number = number.sliced(1);
        return number;
    };
    qsizetype l = 0, r = 0;
    while (l < left.size() && r < right.size()) {
        if (isDigit(left[l]) && isDigit(right[r])) {
            const qsizetype lEnd = endOfNumber(left, l), rEnd = endOfNumber(right, r);
            const QStringView lNumber = withoutZeros(left.sliced(l, lEnd - l));
            const QStringView rNumber = withoutZeros(right.sliced(r, rEnd - r));
            if (lNumber.size() != rNumber.size())
                return lNumber.size() < rNumber.size() ? -1 : 1;
            if (const int order = lNumber.compare(rNumber))
                return order;
            l = lEnd;
            r = rEnd;
            continue;
        }
        const QChar lFolded = left[l].toCaseFolded(), rFolded = right[r].toCaseFolded();
        if (lFolded != rFolded)
            return lFolded < rFolded ? -1 : 1;
        ++l;
        ++r;
    }
    if ((l < left.size()) != (r < right.size()))
        return r < right.size() ? -1 : 1;
    return compareByCodePoints(left, right);
}

QString lastComponent(const QString& path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString parentPath(const QString& path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QString() : path.left(slash);
}

bool liesBelow(const QString& path, const QString& folder)
{
    return path.size() > folder.size() && path[folder.size()] == u'/' && path.startsWith(folder);
}

QString tabField(const QString& text)
{
    const bool isPlain = std::none_of(text.begin(), text.end(),
        [](QChar c) { return c == u'\t' || c == u'\n' || c == u'\r' || c == u'"'; });
    return isPlain ? text : u'"' + QString(text).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

QStringView firstCharacters(QStringView text, qsizetype most)
{
    // No character has less than one unit.
    if (text.size() <= most)
        return text;
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    UText units = UTEXT_INITIALIZER;
    utext_openUChars(&units, text.utf16(), text.size(), &error);
    if (U_FAILURE(error))
        return text.left(most);
    characters->setText(&units, error);
    const int32_t end = characters->next(static_cast<int32_t>(most));
    utext_close(&units);
    return end == icu::BreakIterator::DONE ? text : text.left(end);
}

QString shortened(const QString& text, qsizetype most)
{
    QString line = text;
    line.replace(u'\n', u' ');
    return line.size() <= most ? line : line.left(most) + u'…';
}

qsizetype wordCount(QStringView text)
{
    qsizetype count = 0;
    bool inWord = false;
    for (const QChar c : text) {
        count += !c.isSpace() && !inWord;
        inWord = !c.isSpace();
    }
    return count;
}

} // namespace corvelle
