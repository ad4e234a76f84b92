#include "interface/canvas/FaceBrush.h"
#include "interface/theme/Icons.h"

namespace corvelle {
namespace {

constexpr double linkWidthPt = 240, shotPt = 94, padPt = 13, markPt = 12;

void drawShot(const FaceBrush& brush, const CardFace& face)
{
    const QRectF shot = brush.sharp(0, 0, linkWidthPt, shotPt);
    const QPointF centre = shot.center();
    if (!face.picture.isNull() && !face.missing) {
        brush.picture(shot, face.picture, FaceBrush::Crop::Top);
        if (brush.isDark())
            brush.fill(shot, QColor(16, 21, 24, 26));
        return;
    }
    if (!face.missing)
        brush.fill(shot, brush.colors.sunken);
    brush.hatch(shot);
    const double side = brush.px(face.missing ? 34 : 30);
    drawIcon(brush.painter, face.missing ? Icon::Help : Icon::Globe,
        QRectF(centre.x() - side / 2, centre.y() - side / 2, side, side),
        face.missing ? brush.colors.ink3 : brush.colors.ink4);
}

} // namespace

void drawSiteMark(const FaceBrush& brush, QPointF topLeft, const CardFace& face)
{
    const NodeTones& tones = brush.colors.tones(face.color);
    const QRectF box(topLeft, QSizeF(brush.px(markPt), brush.px(markPt)));
    brush.fillRounded(box, brush.px(radius::badgePt), tones.fill);
    brush.painter.setPen(tones.ink);
    brush.lettering(TypeStyle::SiteMark)
        .draw(brush.painter, box, Qt::AlignHCenter, face.host.left(1).toUpper());
}

void drawLinkFace(const FaceBrush& brush, const CardFace& face)
{
    drawShot(brush, face);
    const QRectF line = brush.sharp(0, shotPt, linkWidthPt, 1);
    brush.fill(QRectF(line.topLeft(), brush.card.bottomRight()),
        face.missing ? brush.colors.ground : brush.colors.surface);
    brush.fill(QRectF(line.left(), line.top(), line.width(), 1), brush.colors.hairlineFaint);

    const Lettering title = brush.lettering(TypeStyle::LinkTitle, leastTitlePixels);
    QRectF box = brush.box(padPt, shotPt + 10, linkWidthPt - 2 * padPt, 17);
    box.setHeight(title.lineHeight());
    brush.text(title, box, face.missing ? brush.colors.ink2 : brush.colors.ink, face.title);
    if (brush.detail != Detail::Full)
        return;

    const double hostTop = shotPt + 30, hostLine = 15, gap = 6;
    const double x = face.host.isEmpty() ? padPt : padPt + markPt + gap;
    if (!face.host.isEmpty())
        drawSiteMark(
            brush, brush.box(padPt, hostTop + (hostLine - markPt) / 2, 0, 0).topLeft(), face);
    brush.text(brush.lettering(TypeStyle::LinkHost),
        brush.box(x, hostTop, linkWidthPt - padPt - x, hostLine),
        face.missing ? brush.colors.warn : brush.colors.ink3, face.missing ? face.meta : face.host);
}

void drawPictureFace(const FaceBrush& brush, const CardFace& face)
{
    if (!face.picture.isNull() && !face.missing) {
        brush.picture(brush.card, face.picture);
        return;
    }
    if (face.missing)
        brush.hatch(brush.card);
    else
        brush.fill(brush.card, brush.colors.sunken);
    const double side = brush.px(34);
    const QPointF centre = brush.card.center();
    drawIcon(brush.painter, face.missing ? Icon::Help : Icon::Image,
        QRectF(centre.x() - side / 2, centre.y() - side / 2, side, side),
        face.missing ? brush.colors.ink3 : brush.colors.ink4);
    if (!face.missing || brush.detail != Detail::Full)
        return;
    // With nothing to see the picture is told by its name.
    const QSizeF size = face.size;
    brush.text(brush.lettering(TypeStyle::FileTitle),
        brush.box(12, size.height() - 44, size.width() - 24, 15.5), brush.colors.ink2, face.title,
        titleElision(face.title));
    brush.text(brush.lettering(TypeStyle::CardMeta),
        brush.box(12, size.height() - 24, size.width() - 24, 13), brush.colors.warn, face.meta);
}

} // namespace corvelle
