// Finds tags and elements in XML by their spelling, as far as a preview needs it: also where the
// XML is broken. Linear; views into the bytes, which must outlive them. UTF-8.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

namespace corvelle {

// Start tags of one name, one after the other: what stands between the name and ">".
class TagScan
{
public:
    TagScan(QByteArrayView markup, QByteArrayView name)
        : m_markup(markup)
        , m_open('<' + name.toByteArray())
    {}

    std::optional<QByteArrayView> next();

private:
    QByteArrayView m_markup;
    QByteArray m_open;
    qsizetype m_at = 0;
};

// Elements of these names that lie in no other of them: what stands between their start tag and the
// next end tag of any of the names. One without an end tag isn't there.
class ElementScan
{
public:
    ElementScan(QByteArrayView markup, std::initializer_list<QByteArrayView> names);

    std::optional<QByteArrayView> next();

private:
    struct Names
    {
        QByteArray open, close;
        qsizetype nextOpen = -1,
                  nextClose = -1; // from the place reached; the end when there is none
    };
    qsizetype nearestClose(qsizetype from);

    QByteArrayView m_markup;
    std::vector<Names> m_names;
    qsizetype m_at = 0;
};

// The value of an attribute inside a start tag; empty when it isn't there.
QString attributeIn(QByteArrayView tag, QByteArrayView name);

// The text between tags, with entities in place: tabs and line breaks of OpenDocument as
// characters, all other tags as nothing.
QString textOfMarkup(QByteArrayView markup);

// Characters as a person counts them.
qsizetype characterCount(const QString& text);

} // namespace corvelle
