#include "base/NodeKind.h"

#include <algorithm>
#include <iterator>

namespace corvelle {

namespace {

constexpr QStringView kindWords[] = {u"folder", u"file", u"page", u"link"};
constexpr QStringView colorWords[] = {
    u"gray", u"brown", u"orange", u"yellow", u"green", u"blue", u"purple", u"pink", u"red"};

template<class Enum, size_t N>
Enum parsed(QAnyStringView word, const QStringView (&words)[N], Enum otherwise)
{
    const auto found = std::find_if(std::begin(words), std::end(words),
        [&](QStringView known) { return word == QAnyStringView(known); });
    return found == std::end(words) ? otherwise
                                    : static_cast<Enum>(std::distance(std::begin(words), found));
}

} // namespace

QString word(NodeKind kind)
{
    return kindWords[static_cast<size_t>(kind)].toString();
}

QString word(NodeColor color)
{
    return colorWords[static_cast<size_t>(color)].toString();
}

NodeKind nodeKind(QAnyStringView word)
{
    return parsed(word, kindWords, NodeKind::File);
}

NodeColor nodeColor(QAnyStringView word)
{
    return parsed(word, colorWords, NodeColor::Gray);
}

} // namespace corvelle
