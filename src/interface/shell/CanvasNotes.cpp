#include "interface/shell/CanvasNotes.h"

#include "interface/theme/Fonts.h"
#include "interface/theme/Shadows.h"
#include "interface/widgets/Look.h"

#include <QPainter>

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QSize drawing(176, 96);
constexpr int wordsGap = 26;
constexpr int wordsLine = 24;
constexpr int wordsWidth = 560;
const QString emptyWords = u"Drop or paste files and links here, or start with a page."_s;

// Two places that wait for cards, and a page between them.
void paintDrawing(QPainter& painter, const Palette& colors)
{
    QPen pen(colors.ink4, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    const auto place = [&](const QRectF& rect, double tilt) {
        QPen dashed = pen;
        dashed.setDashPattern({4 / 1.5, 4.5 / 1.5});
        painter.setPen(dashed);
        painter.setBrush(Qt::NoBrush);
        painter.save();
        painter.translate(rect.center());
        painter.rotate(tilt);
        painter.drawRoundedRect(rect.translated(-rect.center()), 7, 7);
        painter.restore();
    };
    place(QRectF(6, 26, 52, 62), -5);
    place(QRectF(118, 30, 54, 42), 5);
    painter.setPen(QPen(colors.ink3, 1.5));
    painter.setBrush(colors.surface);
    painter.drawRoundedRect(QRectF(62, 10, 52, 66), 7, 7);
    painter.setPen(pen);
    constexpr double lines[][3] = {{72, 24, 22}, {72, 34, 32}, {72, 42, 28}, {72, 50, 31}};
    for (const auto& [x, y, width] : lines)
        painter.drawLine(QPointF(x, y), QPointF(x + width, y));
}

} // namespace

EmptyNote::EmptyNote(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(emptyWords);
    setFixedSize(wordsWidth, drawing.height() + wordsGap + wordsLine);
}

void EmptyNote::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.save();
    painter.translate((width() - drawing.width()) / 2, 0);
    paintDrawing(painter, colors);
    painter.restore();
    TypeSpec spec = typeSpec(TypeStyle::PageBody);
    spec.line = wordsLine;
    painter.setPen(colors.ink2);
    Lettering(spec).draw(painter, QRectF(0, drawing.height() + wordsGap, width(), wordsLine),
        Qt::AlignHCenter, emptyWords);
}

LineNote::LineNote(Tone tone, QWidget* parent)
    : QWidget(parent)
    , m_tone(tone)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void LineNote::setWords(const QString& words)
{
    if (words == m_words)
        return;
    m_words = words;
    setAccessibleName(words);
    const int reach = shadowReach(Elevation::Hint);
    const bool quiet = m_tone == Tone::Quiet;
    const Lettering letters(quiet ? TypeStyle::Caption : TypeStyle::Label);
    const QPoint centre = geometry().center();
    setFixedSize(static_cast<int>(std::ceil(letters.width(words))) + (quiet ? 20 : 32) + 2 * reach,
        (quiet ? 24 : 44) + 2 * reach);
    if (isVisible())
        move(centre - QPoint(width() / 2, height() / 2)); // its place is its middle
    update();
}

void LineNote::paintEvent(QPaintEvent*)
{
    const int reach = shadowReach(Elevation::Hint);
    const QRectF box = QRectF(rect()).adjusted(reach, reach, -reach, -reach);
    const Scheme scheme = schemeOf(*this);
    const Palette& colors = corvelle::palette(scheme);
    const bool quiet = m_tone == Tone::Quiet;
    const double corner = quiet ? radius::control : radius::toast;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!quiet)
        drawShadow(painter, box, corner, Elevation::Hint, scheme);
    painter.setPen(quiet ? QPen(colors.hairline, 1) : QPen(Qt::NoPen));
    painter.setBrush(quiet ? colors.raised : colors.inverse);
    painter.drawRoundedRect(quiet ? box.adjusted(0.5, 0.5, -0.5, -0.5) : box, corner, corner);
    painter.setPen(quiet ? colors.ink3 : colors.onInverse);
    Lettering(quiet ? TypeStyle::Caption : TypeStyle::Label)
        .draw(painter, box, Qt::AlignHCenter, m_words);
}

} // namespace corvelle
