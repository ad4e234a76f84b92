#include "interface/canvas/FaceBrush.h"
#include "interface/theme/Icons.h"
#include "interface/theme/Shadows.h"

#include <QPainterPath>

#include <array>
#include <cmath>
#include <numbers>

namespace corvelle {
namespace {

constexpr double widthPt = 176, fieldPt = 160, captionPt = 64;
constexpr double papersEndPt = 216; // papers run on under the caption

// What the field above the caption shows of a kind of file.
enum class Field : unsigned char { Paper, Sheet, Slides, Text, Sound, Video, Archive };

Field fieldOf(const QString& badge)
{
    struct Entry
    {
        QLatin1StringView badge;
        Field field;
    };
    static constexpr Entry table[] = {
        {QLatin1StringView("XLS"), Field::Sheet},
        {QLatin1StringView("PPT"), Field::Slides},
        {QLatin1StringView("TXT"), Field::Text},
        {QLatin1StringView("MD"), Field::Text},
        {QLatin1StringView("AUD"), Field::Sound},
        {QLatin1StringView("VID"), Field::Video},
        {QLatin1StringView("ZIP"), Field::Archive},
    };
    for (const Entry& entry : table) {
        if (badge == entry.badge)
            return entry.field;
    }
    return Field::Paper;
}

// Bars for the lines of a page that has no picture. They are still: nothing is being read.
void drawBars(const FaceBrush& brush, const QRectF& paper)
{
    // On paper, which stays white in the dark too.
    const QColor ink(0x93, 0x9D, 0xA3);
    static constexpr std::array<double, 9> shares = {
        0.52, 0.94, 0.88, 0.91, 0.78, 0.93, 0.85, 0.92, 0.64};
    const double pad = brush.px(14);
    double y = paper.top() + pad;
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const double height = brush.px(i == 0 ? 5 : 3.4);
        QColor tone = ink;
        tone.setAlphaF(i == 0 ? 0.8F : 0.42F);
        brush.fillRounded(
            QRectF(paper.left() + pad, y, (paper.width() - 2 * pad) * shares[i], height),
            height / 2, tone);
        y += height + brush.px(i == 0 ? 10 : 8.6);
    }
}

// A sheet of paper from y on, as high as its picture; gives its lower edge in points.
double drawPaper(const FaceBrush& brush, double insetPt, double topPt, const QImage& picture)
{
    const double width = widthPt - 2 * insetPt;
    const double height = picture.isNull() ? papersEndPt - topPt
                                           : std::min(papersEndPt - topPt,
                                                 width * picture.height() / picture.width());
    const QRectF paper = brush.sharp(insetPt, topPt, width, height);
    drawShadow(brush.painter, paper, brush.px(2), Elevation::Paper, brush.colors.scheme);
    brush.fillRounded(paper.adjusted(-1, -1, 1, 1), brush.px(2) + 1, QColor(14, 31, 43, 26));
    brush.fillRounded(paper, brush.px(2), Qt::white);
    if (picture.isNull())
        drawBars(brush, paper);
    else
        brush.picture(paper, picture, FaceBrush::Crop::Below);
    if (brush.isDark())
        brush.fill(paper, QColor(16, 21, 24, 26)); // white is too loud on a dark ground
    return topPt + height;
}

void drawSlides(const FaceBrush& brush, const CardFace& face)
{
    constexpr double insetPt = 12, gapPt = 8;
    const double end = drawPaper(brush, insetPt, 14, face.picture);
    if (!face.more.empty() && end + gapPt < fieldPt)
        drawPaper(brush, insetPt, end + gapPt, face.more.front());
}

// A text file as its own first lines; they are a likeness, smaller than what is meant to be read.
void drawText(const FaceBrush& brush, const CardFace& face)
{
    brush.fill(brush.box(0, 0, widthPt, fieldPt), brush.colors.surface);
    const Lettering lettering = brush.lettering(TypeStyle::SheetText);
    double y = 16;
    for (const CardFace::Line& line : face.lines) {
        if (y >= fieldPt)
            return;
        const QRectF box = brush.box(16, y, widthPt - 16, 13);
        brush.painter.setPen(brush.colors.ink2);
        // Only what reaches the edge can be seen, and a line of a data file may be endless.
        constexpr qsizetype mostUnits = 120;
        if (brush.detail == Detail::Full)
            lettering.draw(brush.painter, box, Qt::AlignLeft, line.text.left(mostUnits));
        else
            brush.bar(QRectF(box.left(), brush.sharp(box.center().y() - 1),
                          std::min(lettering.width(line.text.left(mostUnits)), box.width()), 2),
                0.5);
        y += 13;
    }
    if (face.lines.empty()) {
        for (const double width : {96.0, 120.0, 74.0, 132.0, 108.0, 88.0, 124.0, 60.0}) {
            brush.bar(brush.box(16, y + 4, width, 3.4), 0.42);
            y += 15;
        }
    }
}

void drawSound(const FaceBrush& brush)
{
    const NodeTones& tones = brush.colors.tones(NodeColor::Purple);
    brush.fill(brush.box(0, 0, widthPt, fieldPt), tones.tint);
    // A sign for sound, not a measurement: the same wave on every card.
    constexpr int bars = 27;
    for (int i = 0; i < bars; ++i) {
        const double swell = std::sin(i * 0.9) * std::sin(i * std::numbers::pi / bars);
        const double height = 10 + std::abs(46 * swell) + (i * 37) % 9;
        brush.fillRounded(
            brush.box(20 + i * 5.1, 80 - height / 2, 2.6, height), brush.px(1.3), tones.solid);
    }
}

void drawVideo(const FaceBrush& brush, const CardFace& face)
{
    brush.picture(brush.sharp(0, 0, widthPt, fieldPt), face.picture);
    const QColor shade(16, 26, 32);
    QColor disc = shade, plate = shade;
    disc.setAlphaF(0.62F);
    plate.setAlphaF(0.68F);

    brush.fillRounded(brush.box(66, 58, 44, 44), brush.px(22), disc);
    QPainterPath triangle(brush.box(84, 73.5, 0, 0).topLeft());
    triangle.lineTo(brush.box(84, 86.5, 0, 0).topLeft());
    triangle.lineTo(brush.box(95, 80, 0, 0).topLeft());
    triangle.closeSubpath();
    brush.painter.setBrush(Qt::white);
    brush.painter.setPen(QPen(Qt::white, brush.px(2), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    brush.painter.drawPath(triangle);

    const Lettering lettering = brush.lettering(TypeStyle::CardMeta);
    if (face.length.isEmpty() || brush.detail != Detail::Full)
        return;
    const double width = lettering.width(face.length) / brush.scale + 10;
    const QRectF box = brush.box(widthPt - 8 - width, fieldPt - 8 - 17, width, 17);
    brush.fillRounded(box, brush.px(5), plate);
    brush.painter.setPen(Qt::white);
    lettering.draw(brush.painter, box, Qt::AlignHCenter, face.length);
}

void drawArchive(const FaceBrush& brush, const CardFace& face)
{
    const NodeTones& tones = brush.colors.tones(NodeColor::Brown);
    brush.fill(brush.box(0, 0, widthPt, fieldPt), tones.tint);
    constexpr double tileWidth = 60, tileHeight = 52, gap = 8, left = 24;
    if (face.more.empty()) {
        // The list of what lies in it, as bars.
        double y = 34;
        for (const double width : {92.0, 72.0, 100.0, 64.0}) {
            brush.fillRounded(brush.box(30, y, 12, 12), brush.px(3), tones.fill);
            brush.fillRounded(brush.box(50, y + 4, width * 0.8, 4), brush.px(2), tones.fill);
            y += 26;
        }
        return;
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(4, face.more.size()); ++i) {
        const double x = left + static_cast<double>(i % 2) * (tileWidth + gap);
        const double y = left + static_cast<double>(i / 2) * (tileHeight + gap);
        const QRectF tile = brush.sharp(x, y, tileWidth, tileHeight);
        QPainterPath outline;
        outline.addRoundedRect(tile, brush.px(4), brush.px(4));
        brush.painter.save();
        brush.painter.setClipPath(outline, Qt::IntersectClip);
        brush.painter.setOpacity(0.95);
        brush.picture(tile, face.more[i]);
        brush.painter.restore();
    }
}

void drawField(const FaceBrush& brush, const CardFace& face)
{
    QPainter& painter = brush.painter;
    const QRectF field = brush.sharp(0, 0, widthPt, fieldPt);
    painter.save();
    painter.setClipRect(field, Qt::IntersectClip);
    if (face.missing) {
        brush.hatch(field);
        drawIcon(painter, Icon::Help, brush.box(71, 63, 34, 34), brush.colors.ink3);
        painter.restore();
        return;
    }
    brush.fill(field, brush.colors.sunken);
    switch (fieldOf(face.badge)) {
    case Field::Paper:
        drawPaper(brush, 20, 16, face.picture);
        break;
    case Field::Sheet:
        drawPaper(brush, 14, 16, face.picture);
        break;
    case Field::Slides:
        drawSlides(brush, face);
        break;
    case Field::Text:
        drawText(brush, face);
        break;
    case Field::Sound:
        drawSound(brush);
        break;
    case Field::Video:
        drawVideo(brush, face);
        break;
    case Field::Archive:
        drawArchive(brush, face);
        break;
    }
    painter.restore();
}

// Gives where the text beside it begins, in points.
double drawBadge(const FaceBrush& brush, const QString& badge, double x, double y)
{
    if (badge.isEmpty())
        return x;
    constexpr double leastLetters = 5;
    const NodeTones& tones = brush.colors.tones(badgeColor(badge));
    const Lettering lettering = brush.lettering(TypeStyle::Badge);
    const double width = lettering.width(badge) / brush.scale + 8;
    const QRectF box = brush.box(x, y, width, 13);
    brush.fillRounded(box, brush.px(radius::badgePt), tones.fill);
    if (lettering.size() >= leastLetters) {
        brush.painter.setPen(tones.ink);
        lettering.draw(brush.painter, box.adjusted(brush.px(4), 0, 0, 0), Qt::AlignLeft, badge);
    }
    return x + width + 6;
}

void drawCaption(const FaceBrush& brush, const CardFace& face)
{
    const double top = fieldPt;
    const QRectF line = brush.sharp(0, top, widthPt, 1);
    const QRectF area(QPointF(line.left(), line.top()), brush.card.bottomRight());
    brush.fill(area, face.missing ? brush.colors.ground : brush.colors.surface);
    brush.fill(QRectF(line.left(), line.top(), line.width(), 1), brush.colors.hairlineFaint);

    const Lettering title = brush.lettering(TypeStyle::FileTitle, leastTitlePixels);
    QRectF box = brush.box(12, top + 10, widthPt - 24, 15.5);
    box.setHeight(title.lineHeight());
    brush.text(title, box, face.missing ? brush.colors.ink2 : brush.colors.ink, face.title,
        titleElision(face.title));

    const double metaTop = fieldPt + captionPt - 9 - 13;
    const double x = drawBadge(brush, face.badge, 12, metaTop);
    if (brush.detail == Detail::Full)
        brush.text(brush.lettering(TypeStyle::CardMeta),
            brush.box(x, metaTop, widthPt - 12 - x, 13),
            face.missing ? brush.colors.warn : brush.colors.ink3, face.meta);
}

} // namespace

void drawFileFace(const FaceBrush& brush, const CardFace& face)
{
    drawField(brush, face);
    drawCaption(brush, face);
}

} // namespace corvelle
