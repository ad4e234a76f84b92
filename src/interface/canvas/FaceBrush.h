// What every face is drawn with: the painter, the colours and the scale, and the shapes that return
// on many faces.
#pragma once

#include "interface/canvas/CardFace.h"
#include "interface/canvas/CardWords.h"
#include "interface/theme/Fonts.h"

#include <QPainter>
#include <QRectF>

namespace corvelle {

struct FaceBrush
{
    QPainter& painter;
    const Palette& colors;
    double scale;
    Detail detail;
    QRectF card; // on the picture, in whole device pixels

    bool isDark() const { return colors.scheme == Scheme::Dark; }

    // Points of the card to pixels of the picture.
    double px(double points) const { return points * scale; }
    QRectF box(double x, double y, double width, double height) const;

    // The same with its edges on whole device pixels, for fills and lines that must be sharp.
    QRectF sharp(double x, double y, double width, double height) const;
    double sharp(double pixels) const;

    void fill(const QRectF& box, const QColor& color) const { painter.fillRect(box, color); }
    void fillRounded(const QRectF& box, double radius, const QColor& color) const;

    // A bar in the place of a word, in the ink of marks.
    void bar(const QRectF& box, double opacity) const;

    // A style at the card's scale, but never below `least` pixels.
    Lettering lettering(TypeStyle style, double least = 0) const;

    // Text of one line from the left, cut to the box; the box is as high as the line.
    void text(const Lettering& lettering, const QRectF& box, const QColor& color,
        const QString& text, Qt::TextElideMode mode = Qt::ElideRight) const;

    // Middle and Top fill the box, and cut off what doesn't fit at both ends or below. Below keeps
    // the picture's width and leaves the rest of the box as it is when the picture is too short.
    enum class Crop : unsigned char { Middle, Top, Below };
    void picture(const QRectF& box, const QImage& picture, Crop crop = Crop::Middle) const;

    // Slanted hairlines over areas whose picture is not there.
    void hatch(const QRectF& box) const;
};

// Titles never get smaller while they are words.
inline constexpr double leastTitlePixels = 11;

void drawFolderFace(const FaceBrush& brush, const CardFace& face);
void drawPageFace(const FaceBrush& brush, const CardFace& face);
void drawFileFace(const FaceBrush& brush, const CardFace& face);
void drawPictureFace(const FaceBrush& brush, const CardFace& face);
void drawLinkFace(const FaceBrush& brush, const CardFace& face);

// The small square that stands for a site.
void drawSiteMark(const FaceBrush& brush, QPointF topLeft, const CardFace& face);

// All kinds as they look below the zoom at which words can be read.
void drawFarFace(const FaceBrush& brush, const CardFace& face);

} // namespace corvelle
