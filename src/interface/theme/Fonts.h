// Text in the styles of the look: fonts for widgets, and Lettering for everything that is painted.
#pragma once

#include "interface/theme/Theme.h"

#include <QFont>
#include <QString>

#include <vector>

class QPainter;
class QRectF;

namespace corvelle {

// A font for a widget, at the nearest whole pixel size: the toolkit knows no others.
QFont font(TypeStyle style, double scale = 1);

// For emoji on their own: letters would come before the pictures that some emoji share a code with.
QFont emojiFont(int pixels);

// One style at any size, fractions too: measures, cuts and draws text with evenly spaced, unhinted
// letters.
//
// Lines break and letters stand the same at any device pixel ratio. Any thread; a QGuiApplication
// must exist.
class Lettering
{
public:
    explicit Lettering(TypeStyle style, double scale = 1);
    explicit Lettering(const TypeSpec& spec, double scale = 1);

    double size() const { return m_size; }
    double lineHeight() const { return m_line; }
    double width(const QString& text) const;

    QString elided(const QString& text, double width, Qt::TextElideMode mode) const;

    // Breaks the text at words, long words anywhere. What doesn't fit into `most` lines is cut off
    // with an ellipsis. An empty text is no line. Line breaks of the text itself count.
    std::vector<QString> lines(const QString& text, double width, int most) const;

    // Where the letters of a line stand whose box begins at `top`; a whole number, which keeps them
    // sharp.
    double baseline(double top) const { return baseline(top, m_line); }
    double baseline(double top, double lineHeight) const;

    // Begins at the point, on the baseline, in the painter's pen.
    void draw(QPainter& painter, QPointF start, const QString& text) const;

    // Centres the line in the height of the box.
    void draw(
        QPainter& painter, const QRectF& box, Qt::Alignment horizontal, const QString& text) const;

private:
    friend class LetteringRun;

    TypeSpec m_spec;
    double m_size;
    double m_line;
    int m_pixels;    // of the font that measures
    double m_factor; // from that font's widths to ours
    QFont m_font;
};

// Draws many texts in one style and ink: the painter's font is chosen once. Meanwhile the painter's
// font and pen are its own; both are put back at its end.
class LetteringRun
{
public:
    LetteringRun(const Lettering& lettering, QPainter& painter, const QColor& ink);
    ~LetteringRun();
    LetteringRun(const LetteringRun&) = delete;
    LetteringRun& operator=(const LetteringRun&) = delete;

    // Centres the line in the height of the box, cut with an ellipsis where it is too wide.
    void draw(const QRectF& box, Qt::Alignment horizontal, const QString& text);

private:
    const Lettering& m_lettering;
    QPainter& m_painter;
    double m_factor;
};

} // namespace corvelle
