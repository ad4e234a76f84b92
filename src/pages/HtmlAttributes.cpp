#include "pages/HtmlAttributes.h"

#include "pages/HtmlTokens.h"

#include <algorithm>

namespace corvelle {

namespace {

bool isAsciiLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
bool isAsciiDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}
bool beginsName(QChar c)
{
    return isAsciiLetter(c) || c == u'_' || c == u':';
}
bool isOfName(QChar c)
{
    return beginsName(c) || isAsciiDigit(c) || c == u'-' || c == u'.';
}
bool isOfBareValue(QChar c)
{
    return !isHtmlBlank(c) && !QStringView(u"\"'=<>`").contains(c);
}

// Goes through the attributes from left to right.
struct Attributes
{
    QStringView all;
    qsizetype at = 0;
    QStringView name, value;

    bool next()
    {
        while (at < all.size() && !beginsName(all[at]))
            ++at;
        if (at == all.size())
            return false;
        name = taken(isOfName);
        value = {};
        const qsizetype behindName = at;
        taken<bool(QChar)>(isHtmlBlank);
        if (at == all.size() || all[at] != u'=' || !readValue())
            at = behindName;
        return true;
    }

private:
    template<class Test>
    QStringView taken(Test test)
    {
        const qsizetype start = at;
        while (at < all.size() && test(all[at]))
            ++at;
        return all.sliced(start, at - start);
    }
    bool readValue()
    {
        ++at;
        taken<bool(QChar)>(isHtmlBlank);
        if (at == all.size())
            return false;
        if (const QChar quote = all[at]; quote == u'"' || quote == u'\'') {
            // The quote that has no partner is the last one of its kind: this fails once.
            const qsizetype end = all.indexOf(quote, at + 1);
            if (end < 0)
                return false;
            value = all.sliced(at + 1, end - at - 1);
            at = end + 1;
            return true;
        }
        value = taken(isOfBareValue);
        return !value.isEmpty();
    }
};

} // namespace

QString htmlAttribute(QStringView attributes, QLatin1StringView name)
{
    for (Attributes each{attributes, 0, {}, {}}; each.next();)
        if (each.name.compare(name, Qt::CaseInsensitive) == 0)
            return htmlDecoded(each.value);
    return {};
}

int htmlNumber(QStringView attributes, QLatin1StringView name, int otherwise, int least, int most)
{
    const QString text = htmlAttribute(attributes, name);
    bool valid = false;
    const int number = QStringView(text).trimmed().toInt(&valid);
    return valid ? std::clamp(number, least, most) : otherwise;
}

QString htmlStyle(QStringView attributes)
{
    if (attributes.size() < 7) // nothing as long as "style=x"
        return {};
    const QString style = htmlAttribute(attributes, QLatin1StringView("style"));
    QString result;
    result.reserve(style.size());
    for (qsizetype at = 0; at < style.size(); ++at) {
        QChar c = style[at];
        if (c == u':')
            while (!result.isEmpty() && isHtmlBlank(result.back()))
                result.chop(1);
        else if (isHtmlBlank(c) && result.endsWith(u':'))
            continue;
        else if (c >= u'A' && c <= u'Z')
            c = QChar(c.unicode() + (u'a' - u'A'));
        result += c;
    }
    return result;
}

QStringView styleWord(QStringView style, QStringView name)
{
    for (qsizetype at = 0; (at = style.indexOf(name, at)) >= 0; at += name.size()) {
        const qsizetype colon = at + name.size();
        const bool begins = at == 0 || style[at - 1] == u';' || isHtmlBlank(style[at - 1]);
        if (!begins || colon >= style.size() || style[colon] != u':')
            continue;
        qsizetype end = colon + 1;
        while (end < style.size() && isAsciiLetter(style[end]))
            ++end;
        return style.sliced(colon + 1, end - colon - 1);
    }
    return {};
}

int wordListLevel(QStringView style)
{
    constexpr QStringView property = u"mso-list:l", level = u"level";
    constexpr int deepest = 100;
    for (qsizetype at = 0; (at = style.indexOf(property, at)) >= 0;) {
        at += property.size();
        const auto skip = [&](auto test) {
            const qsizetype start = at;
            while (at < style.size() && test(style[at]))
                ++at;
            return at > start;
        };
        if (!skip(isAsciiDigit) || !skip([](QChar c) { return isHtmlBlank(c); }) ||
            !style.sliced(at).startsWith(level))
            continue;
        at += level.size();
        const qsizetype start = at;
        if (!skip(isAsciiDigit))
            continue;
        bool valid = false;
        const int number = style.sliced(start, at - start).toInt(&valid);
        return valid ? std::clamp(number, 1, deepest) : deepest;
    }
    return 0;
}

bool isScriptAddress(QStringView address)
{
    QString head;
    for (const QChar c : address) {
        if (c.isSpace() || c.category() == QChar::Other_Control)
            continue;
        head += c.toLower();
        if (c == u':' || head.size() > 12)
            break;
    }
    return head == u"javascript:" || head == u"vbscript:" || head == u"jscript:" ||
           head == u"livescript:";
}

QStringView itemIdOf(QStringView address)
{
    constexpr QStringView place = u"corvelle://item/";
    if (!address.startsWith(place))
        return {};
    const QStringView id = address.sliced(place.size());
    const bool valid = std::all_of(id.begin(), id.end(),
        [](QChar c) { return isAsciiLetter(c) || isAsciiDigit(c) || c == u'_' || c == u'-'; });
    return valid ? id : QStringView();
}

} // namespace corvelle
