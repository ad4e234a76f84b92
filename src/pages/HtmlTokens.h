// HTML cut into texts, tags and comments, in linear time and without an error.
//
// A tag ends at the next ">", wherever that stands. A "<" that begins nothing is text, and so is a
// tag that never ends; a comment without an end goes to the end of all. Everything is a view into
// the text, which must outlive it.
#pragma once

#include "pages/HtmlTags.h"

#include <QString>

namespace corvelle {

struct HtmlToken
{
    enum class Kind : quint8 { End, Text, StartTag, EndTag, Comment };

    Kind kind = Kind::End;
    HtmlTag tag = HtmlTag::None;
    QStringView name; // of a tag, as it is spelled
    QStringView text; // the text as it stands; what a comment says; a start tag's attributes
};

class HtmlTokens
{
public:
    explicit HtmlTokens(QStringView html)
        : m_html(html)
    {}

    HtmlToken next();

    // Goes on behind the end tag of that name, without a look at what stands before it.
    void skipRaw(QStringView name);

private:
    bool isMarkup(qsizetype at);
    qsizetype tagEnd(qsizetype from);
    HtmlToken text();
    HtmlToken comment(qsizetype from, qsizetype to, qsizetype next);
    HtmlToken tag();

    QStringView m_html;
    qsizetype m_at = 0;
    qsizetype m_tagEnd = -1; // the last ">" that was looked for; the text's end when there is none
};

constexpr bool isHtmlBlank(QChar c)
{
    return c == u' ' || c == u'\n' || c == u'\t' || c == u'\r' || c == u'\f';
}
bool isHtmlBlank(QStringView text);

// The length of the entity whose "&" stands there and its character; 0 when it is none.
qsizetype htmlEntity(QStringView text, qsizetype at, char32_t* character);
// With entities in place of their names; never null.
QString htmlDecoded(QStringView text);

} // namespace corvelle
