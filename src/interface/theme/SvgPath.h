// Reads the path notation of SVG, which our outlines are drawn in.
#pragma once

#include <QPainterPath>

#include <string_view>

namespace corvelle {

// Knows M L H V C S Q A Z in both cases, with arcs that aren't rotated. For paths that stand in the
// code: one that breaks the notation asserts, and ends where it breaks.
QPainterPath svgPath(std::string_view text);

} // namespace corvelle
