#include "pages/HtmlTokens.h"

#include <algorithm>
#include <string_view>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

bool isLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

int digit(QChar c)
{
    if (c >= u'0' && c <= u'9')
        return c.unicode() - u'0';
    if (c >= u'a' && c <= u'f')
        return c.unicode() - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c.unicode() - u'A' + 10;
    return 16;
}

// What the numbers of control characters stand for in pages of old programs.
constexpr char16_t windows1252[32] = {0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C,
    0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

char32_t numbered(char32_t number)
{
    if (number >= 0x80 && number <= 0x9F)
        return windows1252[number - 0x80];
    const bool none = number == 0 || number > 0x10FFFF || (number >= 0xD800 && number <= 0xDFFF);
    return none ? 0xFFFD : number;
}

qsizetype numericEntity(QStringView text, qsizetype at, char32_t* character)
{
    qsizetype end = at + 2;
    const bool hex = end < text.size() && (text[end] == u'x' || text[end] == u'X');
    const int base = hex ? 16 : 10;
    end += hex ? 1 : 0;
    const qsizetype first = end;
    char32_t number = 0;
    for (; end < text.size() && digit(text[end]) < base; ++end)
        number = std::min<char32_t>(
            number * static_cast<char32_t>(base) + static_cast<char32_t>(digit(text[end])),
            0x110000);
    if (end == first || end == text.size() || text[end] != u';')
        return 0;
    *character = numbered(number);
    return end + 1 - at;
}

// A name of up to eight letters as a number.
constexpr quint64 entityKey(std::u16string_view name)
{
    quint64 key = 0;
    for (const char16_t letter : name)
        key = key << 8 | letter;
    return key;
}

constexpr struct
{
    quint64 key;
    char16_t character;
} entities[] = {
    {entityKey(u"amp"), u'&'},
    {entityKey(u"lt"), u'<'},
    {entityKey(u"gt"), u'>'},
    {entityKey(u"quot"), u'"'},
    {entityKey(u"apos"), u'\''},
    {entityKey(u"nbsp"), 0xA0},
    {entityKey(u"mdash"), 0x2014},
    {entityKey(u"ndash"), 0x2013},
    {entityKey(u"hellip"), 0x2026},
    {entityKey(u"rsquo"), 0x2019},
    {entityKey(u"lsquo"), 0x2018},
    {entityKey(u"rdquo"), 0x201D},
    {entityKey(u"ldquo"), 0x201C},
    {entityKey(u"bull"), 0x2022},
    {entityKey(u"middot"), 0xB7},
};
constexpr qsizetype longestEntity = 6;

} // namespace

// ---- tokens ----

HtmlToken HtmlTokens::next()
{
    if (m_at >= m_html.size())
        return {};
    if (m_html[m_at] != u'<' || !isMarkup(m_at))
        return text();
    const QChar second = m_html[m_at + 1];
    if (second == u'!' && m_html.sliced(m_at).startsWith(u"<!--")) {
        const qsizetype end = m_html.indexOf(u"-->", m_at + 4);
        return end < 0 ? comment(m_at + 4, m_html.size(), m_html.size())
                       : comment(m_at + 4, end, end + 3);
    }
    if (second == u'!' || second == u'?') {
        const qsizetype end = tagEnd(m_at);
        return comment(m_at + 2, end, end + 1);
    }
    return tag();
}

void HtmlTokens::skipRaw(QStringView name)
{
    for (qsizetype at = m_at; (at = m_html.indexOf(u'<', at)) >= 0; ++at) {
        const QStringView rest = m_html.sliced(at + 1);
        if (!rest.startsWith(u'/') || !rest.sliced(1).startsWith(name, Qt::CaseInsensitive))
            continue;
        const qsizetype behind = at + 2 + name.size();
        if (behind < m_html.size() && m_html[behind] != u'>' && m_html[behind] != u'/' &&
            !isHtmlBlank(m_html[behind]))
            continue;
        const qsizetype end = tagEnd(behind);
        m_at = end < 0 ? m_html.size() : end + 1;
        return;
    }
    m_at = m_html.size();
}

// Of a "<".
bool HtmlTokens::isMarkup(qsizetype at)
{
    if (at + 1 >= m_html.size())
        return false;
    const QChar second = m_html[at + 1];
    if (second == u'!' && m_html.sliced(at).startsWith(u"<!--"))
        return true;
    const bool begins = isLetter(second) || second == u'!' || second == u'?' ||
                        (second == u'/' && at + 2 < m_html.size() && isLetter(m_html[at + 2]));
    return begins && tagEnd(at) >= 0;
}

qsizetype HtmlTokens::tagEnd(qsizetype from)
{
    // It is asked of places that follow each other, and mostly twice of the same tag.
    if (m_tagEnd < from) {
        const qsizetype end = m_html.indexOf(u'>', from);
        m_tagEnd = end < 0 ? m_html.size() : end;
    }
    return m_tagEnd < m_html.size() ? m_tagEnd : -1;
}

HtmlToken HtmlTokens::text()
{
    const qsizetype start = m_at;
    do
        m_at = m_html.indexOf(u'<', m_at + 1);
    while (m_at >= 0 && !isMarkup(m_at));
    if (m_at < 0)
        m_at = m_html.size();
    return {HtmlToken::Kind::Text, HtmlTag::Text, {}, m_html.sliced(start, m_at - start)};
}

HtmlToken HtmlTokens::comment(qsizetype from, qsizetype to, qsizetype next)
{
    m_at = next;
    return {HtmlToken::Kind::Comment, HtmlTag::None, {}, m_html.sliced(from, to - from)};
}

HtmlToken HtmlTokens::tag()
{
    HtmlToken token;
    const bool ends = m_html[m_at + 1] == u'/';
    token.kind = ends ? HtmlToken::Kind::EndTag : HtmlToken::Kind::StartTag;
    const qsizetype start = m_at + (ends ? 2 : 1);
    qsizetype at = start;
    while (m_html[at] != u'>' && m_html[at] != u'/' && !isHtmlBlank(m_html[at]))
        ++at;
    token.name = m_html.sliced(start, at - start);
    token.tag = htmlTag(token.name);
    const qsizetype end = m_html[at] == u'>' ? at : tagEnd(at);
    token.text = m_html.sliced(at, end - at);
    m_at = end + 1;
    return token;
}

bool isHtmlBlank(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return isHtmlBlank(c); });
}

// ---- entities ----

qsizetype htmlEntity(QStringView text, qsizetype at, char32_t* character)
{
    const QStringView rest = text.sliced(at + 1);
    if (rest.startsWith(u'#'))
        return numericEntity(text, at, character);
    qsizetype length = 0;
    while (length < rest.size() && length <= longestEntity && isLetter(rest[length]))
        ++length;
    if (length == rest.size() || rest[length] != u';')
        return 0;
    const quint64 key = entityKey({rest.utf16(), static_cast<size_t>(length)});
    for (const auto& entity : entities)
        if (entity.key == key) {
            *character = entity.character;
            return length + 2;
        }
    return 0;
}

QString htmlDecoded(QStringView text)
{
    QString result = u""_s;
    for (qsizetype at = 0; at < text.size();) {
        qsizetype next = text.indexOf(u'&', at);
        if (next < 0)
            next = text.size();
        result += text.sliced(at, next - at);
        at = next;
        if (at == text.size())
            break;
        char32_t character = u'&';
        at += std::max<qsizetype>(1, htmlEntity(text, at, &character));
        result += QChar::fromUcs4(character);
    }
    return result;
}

} // namespace corvelle
