#include "interface/page/PageStyle.h"

#include "interface/theme/Fonts.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

TypeStyle pageType(Block kind)
{
    switch (kind) {
    case Block::H1:
        return TypeStyle::H1;
    case Block::H2:
        return TypeStyle::H2;
    case Block::H3:
        return TypeStyle::H3;
    case Block::H4:
    case Block::H5:
    case Block::H6:
        return TypeStyle::H4;
    case Block::Code:
        return TypeStyle::PageCode;
    default:
        return TypeStyle::PageBody;
    }
}

struct Gaps
{
    double above, below;
};

Gaps gapsOf(Block kind)
{
    switch (kind) {
    case Block::H1:
        return {26, 8};
    case Block::H2:
        return {20, 6};
    case Block::H3:
        return {14, 4};
    case Block::H4:
    case Block::H5:
    case Block::H6:
        return {12, 3};
    case Block::Bullet:
    case Block::Ordered:
    case Block::Todo:
    case Block::Done:
        return {0, 2};
    case Block::Quote:
    case Block::Code:
        return {8, 8};
    case Block::Divider:
    case Block::Raw:
        return {10, 10};
    case Block::Paragraph:
        break;
    }
    return {0, 6};
}

Gaps cellGapsOf(Block kind)
{
    switch (kind) {
    case Block::H1:
    case Block::H2:
    case Block::H3:
    case Block::H4:
    case Block::H5:
    case Block::H6:
        return {6, 2};
    case Block::Bullet:
    case Block::Ordered:
    case Block::Todo:
    case Block::Done:
        return {0, 2};
    case Block::Quote:
    case Block::Code:
        return {4, 4};
    case Block::Divider:
    case Block::Raw:
        return {6, 6};
    case Block::Paragraph:
        break;
    }
    return {0, 4};
}

constexpr double cellLine = 20;

} // namespace

PageStyle::PageStyle(Scheme scheme, const PageSettings& settings, double zoom)
    : m_scheme(scheme)
    , m_settings(settings)
    , m_zoom(zoom)
{}

PageStyle PageStyle::inCell(bool isHead) const
{
    PageStyle style = *this;
    style.m_place = isHead ? Place::HeadCell : Place::Cell;
    return style;
}

TypeStyle PageStyle::typeOf(Block kind) const
{
    if (m_place == Place::Page || kind == Block::Code)
        return pageType(kind);
    if (isHeading(kind))
        return TypeStyle::BodyStrong;
    return m_place == Place::HeadCell ? TypeStyle::SmallStrong : TypeStyle::LabelText;
}

QFont PageStyle::font(Block kind) const
{
    QFont font = corvelle::font(typeOf(kind), scale());
    if (kind == Block::Code)
        return font;
    if (m_settings.font == PageSettings::Font::Serif)
        font.setFamilies({u"Source Serif 4"_s, u"Noto Serif"_s, u"Liberation Serif"_s,
            u"DejaVu Serif"_s, u"Noto Color Emoji"_s});
    else if (m_settings.font == PageSettings::Font::Mono)
        font.setFamilies({u"JetBrains Mono"_s, u"DejaVu Sans Mono"_s, u"Noto Color Emoji"_s});
    if (m_settings.font != PageSettings::Font::Standard)
        font.setLetterSpacing(QFont::AbsoluteSpacing, 0);
    return font;
}

QFont PageStyle::codeFont() const
{
    return corvelle::font(TypeStyle::PageCode, scale());
}

QFont PageStyle::chipFont(Block kind) const
{
    QFont font = corvelle::font(typeOf(kind));
    font.setPixelSize(static_cast<int>(std::lround(scaled(font.pixelSize() * 0.945))));
    if (font.weight() < QFont::Medium)
        font.setWeight(QFont::Medium);
    return font;
}

double PageStyle::lineHeight(Block kind) const
{
    return std::round(
        scaled(m_place == Place::Page ? double(typeSpec(typeOf(kind)).line) : cellLine));
}

QColor PageStyle::ink(const BlockStyle& style) const
{
    if (style.kind == Block::Done || style.kind == Block::Raw)
        return colors().ink3;
    if (style.kind == Block::H5 || style.kind == Block::H6)
        return colors().ink2;
    const bool isQuiet =
        (style.isQuoted() && style.kind != Block::Code) || m_place == Place::HeadCell;
    return isQuiet ? colors().ink2 : colors().ink;
}

double PageStyle::gapAbove(Block kind) const
{
    return scaled((m_place == Place::Page ? gapsOf(kind) : cellGapsOf(kind)).above);
}

double PageStyle::gapBelow(Block kind) const
{
    return scaled((m_place == Place::Page ? gapsOf(kind) : cellGapsOf(kind)).below);
}

double PageStyle::inset(Block kind) const
{
    switch (kind) {
    case Block::Bullet:
    case Block::Ordered:
        return 24 * m_zoom;
    case Block::Todo:
    case Block::Done:
        return 28 * m_zoom;
    case Block::Code:
        return codeSide;
    default:
        return 0;
    }
}

} // namespace corvelle
