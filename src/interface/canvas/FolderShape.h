// The outlines of a folder's card, in canvas points unless they are asked for on screen.
#pragma once

#include <QPainterPath>

namespace corvelle {

inline constexpr double folderWidthPt = 224, folderHeightPt = 176;

// The whole silhouette, with the tab.
const QPainterPath& folderBack();

// The pocket in front, beginning at `top`.
inline constexpr double pocketTopPt = 86, farPocketTopPt = 62, smallPocketTopPt = 47;
QPainterPath folderPocket(double top = pocketTopPt);

// The silhouette of the card that fills the box.
QPainterPath folderSilhouette(const QRectF& card);

} // namespace corvelle
