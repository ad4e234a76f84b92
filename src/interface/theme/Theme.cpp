#include "interface/theme/Theme.h"

namespace corvelle {
namespace {

QColor rgb(unsigned int value, double alpha = 1)
{
    QColor color(QRgb(value | 0xFF000000U));
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

Palette lightPalette()
{
    Palette p;
    p.scheme = Scheme::Light;

    p.ground = rgb(0xECEFF1);
    p.dot = rgb(0xC4CACD);
    p.groundShade = rgb(0xE2E7E9);
    p.surface = rgb(0xFFFFFF);
    p.sunken = rgb(0xF2F5F7);
    p.raised = rgb(0xFBFDFD);
    p.field = rgb(0xEEF1F2);
    p.paper = rgb(0xFFFFFF);
    p.peek = rgb(0xFFFFFF);

    p.ink = rgb(0x152025);
    p.ink2 = rgb(0x424E54);
    p.ink3 = rgb(0x606B71);
    p.ink4 = rgb(0x939DA3);

    p.inverse = rgb(0x1B272D);
    p.onInverse = rgb(0xF5F7F8);
    p.inverseInk2 = rgb(0xBDC6CB);
    p.inverseAction = rgb(0x86DDE7);

    p.accent = rgb(0x007585);
    p.accentHover = rgb(0x006574);
    p.accentPressed = rgb(0x025867);
    p.onAccent = rgb(0xFFFFFF);
    p.accentSoft = rgb(0xDAF2F6);
    p.accentSofter = rgb(0xEBF8FA);
    p.accentInk = rgb(0x025A69);

    p.danger = rgb(0xC03130);
    p.dangerHover = rgb(0xAA2526);
    p.onDanger = rgb(0xFFFFFF);
    p.dangerSoft = rgb(0xFEE9E8);
    p.dangerInk = rgb(0xA32224);
    p.good = rgb(0x1D7749);
    p.warn = rgb(0x9D6014);
    p.mark = rgb(0xFCE190);
    p.markInk = rgb(0x38260F);

    p.hairline = rgb(0x0E1F2B, 0.11);
    p.hairlineStrong = rgb(0x0E1F2B, 0.19);
    p.hairlineFaint = rgb(0x0E1F2B, 0.065);
    p.hover = rgb(0x0E1F2B, 0.05);
    p.pressed = rgb(0x0E1F2B, 0.09);
    p.scrim = rgb(0xECEFF1, 0.9);
    p.dim = rgb(0x0C161D, 0.26);
    p.glass = rgb(0xFBFDFD, 0.98);
    p.panel = rgb(0xFBFDFD, 1);
    p.glassTop = rgb(0xFFFFFF, 0.95);
    p.glassEdge = rgb(0x0E1F2B, 0.105);
    p.marqueeFill = rgb(0x007585, 0.1);
    p.marqueeEdge = rgb(0x007585, 0.85);
    p.textSelection = rgb(0x007585, 0.2);
    p.peekGloss = rgb(0xFFFFFF, 0.62);

    // fill, deep, edge, ink, inkSoft, solid, tint
    p.nodes = {{
        // gray
        {rgb(0xD8DFE4), rgb(0xB3BEC4), rgb(0xA0ABB1), rgb(0x2C373D), rgb(0x455259), rgb(0x89949A),
            rgb(0xF1F4F5)},
        // brown
        {rgb(0xEDD1BF), rgb(0xD0AE97), rgb(0xBE9B83), rgb(0x463021), rgb(0x644937), rgb(0x9B6F52),
            rgb(0xFBF1EB)},
        // orange
        {rgb(0xFFD7BA), rgb(0xEDAE7F), rgb(0xDB9B69), rgb(0x512A04), rgb(0x72431A), rgb(0xCE7B31),
            rgb(0xFEF1E7)},
        // yellow
        {rgb(0xFBE5A2), rgb(0xDEC26A), rgb(0xCCAF50), rgb(0x423401), rgb(0x614E06), rgb(0xD6B442),
            rgb(0xFBF3DD)},
        // green
        {rgb(0xC1EDCB), rgb(0x96CDA4), rgb(0x81BB90), rgb(0x183F24), rgb(0x2D5B3B), rgb(0x46A968),
            rgb(0xE9F8EC)},
        // blue
        {rgb(0xC7E3FF), rgb(0x99C2EA), rgb(0x85B0D9), rgb(0x1C3851), rgb(0x325372), rgb(0x4598E0),
            rgb(0xEBF5FF)},
        // purple
        {rgb(0xE5D8FF), rgb(0xC5B3E7), rgb(0xB2A0D5), rgb(0x3A2E4F), rgb(0x55476F), rgb(0x9F7DD8),
            rgb(0xF5F1FE)},
        // pink
        {rgb(0xFED1E3), rgb(0xE5AAC3), rgb(0xD396B0), rgb(0x4D2839), rgb(0x6D3F54), rgb(0xCF6D9B),
            rgb(0xFEEFF5)},
        // red
        {rgb(0xFED4D1), rgb(0xEFA8A5), rgb(0xDE9491), rgb(0x522626), rgb(0x743E3D), rgb(0xD86D6C),
            rgb(0xFFEFEE)},
    }};
    return p;
}

Palette darkPalette()
{
    Palette p;
    p.scheme = Scheme::Dark;

    p.ground = rgb(0x13181A);
    p.dot = rgb(0x31383C);
    p.groundShade = rgb(0x0C1113);
    p.surface = rgb(0x1E2428);
    p.sunken = rgb(0x171D20);
    p.raised = rgb(0x262D31);
    p.field = rgb(0x2F373C);
    p.paper = rgb(0xE6E9EA);
    p.peek = rgb(0x373E42);

    p.ink = rgb(0xEAEDF0);
    p.ink2 = rgb(0xB8BFC3);
    p.ink3 = rgb(0x9CA5A9);
    p.ink4 = rgb(0x616B70);

    p.inverse = rgb(0xE2E7E9);
    p.onInverse = rgb(0x152025);
    p.inverseInk2 = rgb(0x444F55);
    p.inverseAction = rgb(0x025A69);

    p.accent = rgb(0x54C7D7);
    p.accentHover = rgb(0x6DD4E4);
    p.accentPressed = rgb(0x40B5C6);
    p.onAccent = rgb(0x04191F);
    p.accentSoft = rgb(0x163D44);
    p.accentSofter = rgb(0x1C2F33);
    p.accentInk = rgb(0x86DDE7);

    p.danger = rgb(0xF06C65);
    p.dangerHover = rgb(0xF98078);
    p.onDanger = rgb(0x230C0A);
    p.dangerSoft = rgb(0x4F2423);
    p.dangerInk = rgb(0xFDA19E);
    p.good = rgb(0x6ACC92);
    p.warn = rgb(0xE9B15E);
    p.mark = rgb(0x654E09);
    p.markInk = rgb(0xFCF2CD);

    p.hairline = rgb(0xDCEBF5, 0.105);
    p.hairlineStrong = rgb(0xDCEBF5, 0.19);
    p.hairlineFaint = rgb(0xDCEBF5, 0.06);
    p.hover = rgb(0xDCEBF5, 0.06);
    p.pressed = rgb(0xDCEBF5, 0.105);
    p.scrim = rgb(0x13181A, 0.91);
    p.dim = rgb(0x000000, 0.55);
    p.glass = rgb(0x262D31, 0.985);
    p.panel = rgb(0x262D31, 1);
    p.glassTop = rgb(0xFFFFFF, 0.095);
    p.glassEdge = rgb(0x000000, 0.42);
    p.marqueeFill = rgb(0x54C7D7, 0.13);
    p.marqueeEdge = rgb(0x54C7D7, 0.85);
    p.textSelection = rgb(0x54C7D7, 0.28);
    p.peekGloss = rgb(0xFFFFFF, 0.13);

    // fill, deep, edge, ink, inkSoft, solid, tint
    p.nodes = {{
        // gray
        {rgb(0x3E4549), rgb(0x2A3034), rgb(0x5A6266), rgb(0xEEF0F2), rgb(0xC3C8CB), rgb(0x9AA7AE),
            rgb(0x2B2E2F)},
        // brown
        {rgb(0x4E4037), rgb(0x382C25), rgb(0x725B4C), rgb(0xF6EEE9), rgb(0xD5C4B8), rgb(0xAC8266),
            rgb(0x342B26)},
        // orange
        {rgb(0x5D3B1F), rgb(0x432811), rgb(0x7F5636), rgb(0xFCEDE3), rgb(0xDFC1AA), rgb(0xDE8F4F),
            rgb(0x392A1E)},
        // yellow
        {rgb(0x574710), rgb(0x3B2E00), rgb(0x715F20), rgb(0xF5F0E0), rgb(0xD3C7A3), rgb(0xE1C15D),
            rgb(0x342D18)},
        // green
        {rgb(0x2D4C35), rgb(0x1C3623), rgb(0x466B4F), rgb(0xE8F4EA), rgb(0xB5CFBB), rgb(0x62BB7D),
            rgb(0x243127)},
        // blue
        {rgb(0x2F465C), rgb(0x1E3143), rgb(0x48637D), rgb(0xE8F1FA), rgb(0xB6CADD), rgb(0x60ABEF),
            rgb(0x252E38)},
        // purple
        {rgb(0x483E5A), rgb(0x322A41), rgb(0x65597B), rgb(0xF2EEFA), rgb(0xCAC3DC), rgb(0xB192E7),
            rgb(0x2F2B37)},
        // pink
        {rgb(0x593846), rgb(0x402631), rgb(0x7A5364), rgb(0xFAECF1), rgb(0xDCBECA), rgb(0xE082AD),
            rgb(0x37282F)},
        // red
        {rgb(0x5E3736), rgb(0x442524), rgb(0x805250), rgb(0xFDECEB), rgb(0xE1BDBB), rgb(0xE88381),
            rgb(0x3A2827)},
    }};
    return p;
}

template<std::size_t N>
using Layers = std::array<ShadowLayer, N>;

// Every height is two layers of one colour: a near one that grounds the edge and a wide one that
// lifts.
struct Height
{
    Layers<2> light, dark;
};

Height height(double dy1, double blur1, double light1, double dark1, double dy2, double blur2,
    double light2, double dark2)
{
    constexpr unsigned int mist = 0x10222E, night = 0x000000;
    return {{{{dy1, blur1, rgb(mist, light1)}, {dy2, blur2, rgb(mist, light2)}}},
        {{{dy1, blur1, rgb(night, dark1)}, {dy2, blur2, rgb(night, dark2)}}}};
}

const std::array<Height, 12>& heights()
{
    static const std::array<Height, 12> table = {
        height(1, 2, 0.07, 0.34, 4, 14, 0.055, 0.26), // rest
        height(2, 4, 0.08, 0.38, 10, 26, 0.1, 0.4),   // hover
        height(1, 2, 0.02, 0.06, 10, 26, 0.075,
            0.26), // on top of the shadow of rest it comes to that of hover
        height(1, 1, 0.08, 0.34, 2, 6, 0.05, 0.22),   // pressed
        height(4, 10, 0.11, 0.42, 22, 48, 0.2, 0.56), // drag
        height(1, 3, 0.08, 0.36, 8, 24, 0.095, 0.38), // glass
        height(2, 6, 0.08, 0.38, 24, 64, 0.2, 0.6),   // panel
        height(1, 3, 0.08, 0.36, 16, 48, 0.14, 0.46), // sheet
        height(0, 0, 0, 0, 2, 10, 0.22, 0.5),         // hint
        height(0, 0, 0, 0, 1, 4, 0.14, 0.4),          // peek
        height(0, 0, 0, 0, 2, 8, 0.1, 0.1),           // paper
        height(0, 0, 0, 0, 1, 2, 0.06, 0.2),          // far
    };
    return table;
}

constexpr TypeFamily text = TypeFamily::Text, display = TypeFamily::Display,
                     mono = TypeFamily::Mono, sheet = TypeFamily::Sheet;

// In the order of TypeStyle.
constexpr std::array<TypeSpec, static_cast<std::size_t>(TypeStyle::FarPageTitle) + 1> typeTable = {{
    {34, 42, 700, -0.022, display},  // PageTitle
    {27, 36, 600, -0.018, display},  // H1
    {21, 30, 600, -0.014, display},  // H2
    {17, 26, 600, -0.008, text},     // H3
    {15, 24, 600, -0.004, text},     // H4
    {15, 25, 400, -0.003, text},     // PageBody
    {13, 21, 400, 0, mono},          // PageCode
    {20, 28, 600, -0.014, display},  // ScreenTitle
    {15, 22, 600, -0.006, text},     // AlertTitle
    {18, 26, 400, -0.01, text},      // PalettePrompt
    {13.5, 20, 400, -0.002, text},   // Body
    {13.5, 20, 600, -0.003, text},   // BodyStrong
    {13, 18, 500, 0, text},          // Label
    {13, 18, 600, 0, text},          // LabelStrong
    {13, 20, 400, 0, text},          // LabelText
    {12, 16, 400, 0.002, text},      // Small
    {12, 16, 600, 0.002, text},      // SmallStrong
    {11, 16, 500, 0.006, text},      // Caption
    {11, 16, 500, 0.01, text},       // Key
    {11, 18, 500, 0.01, text},       // KeyCap
    {11, 16, 500, 0.004, text},      // DockLabel
    {12.5, 30, 500, 0, text},        // Hint
    {13, 18, 400, 0, sheet},         // SheetCell
    {13.5, 18, 600, -0.006, text},   // CardTitle
    {10.5, 15.5, 400, -0.006, text}, // CardText
    {11, 15.5, 600, -0.006, text},   // CardHeading
    {9.5, 14, 400, 0, mono},         // CardCode
    {10.5, 13, 500, 0.004, text},    // CardMeta
    {8.5, 13, 700, 0.05, text},      // Badge
    {14.5, 19, 600, -0.008, text},   // FolderTitle
    {11, 14, 500, 0.004, text},      // FolderCount
    {12, 15.5, 600, -0.002, text},   // FileTitle
    {8.5, 13, 400, 0, mono},         // SheetText
    {12.5, 17, 600, -0.003, text},   // LinkTitle
    {10.5, 15, 500, 0, text},        // LinkHost
    {8, 12, 700, 0, text},           // SiteMark
    {11.5, 16, 600, 0, text},        // FanTitle
    {10.5, 13, 600, 0, text},        // FarTitle
    {9, 11, 600, 0, text},           // FarPageTitle
}};

} // namespace

const Palette& palette(Scheme scheme)
{
    static const Palette light = lightPalette();
    static const Palette dark = darkPalette();
    return scheme == Scheme::Dark ? dark : light;
}

NodeColor badgeColor(QStringView badge)
{
    struct Entry
    {
        QLatin1StringView badge;
        NodeColor color;
    };
    static constexpr Entry table[] = {
        {QLatin1StringView("PDF"), NodeColor::Red},
        {QLatin1StringView("DOC"), NodeColor::Blue},
        {QLatin1StringView("XLS"), NodeColor::Green},
        {QLatin1StringView("PPT"), NodeColor::Orange},
        {QLatin1StringView("ZIP"), NodeColor::Brown},
        {QLatin1StringView("AUD"), NodeColor::Purple},
        {QLatin1StringView("VID"), NodeColor::Pink},
        {QLatin1StringView("EML"), NodeColor::Yellow},
    };
    for (const Entry& entry : table) {
        if (badge == entry.badge)
            return entry.color;
    }
    return NodeColor::Gray;
}

std::span<const ShadowLayer> shadowLayers(Elevation elevation, Scheme scheme)
{
    const Height& found = heights()[static_cast<std::size_t>(elevation)];
    return scheme == Scheme::Dark ? found.dark : found.light;
}

const TypeSpec& typeSpec(TypeStyle style)
{
    return typeTable[static_cast<std::size_t>(style)];
}

} // namespace corvelle
