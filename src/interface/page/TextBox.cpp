#include "interface/page/TextBox.h"

#include <QGlyphRun>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace corvelle {

namespace {

constexpr int lightFineness = 3;
constexpr double touching = 0.3; // between the rectangles of two neighbours

QFont enlarged(QFont font, int factor)
{
    font.setPixelSize(font.pixelSize() * factor);
    if (font.letterSpacingType() == QFont::AbsoluteSpacing)
        font.setLetterSpacing(QFont::AbsoluteSpacing, font.letterSpacing() * factor);
    return font;
}

QList<QTextLayout::FormatRange> enlarged(QList<QTextLayout::FormatRange> formats, int factor)
{
    for (QTextLayout::FormatRange& range : formats) {
        if (range.format.hasProperty(QTextFormat::FontPixelSize))
            range.format.setProperty(QTextFormat::FontPixelSize,
                range.format.intProperty(QTextFormat::FontPixelSize) * factor);
        if (range.format.hasProperty(QTextFormat::FontLetterSpacing))
            range.format.setFontLetterSpacing(range.format.fontLetterSpacing() * factor);
    }
    return formats;
}

bool isRightToLeftCharacter(QChar c)
{
    const auto direction = c.direction();
    return direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN;
}

} // namespace

bool readsRightToLeft(QStringView text)
{
    for (const QChar c : text) {
        const auto direction = c.direction();
        if (direction == QChar::DirL)
            return false;
        if (direction == QChar::DirR || direction == QChar::DirAL)
            return true;
    }
    return false;
}

TextBox::TextBox(ShownText text, const Setting& setting)
    : m_text(std::move(text))
    , m_setting(setting)
    , m_fineness(setting.isLightInk ? lightFineness : 1)
{
    const auto factor = static_cast<int>(m_fineness);
    m_layout = std::make_unique<QTextLayout>(m_text.words, enlarged(setting.font, factor));
    m_isMixed = setting.rightToLeft ||
                std::any_of(m_text.words.begin(), m_text.words.end(), isRightToLeftCharacter);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(setting.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    const bool leading = setting.alignment == Qt::AlignLeading;
    option.setAlignment(
        (leading && setting.rightToLeft ? Qt::Alignment(Qt::AlignRight) : setting.alignment) |
        Qt::AlignAbsolute);
    option.setTabStopDistance(4 * m_fineness * QFontMetricsF(setting.font).horizontalAdvance(u' '));
    m_layout->setTextOption(option);
    m_layout->setFormats(enlarged(m_text.formats, factor));
    // Letters are centred in their line by the font of the box, whatever others are in it.
    const QFontMetricsF metrics(setting.font);
    const double ascent = std::round(metrics.ascent()), descent = std::round(metrics.descent());
    const double above = std::floor((setting.lineHeight - ascent - descent) / 2) + ascent;
    m_layout->beginLayout();
    double top = 0;
    for (QTextLine line = m_layout->createLine(); line.isValid(); line = m_layout->createLine()) {
        line.setLineWidth(std::max(1.0, setting.width) * m_fineness);
        line.setPosition(QPointF(0, (top + above) * m_fineness - line.ascent()));
        top += setting.lineHeight;
    }
    m_layout->endLayout();
}

TextBox::~TextBox() = default;

int TextBox::lineCount() const
{
    return std::max(1, m_layout->lineCount());
}

QRectF TextBox::lineRect(int line) const
{
    if (line >= m_layout->lineCount())
        return QRectF(0, 0, 0, m_setting.lineHeight);
    const QRectF natural = m_layout->lineAt(line).naturalTextRect();
    return QRectF(natural.left() / m_fineness, line * m_setting.lineHeight,
        natural.width() / m_fineness, m_setting.lineHeight);
}

double TextBox::baseline(int line) const
{
    if (line >= m_layout->lineCount())
        return m_setting.lineHeight * 0.7;
    const QTextLine at = m_layout->lineAt(line);
    return (at.y() + at.ascent()) / m_fineness;
}

int TextBox::lineAt(double y) const
{
    return std::clamp(static_cast<int>(std::floor(y / m_setting.lineHeight)), 0, lineCount() - 1);
}

// ---- places ----

Units TextBox::placeAt(QPointF at) const
{
    if (m_layout->lineCount() == 0)
        return 0;
    return m_text.place(m_layout->lineAt(lineAt(at.y())).xToCursor(at.x() * m_fineness));
}

std::optional<int> TextBox::characterAt(QPointF at) const
{
    if (m_layout->lineCount() == 0 || at.y() < 0 || at.y() >= height())
        return std::nullopt;
    const int index = lineAt(at.y());
    const QRectF words = lineRect(index);
    if (at.x() < words.left() || at.x() > words.right())
        return std::nullopt;
    return m_layout->lineAt(index).xToCursor(at.x() * m_fineness, QTextLine::CursorOnCharacter);
}

const ShownText::Chip* TextBox::chipAt(QPointF at) const
{
    const auto character = characterAt(at);
    for (const auto& chip : m_text.chips)
        if (character && *character >= chip.from && *character < chip.to)
            return &chip;
    return nullptr;
}

const ShownText::Address* TextBox::linkAt(QPointF at) const
{
    const auto character = characterAt(at);
    for (const auto& link : m_text.links)
        if (character && *character >= link.from && *character < link.to)
            return &link;
    return nullptr;
}

// ---- rectangles ----

QRectF TextBox::caretAt(Units place) const
{
    const int at = m_text.shown(place);
    const QTextLine line = m_layout->lineForTextPosition(at);
    if (!line.isValid())
        return QRectF(0, 0, 0, m_setting.lineHeight);
    return QRectF(line.cursorToX(at) / m_fineness, line.lineNumber() * m_setting.lineHeight, 0,
        m_setting.lineHeight);
}

void TextBox::addRects(int index, int from, int to, std::vector<QRectF>& rects) const
{
    const QTextLine line = m_layout->lineAt(index);
    const int start = line.textStart(), end = start + line.textLength();
    from = std::max(from, start);
    to = std::min(to, end);
    if (from >= to)
        return;
    const QRectF whole = lineRect(index);
    if (from == start && to == end) {
        rects.push_back(whole);
        return;
    }
    const auto add = [&](double x1, double x2) {
        const double left = std::min(x1, x2) / m_fineness, right = std::max(x1, x2) / m_fineness;
        if (!rects.empty() && rects.back().top() == whole.top() &&
            left - rects.back().right() < touching)
            rects.back().setRight(std::max(right, rects.back().right()));
        else if (right > left)
            rects.push_back(QRectF(left, whole.top(), right - left, whole.height()));
    };
    if (!m_isMixed) {
        add(line.cursorToX(from), line.cursorToX(to));
        return;
    }
    // Neighbours in the text may stand apart, and a cursor before a change of direction stands on
    // one of its two sides only: the glyphs tell.
    std::vector<std::pair<double, double>> runs;
    for (const QGlyphRun& run : line.glyphRuns(from, to - from))
        runs.emplace_back(run.boundingRect().left(), run.boundingRect().right());
    std::sort(runs.begin(), runs.end());
    for (const auto& [left, right] : runs)
        add(left, right);
}

std::vector<QRectF> TextBox::shownRects(int from, int to) const
{
    std::vector<QRectF> rects;
    const int lines = m_layout->lineCount();
    int first = 0;
    for (int step = lines; step > 0; step /= 2)
        while (first + step < lines && m_layout->lineAt(first + step).textStart() <= from)
            first += step;
    for (int i = first; i < lines && m_layout->lineAt(i).textStart() < to; ++i)
        addRects(i, from, to, rects);
    return rects;
}

std::vector<QRectF> TextBox::rects(Units from, Units to) const
{
    return shownRects(m_text.shown(from), m_text.shown(to));
}

// ---- drawing ----

void TextBox::drawChips(QPainter& painter, const Ink& ink, QPointF at, bool signs) const
{
    for (const ShownText::Chip& chip : m_text.chips) {
        const std::vector<QRectF> rects = shownRects(chip.from, chip.to);
        if (rects.empty())
            continue;
        const QColor letters = chip.look.exists ? ink.colors->accentInk : ink.colors->ink2;
        const double height = std::round(m_setting.lineHeight * 21 / 25);
        for (const QRectF& rect : rects) {
            const QRectF box(at.x() + rect.left(),
                at.y() + rect.top() + std::floor((m_setting.lineHeight - height) / 2), rect.width(),
                height);
            if (!signs) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(chip.look.exists ? ink.colors->accentSoft : ink.colors->field);
                painter.drawRoundedRect(box, radius::chip, radius::chip);
                continue;
            }
            // The sign stands where the label begins.
            const bool fromRight =
                readsRightToLeft(QStringView(m_text.words).mid(chip.from, chip.to - chip.from));
            const double x = fromRight ? box.right() - 4 - chipSign : box.left() + 4;
            drawIcon(painter, chip.look.sign,
                QRectF(
                    std::round(x), std::round(box.center().y() - chipSign / 2), chipSign, chipSign),
                letters);
            break;
        }
    }
}

