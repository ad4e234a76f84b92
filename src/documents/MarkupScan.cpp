#include "documents/MarkupScan.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <cctype>

namespace corvelle {

namespace {

constexpr qsizetype mostEntityBytes = 12;

bool isWordByte(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// The place of a start tag's "<" from there on, its name ended by something else than a letter; the
// text's end when there is none.
qsizetype tagAt(QByteArrayView markup, QByteArrayView open, qsizetype from)
{
    for (;;) {
        const qsizetype found = markup.indexOf(open, from);
        if (found < 0)
            return markup.size();
        const qsizetype behind = found + open.size();
        if (behind == markup.size() || !isWordByte(markup[behind]))
            return found;
        from = behind;
    }
}

qsizetype foundOrEnd(QByteArrayView markup, QByteArrayView what, qsizetype from)
{
    const qsizetype found = markup.indexOf(what, from);
    return found < 0 ? markup.size() : found;
}

// The length of an entity at "&" and what it stands for; 0 when it is none.
qsizetype entityAt(QByteArrayView markup, qsizetype at, QByteArray* text)
{
    const QByteArrayView rest = markup.sliced(at, std::min(mostEntityBytes, markup.size() - at));
    const qsizetype end = rest.indexOf(';');
    if (end < 0)
        return 0;
    const QByteArrayView name = rest.sliced(1, end - 1);
    if (name == "lt")
        *text = "<";
    else if (name == "gt")
        *text = ">";
    else if (name == "quot")
        *text = "\"";
    else if (name == "apos")
        *text = "'";
    else if (name == "amp")
        *text = "&";
    else if (name.startsWith('#')) {
        const bool isHex = name.startsWith("#x");
        bool isNumber = false;
        const uint code =
            name.sliced(isHex ? 2 : 1).toByteArray().toUInt(&isNumber, isHex ? 16 : 10);
        if (!isNumber || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return 0;
        const char32_t scalar = code;
        *text = QString::fromUcs4(&scalar, 1).toUtf8();
    } else {
        return 0;
    }
    return end + 1;
}

bool isTagNamed(QByteArrayView inside, QByteArrayView name)
{
    return inside.startsWith(name) && inside.endsWith('/') && !isWordByte(inside[name.size()]);
}

// What a tag without an end of its own stands for.
const char* textOfTag(QByteArrayView inside)
{
    if (isTagNamed(inside, "text:tab"))
        return "\t";
    if (isTagNamed(inside, "text:line-break"))
        return "\n";
    return isTagNamed(inside, "text:s") ? " " : "";
}

} // namespace

std::optional<QByteArrayView> TagScan::next()
{
    const qsizetype begin = tagAt(m_markup, m_open, m_at);
    if (begin == m_markup.size())
        return std::nullopt;
    const qsizetype inside = begin + m_open.size();
    const qsizetype close = m_markup.indexOf('>', inside);
    if (close < 0)
        return std::nullopt;
    m_at = close + 1;
    return m_markup.sliced(inside, close - inside);
}

ElementScan::ElementScan(QByteArrayView markup, std::initializer_list<QByteArrayView> names)
    : m_markup(markup)
{
    for (const QByteArrayView name : names)
        m_names.push_back({'<' + name.toByteArray(), "</" + name.toByteArray() + '>'});
}

std::optional<QByteArrayView> ElementScan::next()
{
    qsizetype begin = m_markup.size();
    for (Names& names : m_names) {
        if (names.nextOpen < m_at)
            names.nextOpen = tagAt(m_markup, names.open, m_at);
        begin = std::min(begin, names.nextOpen);
    }
    const qsizetype inside = foundOrEnd(m_markup, ">", begin) + 1;
    if (inside > m_markup.size())
        return std::nullopt;
    const qsizetype close = nearestClose(inside);
    if (close == m_markup.size())
        return std::nullopt;
    m_at = m_markup.indexOf('>', close) + 1;
    return m_markup.sliced(inside, close - inside);
}

qsizetype ElementScan::nearestClose(qsizetype from)
{
    qsizetype nearest = m_markup.size();
    for (Names& names : m_names) {
        if (names.nextClose < from)
            names.nextClose = foundOrEnd(m_markup, names.close, from);
        nearest = std::min(nearest, names.nextClose);
    }
    return nearest;
}

QString attributeIn(QByteArrayView tag, QByteArrayView name)
{
    const QByteArray key = name.toByteArray() + '=';
    for (qsizetype at = tag.indexOf(key); at >= 0; at = tag.indexOf(key, at + 1)) {
        const qsizetype from = at + key.size();
        if ((at > 0 && isWordByte(tag[at - 1])) || from >= tag.size() ||
            (tag[from] != '"' && tag[from] != '\''))
            continue;
        qsizetype end = from + 1;
        while (end < tag.size() && tag[end] != '"' && tag[end] != '\'')
            ++end;
        if (end < tag.size() && end > from + 1)
            return QString::fromUtf8(tag.sliced(from + 1, end - from - 1));
    }
    return {};
}

QString textOfMarkup(QByteArrayView markup)
{
    QByteArray text;
    for (qsizetype at = 0; at < markup.size();) {
        qsizetype end = at;
        while (end < markup.size() && markup[end] != '<' && markup[end] != '&')
            ++end;
        text += markup.sliced(at, end - at);
        at = end;
        if (at == markup.size())
            break;
        if (markup[at] == '<') {
            const qsizetype close = markup.indexOf('>', at);
            if (close < 0) {
                text += markup.sliced(at);
                break;
            }
            text += textOfTag(markup.sliced(at + 1, close - at - 1));
            at = close + 1;
            continue;
        }
        QByteArray entity = "&";
        at += std::max<qsizetype>(1, entityAt(markup, at, &entity));
        text += entity;
    }
    return QString::fromUtf8(text);
}

qsizetype characterCount(const QString& text)
{
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (characters.toNextBoundary() >= 0)
        ++count;
    return count;
}

} // namespace corvelle
