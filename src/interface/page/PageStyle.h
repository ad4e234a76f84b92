// How the blocks of a page look: letters, line heights, gaps, insets and inks by their kind.
//
// Logical pixels. A value; any thread while a QGuiApplication exists.
#pragma once

#include "interface/theme/Theme.h"
#include "pages/FlatText.h"
#include "pages/PageDocument.h"

#include <QFont>

namespace corvelle {

class PageStyle
{
public:
    // `zoom` is what the person makes larger or smaller: letters and all room around them.
    explicit PageStyle(
        Scheme scheme = Scheme::Light, const PageSettings& settings = {}, double zoom = 1);

    // The same in the cells of tables: smaller and closer, those of the head strong.
    PageStyle inCell(bool isHead) const;

    double zoom() const { return m_zoom; }

    const Palette& colors() const { return palette(m_scheme); }
    bool isDark() const { return m_scheme == Scheme::Dark; }

    QFont font(Block kind) const;
    QFont codeFont() const; // of words within other text
    QFont chipFont(Block kind) const;
    double lineHeight(Block kind) const;
    QColor ink(const BlockStyle& style) const;

    // The gap between two blocks is the larger of what the upper one wants below and the lower one
    // above.
    double gapAbove(Block kind) const;
    double gapBelow(Block kind) const;

    // How far words stand in from the edge of their block, on the side where reading begins.
    double inset(Block kind) const;
    double quoteInset() const { return 18 * m_zoom; }
    double indent() const { return 24 * m_zoom; } // of each level

private:
    enum class Place : quint8 { Page, Cell, HeadCell };

    TypeStyle typeOf(Block kind) const;
    double scale() const { return (m_settings.smallText ? 0.9 : 1) * m_zoom; }
    double scaled(double size) const { return size * scale(); }

    Scheme m_scheme;
    PageSettings m_settings;
    double m_zoom;
    Place m_place = Place::Page;
};

// The space inside a code block.
inline constexpr double codeSide = 16, codeEnd = 13;

} // namespace corvelle
