#include "interface/canvas/FaceBrush.h"
#include "interface/canvas/FolderShape.h"
#include "interface/theme/Shadows.h"

#include <QPainterPath>

#include <array>

namespace corvelle {
namespace {

// Bars keep their height on screen; only their width follows the card.
constexpr double barHeight = 1.5, barStep = 4, titleBarHeight = 2;

void drawBars(
    const FaceBrush& brush, const QRectF& area, std::span<const double> shares, const QColor& color)
{
    double y = area.top();
    for (const double share : shares) {
        if (y + barHeight > area.bottom())
            return;
        brush.fillRounded(QRectF(area.left(), y, area.width() * share, barHeight), 1, color);
        y += barStep;
    }
}

QColor faint(const QColor& color, float opacity)
{
    QColor result = color;
    result.setAlphaF(opacity);
    return result;
}

void drawFolder(const FaceBrush& brush, const CardFace& face)
{
    const NodeTones& tones = brush.colors.tones(face.color);
    QPainter& painter = brush.painter;
    painter.save();
    painter.translate(brush.card.topLeft());
    painter.scale(brush.card.width() / folderWidthPt, brush.card.height() / folderHeightPt);
    painter.fillPath(folderBack(), tones.deep);
    static constexpr std::array<double, 3> left = {36, 91, 145}, top = {21, 18, 24};
    const std::size_t count = std::min<std::size_t>(3, face.peeks.size());
    for (std::size_t i = 0; i < count; ++i) {
        const double shift = 27.0 * static_cast<double>(3 - count); // fewer stand in the middle
        painter.setPen(Qt::NoPen);
        painter.setBrush(faint(brush.colors.peek, 0.95F));
        painter.drawRoundedRect(QRectF(left[i] + shift, top[i], 45, 60), 6, 6);
    }
    painter.fillPath(folderPocket(farPocketTopPt), tones.fill);
    painter.restore();
    painter.strokePath(folderSilhouette(brush.card), QPen(faint(tones.edge, 0.6F), 1));

    const Lettering lettering(TypeStyle::FarTitle);
    const double pocketTop = brush.box(0, farPocketTopPt, 0, 0).top();
    const double y = (pocketTop + brush.card.bottom() - lettering.lineHeight()) / 2;
    const QRectF box(brush.card.left() + 6, y, brush.card.width() - 10, lettering.lineHeight());
    brush.text(lettering, box, tones.ink, face.title);
}

void drawPage(const FaceBrush& brush, const CardFace& face)
{
    constexpr double pad = 6;
    const QRectF inner = brush.card.adjusted(pad, pad, -pad, -pad);
    const Lettering lettering(TypeStyle::FarPageTitle);
    brush.text(lettering, QRectF(inner.left(), inner.top(), inner.width(), lettering.lineHeight()),
        brush.colors.ink, face.title);
    // The bars of the page's lines, as they would break.
    constexpr double unitsPerBar = 30, shortest = 0.3;
    constexpr std::size_t most = 7;
    std::vector<double> shares;
    for (const CardFace::Line& line : face.lines) {
        for (double rest = static_cast<double>(line.text.size()) / unitsPerBar;
             rest > 0 && shares.size() < most; rest -= 1)
            shares.push_back(rest > 1 ? 0.96 : std::max(shortest, rest));
    }
    drawBars(brush, inner.adjusted(0, lettering.lineHeight() + 4, 0, 0), shares,
        faint(brush.colors.ink4, 0.42F));
}

void drawFile(const FaceBrush& brush, const CardFace& face)
{
    const QRectF field = brush.sharp(0, 0, 176, 160);
    brush.fill(field, brush.colors.sunken);
    QPainter& painter = brush.painter;
    painter.save();
    painter.setClipRect(field, Qt::IntersectClip);
    if (face.badge == QStringLiteral("VID") && !face.picture.isNull()) {
        brush.picture(field, face.picture);
    } else {
        const QRectF paper(QPointF(brush.sharp(field.left() + 8), field.top() + 6),
            QPointF(brush.sharp(field.right() - 8), brush.card.bottom()));
        brush.fill(paper.adjusted(-0.5, -0.5, 0.5, 0), QColor(14, 31, 43, 36));
        brush.fill(paper, brush.colors.paper);
        if (face.picture.isNull()) {
            static constexpr std::array<double, 8> shares = {
                0.6, 0.9, 0.75, 0.95, 0.8, 0.9, 0.55, 0.85};
            drawBars(brush, paper.adjusted(5, 5, -5, 0), shares, QColor(154, 166, 172, 153));
        } else {
            brush.picture(
                QRectF(paper.topLeft(), QSizeF(paper.width(), field.bottom() - paper.top())),
                face.picture, FaceBrush::Crop::Below);
        }
    }
    painter.restore();

    const QRectF caption(QPointF(field.left(), field.bottom()), brush.card.bottomRight());
    brush.fill(caption, brush.colors.surface);
    brush.fill(
        QRectF(caption.left(), caption.top(), caption.width(), 1), brush.colors.hairlineFaint);
    const double x = caption.left() + 6, y = caption.top() + 6;
    brush.fillRounded(QRectF(x, y, std::min(40.0, caption.width() - 12), titleBarHeight), 1,
        faint(brush.colors.ink4, 0.85F));
    if (y + 9 < caption.bottom())
        brush.fillRounded(
            QRectF(x, y + 4.5, 13, 4), 1.5, brush.colors.tones(badgeColor(face.badge)).solid);
}

void drawLink(const FaceBrush& brush, const CardFace& face)
{
    const QRectF shot = brush.sharp(0, 0, 240, 94);
    if (face.picture.isNull())
        brush.fill(shot, brush.colors.sunken);
    else
        brush.picture(shot, face.picture, FaceBrush::Crop::Top);
    const QRectF caption(QPointF(shot.left(), shot.bottom()), brush.card.bottomRight());
    brush.fill(caption, brush.colors.surface);
    brush.fill(
        QRectF(caption.left(), caption.top(), caption.width(), 1), brush.colors.hairlineFaint);
    const double x = caption.left() + 5, y = caption.top() + std::min(6.0, caption.height() / 4);
    brush.fillRounded(QRectF(x, y, 7, 7), 2, brush.colors.tones(face.color).solid);
    const double room = caption.right() - x - 16;
    brush.fillRounded(
        QRectF(x + 11, y, std::min(44.0, room), titleBarHeight), 1, faint(brush.colors.ink4, 0.8F));
    brush.fillRounded(QRectF(x + 11, y + 4.5, std::min(28.0, room), barHeight), 1,
        faint(brush.colors.ink4, 0.42F));
}

} // namespace

void drawFarFace(const FaceBrush& brush, const CardFace& face)
{
    switch (face.kind) {
    case CardFace::Kind::Folder:
        drawFolder(brush, face);
        break;
    case CardFace::Kind::Page:
        drawPage(brush, face);
        break;
    case CardFace::Kind::File:
        drawFile(brush, face);
        break;
    case CardFace::Kind::Picture:
        if (face.picture.isNull())
            brush.fill(brush.card, brush.colors.sunken);
        else
            brush.picture(brush.card, face.picture);
        break;
    case CardFace::Kind::Link:
        drawLink(brush, face);
        break;
    }
}

} // namespace corvelle