void TextBox::draw(QPainter& painter, QPointF at, const Ink& ink) const
{
    const auto fill = [&](const std::vector<QRectF>& rects, const QColor& color, double inset,
                          double round) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        for (const QRectF& rect : rects)
            painter.drawRoundedRect(
                rect.translated(at).adjusted(0, inset, 0, -inset), round, round);
    };
    for (const auto& code : m_text.code)
        for (QRectF& rect : shownRects(code.from, code.to))
            fill({rect.adjusted(-2, 0, 2, 0)}, ink.colors->sunken, 3, 4);
    drawChips(painter, ink, at, false);
    if (ink.marks)
        for (const TextMark& mark : *ink.marks) {
            const std::vector<QRectF> marked = rects(mark.from, mark.to);
            const bool focus = mark.kind == TextMark::Kind::Focus;
            if (!focus)
                fill(marked, ink.colors->mark, 2, 3);
            if (mark.kind == TextMark::Kind::Found)
                continue;
            const double out = focus ? 2 : 1;
            painter.setPen(QPen(ink.colors->accent, focus ? 2 : 1.5));
            painter.setBrush(Qt::NoBrush);
            for (const QRectF& rect : marked)
                painter.drawRoundedRect(rect.translated(at).adjusted(-out, 1, out, -1), 4, 4);
        }
    if (ink.selection)
        fill(rects(ink.selection->first, ink.selection->second), ink.colors->textSelection, 0, 0);
    painter.setPen(ink.words);
    painter.save();
    painter.translate(at);
    painter.scale(1 / m_fineness, 1 / m_fineness);
    m_layout->draw(&painter, QPointF(0, 0));
    painter.restore();
    drawChips(painter, ink, at, true);
    if (ink.struckOut)
        for (int i = 0; i < m_layout->lineCount(); ++i) {
            const QRectF line = lineRect(i);
            const double y =
                std::round(at.y() + baseline(i) - QFontMetricsF(m_setting.font).xHeight() / 2);
            painter.fillRect(QRectF(at.x() + line.left(), y, line.width(), 1), ink.colors->ink4);
        }
}

} // namespace corvelle
