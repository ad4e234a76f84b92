#include "interface/theme/Fonts.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace corvelle {
namespace {

// Behind the letters, for what only it has.
const QString emojiFamily = QStringLiteral("Noto Color Emoji");

QStringList families(TypeFamily family)
{
    switch (family) {
    case TypeFamily::Text:
        return {QStringLiteral("Inter"), emojiFamily};
    case TypeFamily::Display:
        return {QStringLiteral("Inter Display"), QStringLiteral("Inter"), emojiFamily};
    case TypeFamily::Mono:
        return {QStringLiteral("JetBrains Mono"), QStringLiteral("DejaVu Sans Mono")};
    case TypeFamily::Sheet:
        return {QStringLiteral("Liberation Sans"), QStringLiteral("Inter"), emojiFamily};
    }
    return {};
}

QFont fontOf(const TypeSpec& spec, int pixels)
{
    QFont font(families(spec.family));
    font.setPixelSize(pixels);
    font.setWeight(static_cast<QFont::Weight>(spec.weight));
    // Without hinting letters stand at quarters of a pixel, and a text is as wide at one zoom as at
    // the next.
    font.setHintingPreference(QFont::PreferNoHinting);
    if (spec.tracking != 0)
        font.setLetterSpacing(QFont::AbsoluteSpacing, spec.tracking * pixels);
    return font;
}

int wholePixels(double size)
{
    return std::max(1, static_cast<int>(std::lround(size)));
}

// The rasteriser strengthens the stems of small letters, by the size of the font and not by that of
// the painter. Dark ink needs that and takes the font that is nearest, but for the smallest, which
// would turn bold. Light ink spreads on a dark ground by itself: it takes a larger font through a
// smaller scale.
int fontPixels(double deviceSize, const QColor& ink)
{
    constexpr float light = 0.6F;
    constexpr int larger = 3, smallest = 11;
    const bool spreads = ink.lightnessF() > light;
    return spreads ? larger * wholePixels(deviceSize) : std::max(smallest, wholePixels(deviceSize));
}

} // namespace

QFont font(TypeStyle style, double scale)
{
    const TypeSpec& spec = typeSpec(style);
    return fontOf(spec, wholePixels(spec.size * scale));
}

QFont emojiFont(int pixels)
{
    QFont font({emojiFamily, QStringLiteral("Inter")});
    font.setPixelSize(pixels);
    return font;
}

Lettering::Lettering(TypeStyle style, double scale)
    : Lettering(typeSpec(style), scale)
{}

// A font of a fractional size comes out at the next whole one, so a font of whole pixels is drawn
// through a scaled painter.
Lettering::Lettering(const TypeSpec& spec, double scale)
    : m_spec(spec)
    , m_size(spec.size * scale)
    , m_line(spec.line * scale)
    , m_pixels(wholePixels(m_size))
    , m_factor(m_size / m_pixels)
    , m_font(fontOf(spec, m_pixels))
{}

double Lettering::width(const QString& text) const
{
    return QFontMetricsF(m_font).horizontalAdvance(text) * m_factor;
}

QString Lettering::elided(const QString& text, double width, Qt::TextElideMode mode) const
{
    return QFontMetricsF(m_font).elidedText(text, mode, width / m_factor);
}

std::vector<QString> Lettering::lines(const QString& text, double width, int most) const
{
    std::vector<QString> found;
    if (text.isEmpty() || most < 1 || width <= 0)
        return found;

    QString separated = text;
    separated.replace(u'\n', QChar::LineSeparator);
    QTextLayout layout(separated, m_font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width / m_factor);
        const bool last = static_cast<int>(found.size()) + 1 == most;
        const qsizetype end = line.textStart() + line.textLength();
        if (last && end < separated.size()) {
            found.push_back(elided(text.mid(line.textStart()).simplified(), width, Qt::ElideRight));
            break;
        }
        found.push_back(text.mid(line.textStart(), line.textLength()).trimmed());
        if (last)
            break;
    }
    layout.endLayout();
    return found;
}

double Lettering::baseline(double top, double lineHeight) const
{
    // The text is centred by the font's whole ascent and descent, so neighbouring sizes keep their
    // optical middle.
    const QFontMetricsF metrics(m_font);
    const double ascent = std::round(metrics.ascent() * m_factor);
    const double descent = std::round(metrics.descent() * m_factor);
    return std::round(top + std::floor((lineHeight - ascent - descent) / 2) + ascent);
}

namespace {

// What reads from right to left has its end, and the ellipsis there, at the left. The place where
// it is drawn is the left one all the same.
void setDirection(QPainter& painter, const QString& text)
{
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
}

} // namespace

void Lettering::draw(QPainter& painter, QPointF start, const QString& text) const
{
    const QTransform& device = painter.deviceTransform();
    const int pixels =
        fontPixels(m_size * std::hypot(device.m11(), device.m12()), painter.pen().color());
    const double factor = m_size / pixels;

    painter.save();
    painter.setFont(pixels == m_pixels ? m_font : fontOf(m_spec, pixels));
    painter.translate(start);
    if (factor != 1)
        painter.scale(factor, factor);
    setDirection(painter, text);
    painter.drawText(QPointF(0, 0), text);
    painter.restore();
}

void Lettering::draw(
    QPainter& painter, const QRectF& box, Qt::Alignment horizontal, const QString& text) const
{
    double x = box.left();
    if (horizontal & Qt::AlignRight)
        x = box.right() - width(text);
    else if (horizontal & Qt::AlignHCenter)
        x = box.center().x() - width(text) / 2;
    draw(painter, QPointF(x, baseline(box.top(), box.height())), text);
}

LetteringRun::LetteringRun(const Lettering& lettering, QPainter& painter, const QColor& ink)
    : m_lettering(lettering)
    , m_painter(painter)
{
    const QTransform& device = painter.deviceTransform();
    const int pixels = fontPixels(lettering.m_size * std::hypot(device.m11(), device.m12()), ink);
    m_factor = lettering.m_size / pixels;
    painter.save();
    painter.setPen(ink);
    painter.setFont(
        pixels == lettering.m_pixels ? lettering.m_font : fontOf(lettering.m_spec, pixels));
}

LetteringRun::~LetteringRun()
{
    m_painter.restore();
}

void LetteringRun::draw(const QRectF& box, Qt::Alignment horizontal, const QString& text)
{
    double width = m_lettering.width(text);
    const bool tooWide = width > box.width();
    const QString shown = tooWide ? m_lettering.elided(text, box.width(), Qt::ElideRight) : text;
    if (tooWide)
        width = m_lettering.width(shown);
    const double x = horizontal & Qt::AlignRight     ? box.right() - width
                     : horizontal & Qt::AlignHCenter ? box.center().x() - width / 2
                                                     : box.left();
    const QPointF start(x, m_lettering.baseline(box.top(), box.height()));
    setDirection(m_painter, shown);
    if (m_factor == 1) {
        m_painter.drawText(start, shown);
        return;
    }
    const QTransform before = m_painter.transform();
    m_painter.translate(start);
    m_painter.scale(m_factor, m_factor);
    m_painter.drawText(QPointF(0, 0), shown);
    m_painter.setTransform(before);
}

} // namespace corvelle
