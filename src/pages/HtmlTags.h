// The tags that mean something to a page, and what holds of all tags of a kind.
#pragma once

#include <QStringView>

namespace corvelle {

enum class HtmlTag : quint8 {
    None,     // of a name that means nothing here
    Text,     // no element at all
    WordList, // made up: the list paragraphs of an office program that stand in a row
    A,
    B,
    Br,
    Blockquote,
    Body,
    Caption,
    Code,
    Dd,
    Del,
    Dl,
    Dt,
    Em,
    H1,
    H2,
    H3,
    H4,
    H5,
    H6,
    Head,
    Hr,
    I,
    Img,
    Input,
    Kbd,
    Li,
    Math,
    Ol,
    Option,
    P,
    Pre,
    S,
    Samp,
    Span,
    Strike,
    Strong,
    Svg,
    Table,
    Td,
    Th,
    Tr,
    Tt,
    U,
    Ul,
    OtherBlock,   // wraps its children
    OtherVoid,    // nothing in it, nothing of it
    OtherSkipped, // dropped with its contents
    OtherRaw      // dropped, and its contents aren't even tags
};

// Two names are told apart by their tag, and by their name where tags are the Other ones.
HtmlTag htmlTag(QStringView name);

// Never has children.
constexpr bool isVoid(HtmlTag tag)
{
    return tag == HtmlTag::Br || tag == HtmlTag::Hr || tag == HtmlTag::Img ||
           tag == HtmlTag::Input || tag == HtmlTag::OtherVoid;
}

constexpr bool isSkipped(HtmlTag tag)
{
    return tag == HtmlTag::Head || tag == HtmlTag::Svg || tag == HtmlTag::Math ||
           tag == HtmlTag::OtherSkipped || tag == HtmlTag::OtherRaw;
}

constexpr bool isHeading(HtmlTag tag)
{
    return tag >= HtmlTag::H1 && tag <= HtmlTag::H6;
}

// Stands on lines of its own.
constexpr bool isBlock(HtmlTag tag)
{
    switch (tag) {
    case HtmlTag::WordList:
    case HtmlTag::Blockquote:
    case HtmlTag::Body:
    case HtmlTag::Caption:
    case HtmlTag::Dd:
    case HtmlTag::Dl:
    case HtmlTag::Dt:
    case HtmlTag::Hr:
    case HtmlTag::Li:
    case HtmlTag::Ol:
    case HtmlTag::Option:
    case HtmlTag::P:
    case HtmlTag::Pre:
    case HtmlTag::Table:
    case HtmlTag::Td:
    case HtmlTag::Th:
    case HtmlTag::Tr:
    case HtmlTag::Ul:
    case HtmlTag::OtherBlock:
        return true;
    default:
        return isHeading(tag);
    }
}

} // namespace corvelle
