#include "interface/canvas/FaceBrush.h"

#include <QLinearGradient>
#include <QPainterPath>

namespace corvelle {
namespace {

using Line = CardFace::Line;

constexpr double sidePt = 16, titleGapPt = 7, lineGapPt = 3, headingGapPt = 7, fadePt = 40;
constexpr double boxPt = 10.5; // a to-do's
constexpr double barPixels = 2;

// How far the words of a block stand in.
double indentPt(Line::Kind kind)
{
    switch (kind) {
    case Line::Kind::Bullet:
        return 11;
    case Line::Kind::Number:
        return 14;
    case Line::Kind::Todo:
    case Line::Kind::Done:
        return 16;
    case Line::Kind::Quote:
        return 9;
    default:
        return 0;
    }
}

TypeStyle styleOf(Line::Kind kind)
{
    if (kind == Line::Kind::Heading)
        return TypeStyle::CardHeading;
    return kind == Line::Kind::Code ? TypeStyle::CardCode : TypeStyle::CardText;
}

QColor inkOf(Line::Kind kind, const Palette& colors)
{
    if (kind == Line::Kind::Heading)
        return colors.ink;
    return kind == Line::Kind::Done ? colors.ink3 : colors.ink2;
}

void drawTodoBox(const FaceBrush& brush, const QRectF& box, bool done)
{
    QPainter& painter = brush.painter;
    const double side = box.width() / 11; // the tick is drawn on a grid of 11
    if (!done) {
        const double line = brush.px(1.2);
        painter.setPen(QPen(brush.colors.ink4, line));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(line / 2, line / 2, -line / 2, -line / 2),
            brush.px(3) - line / 2, brush.px(3) - line / 2);
        return;
    }
    brush.fillRounded(box, brush.px(3), brush.colors.accent);
    QPainterPath tick(box.topLeft() + QPointF(2.8, 5.7) * side);
    tick.lineTo(box.topLeft() + QPointF(4.8, 7.7) * side);
    tick.lineTo(box.topLeft() + QPointF(8.3, 3.7) * side);
    painter.strokePath(
        tick, QPen(brush.colors.onAccent, 1.4 * side, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

// Draws the blocks one below the other until the card ends.
class BlockWriter
{
public:
    BlockWriter(const FaceBrush& brush, double top)
        : m_brush(brush)
        , m_left(brush.card.x() + brush.px(sidePt))
        , m_width(brush.card.width() - 2 * brush.px(sidePt))
        , m_y(top)
    {}

    void write(const std::vector<Line>& lines)
    {
        double gapAbove = titleGapPt;
        for (const Line& line : lines) {
            if (line.kind == Line::Kind::Heading)
                gapAbove = std::max(gapAbove, headingGapPt);
            m_y += m_brush.px(gapAbove);
            if (m_y >= m_brush.card.bottom())
                return;
            write(line);
            gapAbove = lineGapPt;
        }
    }

private:
    void write(const Line& line)
    {
        const bool code = line.kind == Line::Kind::Code;
        const Lettering lettering = m_brush.lettering(styleOf(line.kind));
        const double indent = m_brush.px(indentPt(line.kind));
        // The first lines would fill the card; what comes after them is never seen.
        const int most =
            code ? 1 : static_cast<int>((m_brush.card.bottom() - m_y) / lettering.lineHeight()) + 1;
        const std::vector<QString> rows = lettering.lines(line.text, m_width - indent, most);
        const double height = lettering.lineHeight() * std::max<std::size_t>(1, rows.size());

        if (code) {
            const double pad = m_brush.px(3);
            m_brush.fillRounded(QRectF(m_left - 2 * pad, m_y, m_width + 4 * pad, height + 2 * pad),
                m_brush.px(4), m_brush.colors.sunken);
            m_y += pad;
        }
        drawSign(line, lettering, height);
        for (const QString& row : rows) {
            drawRow(line.kind, lettering,
                QRectF(m_left + indent, m_y, m_width - indent, lettering.lineHeight()), row);
            m_y += lettering.lineHeight();
        }
        if (rows.empty())
            m_y += lettering.lineHeight();
        if (code)
            m_y += m_brush.px(3);
    }

    void drawRow(
        Line::Kind kind, const Lettering& lettering, const QRectF& box, const QString& row) const
    {
        if (m_brush.detail == Detail::Full) {
            m_brush.painter.setPen(inkOf(kind, m_brush.colors));
            lettering.draw(m_brush.painter, box, Qt::AlignLeft, row);
            return;
        }
        const double top = m_brush.sharp(box.center().y() - barPixels / 2);
        const double width = std::min(lettering.width(row), box.width());
        m_brush.bar(
            QRectF(box.left(), top, width, barPixels), kind == Line::Kind::Heading ? 0.95 : 0.5);
    }

    // What stands before the words: a dot, a number, a box, a rule.
    void drawSign(const Line& line, const Lettering& lettering, double height) const
    {
        switch (line.kind) {
        case Line::Kind::Bullet:
            m_brush.fillRounded(
                QRectF(m_left + m_brush.px(2), m_y + m_brush.px(6.5), m_brush.px(3), m_brush.px(3)),
                m_brush.px(1.5), m_brush.colors.ink3);
            break;
        case Line::Kind::Number:
            if (m_brush.detail == Detail::Full) {
                m_brush.painter.setPen(m_brush.colors.ink3);
                lettering.draw(m_brush.painter,
                    QRectF(m_left, m_y, m_width, lettering.lineHeight()), Qt::AlignLeft,
                    QString::number(line.number) + u'.');
            }
            break;
        case Line::Kind::Todo:
        case Line::Kind::Done: {
            const QRectF exact(m_left, m_y + m_brush.px(2.5), m_brush.px(boxPt), m_brush.px(boxPt));
            const double side = std::max(3.0, m_brush.sharp(exact.width()));
            drawTodoBox(m_brush,
                QRectF(m_brush.sharp(exact.x()), m_brush.sharp(exact.y()), side, side),
                line.kind == Line::Kind::Done);
            break;
        }
        case Line::Kind::Quote:
            m_brush.fillRounded(
                QRectF(m_left, m_y + m_brush.px(1), m_brush.px(2), height - m_brush.px(2)),
                m_brush.px(1), m_brush.colors.hairlineStrong);
            break;
        default:
            break;
        }
    }

    const FaceBrush& m_brush;
    double m_left;
    double m_width;
    double m_y;
};

// The last lines sink into the surface: nothing is cut off in the middle of a letter.
void drawFade(const FaceBrush& brush)
{
    const QRectF area = brush.box(
        0, brush.card.height() / brush.scale - fadePt, brush.card.width() / brush.scale, fadePt);
    QColor clear = brush.colors.surface;
    clear.setAlpha(0);
    QLinearGradient fade(area.topLeft(), area.bottomLeft());
    fade.setColorAt(0, clear);
    fade.setColorAt(0.82, brush.colors.surface);
    brush.painter.fillRect(area, fade);
}

} // namespace

void drawPageFace(const FaceBrush& brush, const CardFace& face)
{
    const Lettering title = brush.lettering(TypeStyle::CardTitle, leastTitlePixels);
    const double left = brush.card.x() + brush.px(sidePt);
    const double width = brush.card.width() - 2 * brush.px(sidePt);
    double y = brush.card.y() + brush.px(sidePt);
    brush.painter.setPen(brush.colors.ink);
    for (const QString& line : title.lines(face.title, width, 2)) {
        title.draw(brush.painter, QRectF(left, y, width, title.lineHeight()), Qt::AlignLeft, line);
        y += title.lineHeight();
    }
    BlockWriter(brush, y).write(face.lines);
    drawFade(brush);
}

} // namespace corvelle
