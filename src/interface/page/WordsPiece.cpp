// Pieces that are words: paragraphs, headings, items, to-dos, quotes and code.
#include "interface/page/LaidPiece.h"

#include "interface/theme/Fonts.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double boxSide = 17, dotSide = 5;
constexpr double codeRadius = 10;
constexpr Units longestColored = 100'000; // of a block of code; more is left in one ink

void drawToDoBox(QPainter& painter, QPointF at, double zoom, bool isDone, const Palette& colors)
{
    painter.save();
    painter.translate(at);
    painter.scale(zoom, zoom);
    const QRectF box(0, 0, boxSide, boxSide);
    if (isDone) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accent);
        painter.drawRoundedRect(box, 5, 5);
        QPainterPath tick(QPointF(4.6, 8.8));
        tick.lineTo(QPointF(7.3, 11.5));
        tick.lineTo(QPointF(12.4, 5.8));
        painter.strokePath(
            tick, QPen(colors.onAccent, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    } else {
        painter.setPen(QPen(colors.ink4, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(0.75, 0.75, -0.75, -0.75), 4.25, 4.25);
    }
    painter.restore();
}

// The break that a long block was cut behind would be an empty line.
Units wordsEnd(const PieceFacts& facts)
{
    const bool atBreak = !facts.isLast && facts.to > facts.from &&
                         facts.text->at(facts.block.start + facts.to - 1) == lineBreak;
    return facts.to - (atBreak ? 1 : 0);
}

class WordsPiece : public LaidPiece
{
public:
    explicit WordsPiece(const PieceFacts& facts)
        : m_facts(facts)
        , m_style(facts.block.what())
        , m_room(pieceRoom(facts))
    {
        const PageStyle& style = *facts.style;
        const double inset = style.inset(m_style.kind);
        const bool code = m_style.kind == Block::Code;
        ShownText shown = shownText(*facts.text, facts.block.start + facts.from,
            facts.block.start + wordsEnd(facts), m_style.kind, style, *facts.items);
        if (code && !m_style.language.isEmpty() && facts.block.length() <= longestColored)
            colorCode(shown, facts.text->text(facts.block.start, facts.block.end), facts.from,
                m_style.language, style);
        m_box.emplace(std::move(shown),
            TextBox::Setting{style.font(m_style.kind), style.lineHeight(m_style.kind),
                m_room.width - inset - (code ? codeSide : 0),
                code ? Qt::AlignLeading : facts.alignment, facts.rightToLeft, style.isDark()});
        m_origin = QPointF(m_room.left + (facts.rightToLeft && !code ? 0 : inset),
            facts.gap + (code && facts.isFirst ? codeEnd : 0));
        m_height = m_origin.y() + m_box->height() + (code && facts.isLast ? codeEnd : 0);
    }

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        const Palette& colors = m_facts.style->colors();
        drawQuoteBar(painter, at, m_facts, m_height);
        if (m_style.kind == Block::Code)
            drawCodeGround(painter, at);
        else if (m_facts.isFirst)
            drawMarker(painter, at);
        TextBox::Ink ink{m_facts.style->ink(m_style), &colors, {}, {}, m_style.kind == Block::Done};
        if (const auto selected = selectedIn(m_facts, paint.selected))
            ink.selection = {selected->first - m_facts.start(), selected->second - m_facts.start()};
        const std::vector<TextMark> marks = marksIn(paint);
        ink.marks = &marks;
        m_box->draw(painter, at + m_origin, ink);
        if (m_style.kind == Block::Code && m_facts.isFirst && !m_style.language.isEmpty())
            drawLanguage(painter, at);
    }

    PagePlace placeAt(QPointF at) const override
    {
        return {{}, m_facts.start() + m_box->placeAt(at - m_origin)};
    }

    PageTarget targetAt(QPointF at) const override
    {
        if (const auto* chip = m_box->chipAt(at - m_origin))
            return {chip->look.exists ? chip->id : QString(), {}};
        if (const auto* link = m_box->linkAt(at - m_origin))
            return {{}, link->link};
        return {};
    }

    QRectF rectOf(const TextRange& range) const override
    {
        const auto rects = m_box->rects(range.from - m_facts.start(), range.to - m_facts.start());
        return rects.empty() ? QRectF(m_origin, QSizeF(1, m_box->height()))
                             : rects.front().translated(m_origin);
    }

    QRectF caretAt(const PagePlace& place) const override
    {
        return m_box->caretAt(place.at - m_facts.start()).translated(m_origin);
    }

private:
    std::vector<TextMark> marksIn(const Paint& paint) const
    {
        std::vector<TextMark> marks;
        const auto add = [&](const TextRange& range, TextMark::Kind kind) {
            marks.push_back({range.from - m_facts.start(), range.to - m_facts.start(), kind});
        };
        for (const TextRange& range : paint.found)
            add(range, &range == paint.current ? TextMark::Kind::Current : TextMark::Kind::Found);
        if (liesIn(m_facts, paint.focus))
            add(*paint.focus, TextMark::Kind::Focus);
        return marks;
    }

    double markerLeft(double offset, double width) const
    {
        return m_facts.rightToLeft ? m_room.left + m_room.width - offset - width
                                   : m_room.left + offset;
    }

    void drawMarker(QPainter& painter, QPointF at) const
    {
        const Palette& colors = m_facts.style->colors();
        const double line = m_facts.style->lineHeight(m_style.kind);
        const double zoom = m_facts.style->zoom();
        const double top = at.y() + m_origin.y();
        switch (m_style.kind) {
        case Block::Bullet: {
            const double side = dotSide * zoom;
            const QRectF dot(at.x() + markerLeft(8 * zoom, side),
                top + std::floor((line - side) / 2), side, side);
            const bool hollow = m_style.depth % 2 == 1;
            painter.setPen(hollow ? QPen(colors.ink2, 1) : QPen(Qt::NoPen));
            painter.setBrush(hollow ? QBrush(Qt::NoBrush) : QBrush(colors.ink2));
            painter.drawEllipse(hollow ? dot.adjusted(0.5, 0.5, -0.5, -0.5) : dot);
            break;
        }
        case Block::Ordered: {
            const QString number = QString::number(m_facts.number) + u'.';
            const QFont font = m_facts.style->font(Block::Paragraph);
            const double width = QFontMetricsF(font).horizontalAdvance(number);
            painter.setFont(font);
            painter.setPen(colors.ink2);
            // Right against its words; a wide number hangs out.
            painter.drawText(
                QPointF(at.x() + markerLeft(18 * zoom - width, width), top + m_box->baseline(0)),
                number);
            break;
        }
        case Block::Todo:
        case Block::Done: {
            const double side = boxSide * zoom;
            const QPointF box(at.x() + markerLeft(zoom, side), top + std::floor((line - side) / 2));
            drawToDoBox(painter, box, zoom, m_style.kind == Block::Done, colors);
            break;
        }
        default:
            break;
        }
    }

    // Long code is several pieces: its ground is round at its own ends only.
    void drawCodeGround(QPainter& painter, QPointF at) const
    {
        const Palette& colors = m_facts.style->colors();
        const QRectF ground(
            at.x() + m_room.left, at.y() + m_facts.gap, m_room.width, m_height - m_facts.gap);
        painter.save();
        painter.setClipRect(ground.adjusted(-1, 0, 1, 0), Qt::IntersectClip);
        painter.setPen(QPen(colors.hairlineFaint, 1));
        painter.setBrush(colors.sunken);
        painter.drawRoundedRect(ground.adjusted(0.5, m_facts.isFirst ? 0.5 : -2 * codeRadius, -0.5,
                                    m_facts.isLast ? -0.5 : 2 * codeRadius),
            codeRadius, codeRadius);
        painter.restore();
    }

    void drawLanguage(QPainter& painter, QPointF at) const
    {
        const Lettering lettering(TypeStyle::Key);
        const QString name =
            lettering.elided(m_style.language.left(60), m_room.width / 2, Qt::ElideRight);
        const QRectF place(at.x() + m_room.left, at.y() + m_facts.gap + 10, m_room.width - 12, 16);
        if (at.x() + m_origin.x() + m_box->lineRect(0).right() + 8 >
            place.right() - lettering.width(name))
            return; // the first line has the room
        painter.setPen(m_facts.style->colors().ink3);
        lettering.draw(painter, place, Qt::AlignRight, name);
    }

    const PieceFacts m_facts;
    const BlockStyle m_style;
    const PieceRoom m_room;
    std::optional<TextBox> m_box;
    QPointF m_origin; // of the words
};

