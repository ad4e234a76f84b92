#include "interface/canvas/CardFace.h"

#include "interface/canvas/FaceBrush.h"
#include "interface/canvas/FolderShape.h"
#include "interface/theme/Icons.h"
#include "interface/theme/Shadows.h"

#include <QPainterPath>

#include <cmath>

namespace corvelle {
namespace {

QPainterPath rounded(const QRectF& box, double radius)
{
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    return path;
}

// A translucent line downward. The toolkit hands a fill of many rows to other threads and waits for
// them, which takes longer than the whole card; short pieces it fills at once.
void fillColumn(
    QPainter& painter, double x, double top, double bottom, double width, const QColor& color)
{
    constexpr double mostRows = 64;
    const double step = std::floor(mostRows / painter.device()->devicePixelRatio());
    for (double y = top; y < bottom; y += step)
        painter.fillRect(QRectF(x, y, width, std::min(step, bottom - y)), color);
}

// A hairline inside the edge. Its sides are filled boxes and only its corners are curves: stroking
// the whole outline costs ten times as much.
void drawHairline(QPainter& painter, const QRectF& box, double radius, const QColor& color)
{
    constexpr double width = 1;
    // The curves end on whole pixels, so that no piece overlaps another.
    const double r = std::ceil(std::max(width, radius));
    painter.fillRect(QRectF(box.left() + r, box.top(), box.width() - 2 * r, width), color);
    painter.fillRect(
        QRectF(box.left() + r, box.bottom() - width, box.width() - 2 * r, width), color);
    fillColumn(painter, box.left(), box.top() + r, box.bottom() - r, width, color);
    fillColumn(painter, box.right() - width, box.top() + r, box.bottom() - r, width, color);

    const QRectF corners[] = {{box.left(), box.top(), r, r}, {box.right() - r, box.top(), r, r},
        {box.right() - r, box.bottom() - r, r, r}, {box.left(), box.bottom() - r, r, r}};
    const QPainterPath ring =
        rounded(box, radius) - rounded(box.adjusted(width, width, -width, -width), radius - width);
    for (const QRectF& corner : corners) {
        painter.save();
        painter.setClipRect(corner, Qt::IntersectClip);
        painter.fillPath(ring, color);
        painter.restore();
    }
}

void strokeInside(QPainter& painter, const QRectF& box, double radius, const QPen& pen)
{
    const double half = pen.widthF() / 2;
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(box.adjusted(half, half, -half, -half), radius - half, radius - half);
}

// The colour that a translucent one gives on an opaque one.
QColor over(const QColor& below, const QColor& above)
{
    const float share = above.alphaF();
    const auto mix = [share](float a, float b) { return a + (b - a) * share; };
    return QColor::fromRgbF(mix(below.redF(), above.redF()), mix(below.greenF(), above.greenF()),
        mix(below.blueF(), above.blueF()));
}

QPen missingPen(const Palette& colors)
{
    QPen pen(colors.ink4, 1.5);
    pen.setDashPattern({3, 2});
    pen.setCapStyle(Qt::FlatCap);
    return pen;
}

void drawContent(const FaceBrush& brush, const CardFace& face)
{
    if (brush.detail == Detail::Far) {
        drawFarFace(brush, face);
        return;
    }
    switch (face.kind) {
    case CardFace::Kind::Folder:
        drawFolderFace(brush, face);
        break;
    case CardFace::Kind::Page:
        drawPageFace(brush, face);
        break;
    case CardFace::Kind::File:
        drawFileFace(brush, face);
        break;
    case CardFace::Kind::Picture:
        drawPictureFace(brush, face);
        break;
    case CardFace::Kind::Link:
        drawLinkFace(brush, face);
        break;
    }
}

// The surface with its shadow, the content cut to its corners, the hairline over all.
void drawSurface(const FaceBrush& brush, const CardFace& face)
{
    QPainter& painter = brush.painter;
    const Palette& colors = brush.colors;
    const bool far = brush.detail == Detail::Far;
    const double radius = cornerRadius(face.kind, brush.scale);
    if (!face.missing)
        drawShadow(
            painter, brush.card, radius, far ? Elevation::Far : Elevation::Rest, colors.scheme);
    const QPainterPath outline = rounded(brush.card, radius);
    painter.fillPath(outline, face.missing ? colors.ground : colors.surface);

    painter.save();
    painter.setClipPath(outline);
    drawContent(brush, face);
    painter.restore();
    if (face.missing) {
        strokeInside(painter, brush.card, radius, missingPen(colors));
        return;
    }
    // From far the line goes round the card, where it shows on the white of pages too.
    const double out = far ? 1 : 0;
    drawHairline(painter, brush.card.adjusted(-out, -out, out, out), radius + out, colors.hairline);
}

// The way round a folder at a distance, as its stroker's outer edge.
QPainterPath outerEdge(const QPainterPath& silhouette, double distance)
{
    QPainterPathStroker stroker;
    stroker.setWidth(2 * distance);
    stroker.setJoinStyle(Qt::RoundJoin);
    QPainterPath edge;
    double widest = 0;
    const QPainterPath both = stroker.createStroke(silhouette);
    QPainterPath current;
    const auto keepWidest = [&] {
        if (current.boundingRect().width() > widest) {
            widest = current.boundingRect().width();
            edge = current;
        }
        current = QPainterPath();
    };
    for (int i = 0; i < both.elementCount(); ++i) {
        const QPainterPath::Element element = both.elementAt(i);
        if (element.isMoveTo()) {
            keepWidest();
            current.moveTo(element);
        } else if (element.isLineTo()) {
            current.lineTo(element);
        } else if (element.isCurveTo()) {
            current.cubicTo(element, both.elementAt(i + 1), both.elementAt(i + 2));
            i += 2;
        }
    }
    keepWidest();
    return edge;
}

} // namespace

QImage drawCardFace(const CardFace& face, Scheme scheme, double scale, double devicePixelRatio)
{
    const double ratio = std::max(1.0, devicePixelRatio);
    const int margin = static_cast<int>(std::ceil(faceMargin(scale) * ratio));
    const int width = std::max(1, static_cast<int>(std::lround(face.size.width() * scale * ratio)));
    const int height =
        std::max(1, static_cast<int>(std::lround(face.size.height() * scale * ratio)));

    QImage image(width + 2 * margin, height + 2 * margin, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card(margin / ratio, margin / ratio, width / ratio, height / ratio);
    const FaceBrush brush{painter, palette(scheme), scale, detailAt(scale), card};
    if (face.kind == CardFace::Kind::Folder)
        drawContent(brush, face);
    else
        drawSurface(brush, face);
    return image;
}

int faceMargin(double scale)
{
    return shadowReach(detailAt(scale) == Detail::Far ? Elevation::Far : Elevation::Rest);
}

double cornerRadius(CardFace::Kind kind, double scale)
{
    if (detailAt(scale) == Detail::Far && kind != CardFace::Kind::Folder)
        return radius::farCard;
    switch (kind) {
    case CardFace::Kind::Folder:
        return radius::folderPt * scale;
    case CardFace::Kind::Page:
        return radius::pagePt * scale;
    case CardFace::Kind::File:
        return radius::filePt * scale;
    case CardFace::Kind::Picture:
        return radius::picturePt * scale;
    case CardFace::Kind::Link:
        return radius::linkPt * scale;
    }
    return 0;
}

void plainCard(QPainter& painter, const QRectF& card, CardFace::Kind kind, NodeColor color,
    double scale, const Palette& colors)
{
    painter.setRenderHint(QPainter::Antialiasing);
    if (kind != CardFace::Kind::Folder) {
        const double radius = cornerRadius(kind, scale);
        painter.fillPath(rounded(card, radius), over(colors.surface, colors.hairline));
        painter.fillPath(rounded(card.adjusted(1, 1, -1, -1), radius - 1), colors.surface);
        return;
    }
    const NodeTones& tones = colors.tones(color);
    painter.save();
    painter.translate(card.topLeft());
    painter.scale(card.width() / folderWidthPt, card.height() / folderHeightPt);
    painter.fillPath(folderBack(), tones.deep);
    painter.fillPath(
        folderPocket(detailAt(scale) == Detail::Far ? farPocketTopPt : pocketTopPt), tones.fill);
    painter.restore();
}

void paintRing(QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale,
    const Palette& colors, Ring ring)
{
    constexpr double width = 2.5, gap = 2.5;
    constexpr double distance = gap + width / 2; // of the line's middle
    QPen pen(colors.accent, width);
    if (ring == Ring::Focused) {
        pen.setDashPattern({6 / width, 4 / width});
        pen.setCapStyle(Qt::FlatCap);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (kind == CardFace::Kind::Folder) {
        painter.strokePath(outerEdge(folderSilhouette(card), distance), pen);
    } else {
        const double radius = cornerRadius(kind, scale) + distance;
        painter.strokePath(
            rounded(card.adjusted(-distance, -distance, distance, distance), radius), pen);
    }
    painter.restore();
}

void paintHoverLift(
    QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale, const Palette& colors)
{
    if (kind == CardFace::Kind::Folder)
        drawShadow(painter, folderSilhouette(card), Elevation::HoverLift, colors.scheme);
    else
        drawShadow(painter, card, cornerRadius(kind, scale), Elevation::HoverLift, colors.scheme);
}

QRectF moreButton(const QRectF& card, CardFace::Kind kind, double scale)
{
    const double side = 26 * scale, inset = 8 * scale;
    const double top = kind == CardFace::Kind::Folder ? 94 * scale : inset;
    return {card.right() - inset - side, card.top() + top, side, side};
}

void paintHover(
    QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale, const Palette& colors)
{
    if (detailAt(scale) == Detail::Far || kind == CardFace::Kind::Folder)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    drawHairline(painter, card, cornerRadius(kind, scale), colors.hairline);
    painter.restore();
}

void paintMoreButton(QPainter& painter, const QRectF& card, CardFace::Kind kind, NodeColor color,
    double scale, const Palette& colors)
{
    if (detailAt(scale) == Detail::Far)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF button = moreButton(card, kind, scale);
    const double radius = 8 * scale;
    const double inset = 5 * scale; // the sign is 16 of the button's 26
    const QRectF sign = button.adjusted(inset, inset, -inset, -inset);
    if (kind == CardFace::Kind::Folder) {
        const bool dark = colors.scheme == Scheme::Dark;
        painter.fillPath(rounded(button, radius), QColor(255, 255, 255, dark ? 31 : 140));
        drawIcon(painter, Icon::More, sign, dark ? colors.ink : colors.tones(color).ink);
    } else {
        drawShadow(painter, button, radius, Elevation::Peek, colors.scheme);
        painter.fillPath(rounded(button.adjusted(-1, -1, 1, 1), radius + 1), colors.glassEdge);
        painter.fillPath(rounded(button, radius), colors.glass);
        drawIcon(painter, Icon::More, sign, colors.ink2);
    }
    painter.restore();
}

} // namespace corvelle
