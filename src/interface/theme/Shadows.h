// Soft shadows: nine-part pictures for rounded boxes, whole pictures for other silhouettes. Made
// once, kept, any thread.
#pragma once

#include "interface/theme/Theme.h"

class QPainter;
class QPainterPath;
class QRectF;

namespace corvelle {

// How far the shadow reaches beyond what throws it, in whole logical pixels.
int shadowReach(Elevation elevation);

// Draws only the shadow; what throws it is painted over it. The box may be of any size: the picture
// is stretched where it doesn't change, and made anew for boxes too narrow for that.
void drawShadow(
    QPainter& painter, const QRectF& box, double radius, Elevation elevation, Scheme scheme);

// The same for a silhouette in the painter's coordinates. Kept by shape: meant for a few shapes
// that return often.
void drawShadow(
    QPainter& painter, const QPainterPath& silhouette, Elevation elevation, Scheme scheme);

} // namespace corvelle