class RulePiece : public LaidPiece
{
public:
    explicit RulePiece(const PieceFacts& facts)
        : m_facts(facts)
        , m_room(pieceRoom(facts))
    {
        m_height = facts.gap + 13;
    }

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        drawQuoteBar(painter, at, m_facts, m_height);
        const QRectF rule(at.x() + m_room.left, at.y() + m_facts.gap + 6, m_room.width, 1);
        painter.fillRect(rule, m_facts.style->colors().hairlineStrong);
        if (selectedIn(m_facts, paint.selected))
            painter.fillRect(rule.adjusted(0, -6, 0, 6), m_facts.style->colors().textSelection);
    }
    PagePlace placeAt(QPointF) const override { return {{}, m_facts.block.start}; }
    QRectF rectOf(const TextRange&) const override { return QRectF(0, 0, 1, m_height); }
    QRectF caretAt(const PagePlace&) const override
    {
        return QRectF(m_room.left, m_facts.gap, 0, m_height - m_facts.gap);
    }

private:
    const PieceFacts m_facts;
    const PieceRoom m_room;
};

} // namespace

std::unique_ptr<LaidPiece> layOutWords(const PieceFacts& facts)
{
    return std::make_unique<WordsPiece>(facts);
}

std::unique_ptr<LaidPiece> layOutRule(const PieceFacts& facts)
{
    return std::make_unique<RulePiece>(facts);
}

} // namespace corvelle
