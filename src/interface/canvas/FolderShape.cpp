#include "interface/canvas/FolderShape.h"

#include "interface/theme/SvgPath.h"

#include <QTransform>

namespace corvelle {

const QPainterPath& folderBack()
{
    static const QPainterPath path =
        svgPath("M0 162V12A12 12 0 0 1 12 0H70c5.2 0 8.6 1.9 11.6 5.2l3.6 4c2.5 2.7 4.7 3.8 8.3 "
                "3.8H210a14 14 0 0 1 14 14"
                "V162a14 14 0 0 1-14 14H14a14 14 0 0 1-14-14Z");
    return path;
}

QPainterPath folderPocket(double top)
{
    constexpr double upper = 13, lower = 14; // radii
    QPainterPath path(QPointF(0, top + upper));
    path.arcTo(QRectF(0, top, 2 * upper, 2 * upper), 180, -90);
    path.arcTo(QRectF(folderWidthPt - 2 * upper, top, 2 * upper, 2 * upper), 90, -90);
    path.arcTo(QRectF(folderWidthPt - 2 * lower, folderHeightPt - 2 * lower, 2 * lower, 2 * lower),
        0, -90);
    path.arcTo(QRectF(0, folderHeightPt - 2 * lower, 2 * lower, 2 * lower), 270, -90);
    path.closeSubpath();
    return path;
}

QPainterPath folderSilhouette(const QRectF& card)
{
    return QTransform::fromTranslate(card.x(), card.y())
        .scale(card.width() / folderWidthPt, card.height() / folderHeightPt)
        .map(folderBack());
}

} // namespace corvelle
