#include "interface/canvas/FaceBrush.h"
#include "interface/canvas/FolderShape.h"
#include "interface/theme/Icons.h"
#include "interface/theme/Shadows.h"

#include <QPainterPath>

#include <array>

namespace corvelle {
namespace {

using Peek = CardFace::Peek;

constexpr double peekWidthPt = 60, peekHeightPt = 80, peekClipPt = 90;
constexpr double missingLine = 1.5;

struct PeekPlace
{
    double x, y, tilt;
};

std::vector<PeekPlace> peekPlaces(std::size_t count)
{
    if (count == 1)
        return {{82, 25, -2.2}};
    if (count == 2)
        return {{48, 25, -2.2}, {116, 21, 0}};
    return {{17, 25, -2.2}, {82, 21, 0}, {147, 27, 2.2}};
}

// Draws what looks out of a folder, on a small sheet whose origin is its upper left corner.
class PeekPainter
{
public:
    PeekPainter(const FaceBrush& brush, QPointF origin)
        : m_brush(brush)
        , m_origin(origin)
    {}

    void draw(const Peek& peek) const
    {
        const QRectF sheet = at(0, 0, peekWidthPt, peekHeightPt);
        QPainterPath outline;
        outline.addRoundedRect(sheet, m_brush.px(radius::peekPt), m_brush.px(radius::peekPt));
        drawShadow(m_brush.painter, outline, Elevation::Peek, m_brush.colors.scheme);
        drawEdge(sheet);

        QPainter& painter = m_brush.painter;
        painter.save();
        painter.setClipPath(outline, Qt::IntersectClip);
        painter.fillRect(sheet.adjusted(-1, -1, 1, 1), ground(peek));
        drawContent(peek);
        painter.restore();
    }

private:
    QRectF at(double x, double y, double width, double height) const
    {
        return {m_origin.x() + m_brush.px(x), m_origin.y() + m_brush.px(y), m_brush.px(width),
            m_brush.px(height)};
    }

    QColor ground(const Peek& peek) const
    {
        if (peek.kind == Peek::Kind::File)
            return Qt::white;
        return peek.kind == Peek::Kind::Folder ? m_brush.colors.sunken : m_brush.colors.peek;
    }

    void drawEdge(const QRectF& sheet) const
    {
        const QColor edge = m_brush.isDark() ? QColor(0, 0, 0, 89) : QColor(14, 31, 43, 26);
        const double line = m_brush.px(1);
        m_brush.fillRounded(
            sheet.adjusted(-line, -line, line, line), m_brush.px(radius::peekPt) + line, edge);
    }

    void drawContent(const Peek& peek) const
    {
        const bool pictured = !peek.picture.isNull();
        switch (peek.kind) {
        case Peek::Kind::Page:
            drawBars({30, 44, 40, 43, 34, 42, 38}, 8);
            break;
        case Peek::Kind::Todo:
            drawTodos();
            break;
        case Peek::Kind::Picture:
            if (pictured)
                m_brush.picture(at(0, 0, peekWidthPt, peekHeightPt), peek.picture);
            else
                drawIcon(m_brush.painter, Icon::Image, at(20, 22, 20, 20), m_brush.colors.ink4);
            break;
        case Peek::Kind::File:
            if (pictured)
                m_brush.picture(
                    at(0, 0, peekWidthPt, peekHeightPt), peek.picture, FaceBrush::Crop::Below);
            else
                drawBars({30, 44, 40, 43, 34, 42, 38}, 8);
            break;
        case Peek::Kind::Link:
            drawLink(peek);
            break;
        case Peek::Kind::Folder:
            drawSmallFolder(peek.color);
            break;
        }
    }

    // A dark one for the title and paler ones for the lines.
    void drawBars(std::initializer_list<double> widths, double y) const
    {
        bool first = true;
        for (const double width : widths) {
            const double height = first ? 3 : 2.4;
            m_brush.bar(at(8, y, width, height), first ? 0.95 : 0.5);
            y += height + 3.6;
            first = false;
        }
    }

    void drawTodos() const
    {
        m_brush.bar(at(8, 8, 26, 3), 0.95);
        double y = 14.6;
        for (const double width : {34, 28, 32, 24, 30}) {
            m_brush.painter.setPen(QPen(m_brush.colors.ink4, m_brush.px(1)));
            m_brush.painter.setBrush(Qt::NoBrush);
            m_brush.painter.drawRoundedRect(
                at(8.5, y + 0.5, 4, 4), m_brush.px(0.5), m_brush.px(0.5));
            m_brush.bar(at(16, y + 1.3, width, 2.4), 0.5);
            y += 8.6;
        }
    }

    void drawLink(const Peek& peek) const
    {
        const QRectF shot = at(0, 0, peekWidthPt, 34);
        if (peek.picture.isNull())
            m_brush.fill(shot, m_brush.colors.sunken);
        else
            m_brush.picture(shot, peek.picture, FaceBrush::Crop::Top);
        m_brush.bar(at(7, 40, 40, 2.4), 0.9);
        m_brush.bar(at(7, 46, 26, 2.4), 0.5);
    }

