// The tokens of the look: every colour, height, radius, duration and text size that the interface
// draws with.
//
// Constant tables, any thread. Sizes are logical pixels unless a name says canvas points ("Pt").
#pragma once

#include "base/NodeKind.h"

#include <QColor>
#include <QPointF>

#include <array>
#include <cstddef>
#include <span>

namespace corvelle {

enum class Scheme : unsigned char { Light, Dark };

// The colours that one node colour brings along. Text on `fill` uses only `ink` and `inkSoft`.
struct NodeTones
{
    QColor fill; // the folder's pocket, a badge, a site's mark
    QColor deep; // the folder's back
    QColor edge; // its outline, drawn at 55 %
    QColor ink;
    QColor inkSoft;
    QColor solid; // swatches, waveforms, marks seen from far
    QColor tint;  // large quiet areas
};

struct Palette
{
    Scheme scheme = Scheme::Light;

    // Areas, from the lowest to the highest.
    QColor ground, dot, groundShade, surface, sunken, raised, field, paper, peek;

    // Ink. The fourth level is for marks, never for text.
    QColor ink, ink2, ink3, ink4;

    // Toasts and hints.
    QColor inverse, onInverse, inverseInk2, inverseAction;

    // The one accent: selected, focused, or the thing to press.
    QColor accent, accentHover, accentPressed, onAccent, accentSoft, accentSofter, accentInk;

    // Signals.
    QColor danger, dangerHover, onDanger, dangerSoft, dangerInk, good, warn, mark, markInk;

    // Laid over what is below.
    QColor hairline, hairlineStrong, hairlineFaint, hover, pressed, scrim, dim, glass, panel,
        glassTop, glassEdge, marqueeFill, marqueeEdge, textSelection, peekGloss;

    std::array<NodeTones, allNodeColors.size()> nodes;

    const NodeTones& tones(NodeColor color) const { return nodes[static_cast<std::size_t>(color)]; }
};

const Palette& palette(Scheme scheme);

// The node colour of a file's badge: "PDF" is red. Gray for what has none of its own.
NodeColor badgeColor(QStringView badge);

// How high something lies. Far is for cards seen from far; HoverLift is what a raised card adds to
// the shadow of rest.
enum class Elevation : unsigned char {
    Rest,
    Hover,
    HoverLift,
    Pressed,
    Drag,
    Glass,
    Panel,
    Sheet,
    Hint,
    Peek,
    Paper,
    Far
};

// One soft shadow. `blur` is twice the standard deviation, as in CSS; all layers of an elevation
// share their colour.
struct ShadowLayer
{
    double dy = 0;
    double blur = 0;
    QColor color;
};

std::span<const ShadowLayer> shadowLayers(Elevation elevation, Scheme scheme);

namespace radius {
inline constexpr double control = 8, button = 9, chip = 6, badgePt = 3.5, peekPt = 5, hint = 9;
inline constexpr double pagePt = 10, filePt = 10, picturePt = 10, linkPt = 12, folderPt = 14;
inline constexpr double farCard = 4;
inline constexpr double bar = 14, zoom = 12, menu = 12, toast = 12, panel = 16, alert = 18,
                        sheet = 16;
} // namespace radius

namespace motion {

// A cubic Bézier curve from (0, 0) to (1, 1).
struct Curve
{
    QPointF first, second;
};

inline constexpr Curve out = {{0.22, 1}, {0.36, 1}};
inline constexpr Curve inOut = {{0.65, 0}, {0.35, 1}};
inline constexpr int tapMs = 90, quickMs = 150, baseMs = 220, glideMs = 320;
inline constexpr int spreadMs = 300, foldBackMs = 210, settleMs = 450;
inline constexpr int toastHoldMs = 4200, toastHoldWithActionMs = 7000;
inline constexpr int hintDelayMs = 500, spinnerDelayMs = 350;

} // namespace motion

enum class TypeStyle : unsigned char {
    PageTitle,
    H1,
    H2,
    H3,
    H4,
    PageBody,
    PageCode,
    ScreenTitle,
    AlertTitle,
    PalettePrompt,
    Body,
    BodyStrong,
    Label,
    LabelStrong,
    LabelText,
    Small,
    SmallStrong,
    Caption,
    Key,
    KeyCap,
    DockLabel,
    Hint,
    SheetCell,
    CardTitle,
    CardText,
    CardHeading,
    CardCode,
    CardMeta,
    Badge,
    FolderTitle,
    FolderCount,
    FileTitle,
    SheetText,
    LinkTitle,
    LinkHost,
    SiteMark,
    FanTitle,
    FarTitle,
    FarPageTitle
};

enum class TypeFamily : unsigned char { Text, Display, Mono, Sheet };

// Styles of cards (Card…, Folder…, File…, Link…, Badge, SheetText, SiteMark) are in canvas points
// and grow with the camera; FarTitle and FarPageTitle stand at their size on screen.
struct TypeSpec
{
    double size = 13;
    double line = 18;    // from baseline to baseline
    int weight = 400;    // as in CSS and in QFont
    double tracking = 0; // em
    TypeFamily family = TypeFamily::Text;
};

const TypeSpec& typeSpec(TypeStyle style);

} // namespace corvelle
