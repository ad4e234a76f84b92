#include "documents/DocLinks.h"

#include "base/Text.h"

#include <QStringList>

#include <algorithm>

namespace corvelle {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isRoman(QChar c)
{
    return QStringView(u"ivxlcdm").contains(c);
}

bool isPageNumber(const QString& field)
{
    return !field.isEmpty() && std::all_of(field.begin(), field.end(),
                                   [](QChar c) { return isDigit(c) || isRoman(c.toLower()); });
}

QString normalised(const QString& text)
{
    return lowerCased(text).simplified();
}

// Without "1. ", "2.3 ", "iv) " at its beginning; of a normalised text.
QString withoutNumber(const QString& text)
{
    qsizetype at = 0;
    const auto skip = [&](auto belongs) {
        const qsizetype from = at;
        while (at < text.size() && belongs(text[at]))
            ++at;
        return at > from;
    };
    const auto isMark = [&] { return at < text.size() && (text[at] == u'.' || text[at] == u')'); };
    for (;;) {
        const qsizetype from = at;
        const bool hasDigits = skip(isDigit);
        if (!hasDigits && !skip(isRoman))
            break;
        if (isMark()) {
            ++at;
        } else if (!hasDigits) {
            at = from;
            break;
        }
    }
    return at > 0 && at < text.size() && text[at] == u' ' ? text.sliced(at + 1) : text;
}

bool hasLink(const DocInlines& inlines)
{
    return std::any_of(inlines.begin(), inlines.end(), [](const DocInline& each) {
        const auto* text = std::get_if<DocInline::Text>(&each.value);
        return text && !text->marks.link.isNull();
    });
}

QString wantedText(const QString& linkText)
{
    QStringList fields;
    for (const QString& field : linkText.split(u'\t'))
        fields.append(field.trimmed());
    if (fields.size() > 1 && isPageNumber(fields.last()))
        fields.removeLast();
    return normalised(fields.join(u' '));
}

} // namespace

std::optional<size_t> rowOfLink(const DocBlocks& rows, const QString& linkText)
{
    const QString wanted = wantedText(linkText);
    if (wanted.isEmpty())
        return std::nullopt;
    std::optional<size_t> plain;
    bool isOnlyOne = true;
    for (size_t i = 0; i < rows.size(); ++i) {
        const auto* row = std::get_if<DocBlock::Paragraph>(&rows[i].value);
        if (!row)
            continue;
        const QString text = normalised(plainText(row->inlines));
        if (row->level > 0) {
            const QString name = withoutNumber(text);
            if (name == wanted || text == wanted || name == withoutNumber(wanted))
                return i;
        } else if (text == wanted && !hasLink(row->inlines)) {
            isOnlyOne = !plain;
            plain = i;
        }
    }
    return isOnlyOne ? plain : std::nullopt;
}

} // namespace corvelle