    void drawSmallFolder(NodeColor color) const
    {
        const NodeTones& tones = m_brush.colors.tones(color);
        QPainter& painter = m_brush.painter;
        painter.translate(m_origin + QPointF(m_brush.px(10), m_brush.px(14)));
        painter.scale(m_brush.px(40) / folderWidthPt, m_brush.px(40) / folderWidthPt);
        painter.fillPath(folderBack(), tones.deep);
        painter.fillPath(folderPocket(smallPocketTopPt), tones.fill);
    }

    const FaceBrush& m_brush;
    QPointF m_origin;
};

void drawPeeks(const FaceBrush& brush, const std::vector<Peek>& peeks)
{
    QPainter& painter = brush.painter;
    painter.save();
    painter.setClipRect(brush.box(0, 0, folderWidthPt, peekClipPt));
    const std::size_t count = std::min<std::size_t>(3, peeks.size());
    const std::vector<PeekPlace> places = peekPlaces(count);
    for (std::size_t i = 0; i < count; ++i) {
        const PeekPlace& place = places[i];
        // Upright sheets stand on whole pixels, and tilted ones turn about such a place.
        const QPointF corner = brush.sharp(place.x, place.y, 0, 0).topLeft();
        const QPointF half(brush.px(peekWidthPt / 2), brush.px(peekHeightPt / 2));
        painter.save();
        painter.translate(corner + half);
        painter.rotate(place.tilt);
        PeekPainter(brush, -half).draw(peeks[i]);
        painter.restore();
    }
    painter.restore();
}

void drawPocket(const FaceBrush& brush, const NodeTones& tones, bool hasPeeks)
{
    QPainter& painter = brush.painter;
    if (hasPeeks) {
        // The pocket's own faint shade on what stands in it.
        brush.fill(brush.box(14, 84, 196, 3), QColor(20, 30, 38, 14));
    }
    painter.save();
    painter.translate(brush.card.topLeft());
    painter.scale(brush.card.width() / folderWidthPt, brush.card.height() / folderHeightPt);
    const QPainterPath pocket = folderPocket();
    painter.fillPath(pocket, tones.fill);
    painter.setClipPath(pocket, Qt::IntersectClip);
    painter.strokePath(pocket, QPen(brush.colors.peekGloss, 2));
    painter.restore();
}

void drawTitle(const FaceBrush& brush, const QString& title, const QColor& color)
{
    const Lettering lettering = brush.lettering(TypeStyle::FolderTitle, leastTitlePixels);
    const QRectF first = brush.box(16, 97, folderWidthPt - 16 - 14, 19);
    double y = first.top();
    brush.painter.setPen(color);
    for (const QString& line : lettering.lines(title, first.width(), 2)) {
        lettering.draw(brush.painter,
            QRectF(first.left(), y, first.width(), lettering.lineHeight()), Qt::AlignLeft, line);
        y += lettering.lineHeight();
    }
}

void drawMissing(const FaceBrush& brush, const CardFace& face)
{
    QPainter& painter = brush.painter;
    const QPainterPath outline = folderSilhouette(brush.card);
    painter.fillPath(outline, brush.colors.ground);
    painter.save();
    painter.setClipPath(outline, Qt::IntersectClip);
    brush.hatch(brush.box(0, 0, folderWidthPt, pocketTopPt));
    painter.restore();
    drawIcon(painter, Icon::Help, brush.box(95, 34, 34, 34), brush.colors.ink3);

    QPen line(brush.colors.ink4, missingLine);
    line.setDashPattern({3, 2});
    line.setCapStyle(Qt::FlatCap);
    const double inset = missingLine / 2;
    painter.strokePath(folderSilhouette(brush.card.adjusted(inset, inset, -inset, -inset)), line);
    drawTitle(brush, face.title, brush.colors.ink2);
    if (brush.detail == Detail::Full)
        brush.text(brush.lettering(TypeStyle::FolderCount), brush.box(16, 149, 194, 14),
            brush.colors.warn, face.meta);
}

} // namespace

void drawFolderFace(const FaceBrush& brush, const CardFace& face)
{
    if (face.missing) {
        drawMissing(brush, face);
        return;
    }
    const NodeTones& tones = brush.colors.tones(face.color);
    const QPainterPath outline = folderSilhouette(brush.card);
    drawShadow(brush.painter, outline, Elevation::Rest, brush.colors.scheme);
    brush.painter.fillPath(outline, tones.deep);
    drawPeeks(brush, face.peeks);
    drawPocket(brush, tones, !face.peeks.empty());

    QColor edge = tones.edge;
    edge.setAlphaF(0.55F);
    brush.painter.strokePath(outline, QPen(edge, 1));

    drawTitle(brush, face.title, tones.ink);
    if (brush.detail == Detail::Full)
        brush.text(brush.lettering(TypeStyle::FolderCount), brush.box(16, 149, 194, 14),
            tones.inkSoft, countWords(face.count));
}

} // namespace corvelle
