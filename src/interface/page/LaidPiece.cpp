#include "interface/page/LaidPiece.h"

#include "interface/page/TableCells.h"

#include <QPainter>

#include <algorithm>

namespace corvelle {

std::unique_ptr<LaidPiece> layOutPiece(const PieceFacts& facts)
{
    const BlockStyle& style = facts.block.what();
    if (style.kind == Block::Divider)
        return layOutRule(facts);
    if (facts.block.length() == 1) {
        const CharStyleRef only = facts.text->styleAt(facts.block.start);
        if (only && only->attachment) {
            const BlockAttachment& attachment = *only->attachment;
            if (attachment.kind == PageNode::Type::Table && facts.depth < deepestTable)
                return layOutTable(facts, attachment);
            if (attachment.kind == PageNode::Type::Image)
                return layOutPicture(facts, attachment);
            if (attachment.kind == PageNode::Type::Embed)
                return layOutEmbed(facts, attachment);
        }
    }
    return layOutWords(facts);
}

PieceRoom pieceRoom(const PieceFacts& facts)
{
    // However deep, some room stays.
    const double leastWidth = std::min(160.0, facts.width / 2);
    const BlockStyle& style = facts.block.what();
    const double wanted =
        style.depth * facts.style->indent() + (style.isQuoted() ? facts.style->quoteInset() : 0);
    const double inset = std::max(0.0, std::min(wanted, facts.width - leastWidth));
    return {facts.rightToLeft ? 0 : inset, facts.width - inset};
}

void drawQuoteBar(QPainter& painter, QPointF at, const PieceFacts& facts, double height)
{
    const BlockStyle& style = facts.block.what();
    if (!style.isQuoted())
        return;
    const double zoom = facts.style->zoom(), barWidth = 3 * zoom;
    const PieceRoom room = pieceRoom(facts);
    const double x = facts.rightToLeft
                         ? at.x() + room.width + facts.style->quoteInset() - zoom - barWidth
                         : at.x() + room.left - facts.style->quoteInset() + zoom;
    // What is quoted together has one bar, though each piece paints its own part.
    const double top = facts.quoteGoesOn ? -2 : facts.gap + 2;
    painter.fillRect(
        QRectF(x, at.y() + top, barWidth, height - 2 - top), facts.style->colors().hairlineStrong);
}

std::span<const TextRange> foundWithin(
    std::span<const TextRange> found, size_t depth, Units from, Units to)
{
    auto first = std::partition_point(found.begin(), found.end(),
        [=](const TextRange& range) { return range.placeAt(depth) < from; });
    // One may reach in from the part above.
    while (first != found.begin() && (first - 1)->cells.size() == depth && (first - 1)->to > from)
        --first;
    const auto end = std::partition_point(
        first, found.end(), [=](const TextRange& range) { return range.placeAt(depth) < to; });
    return {first, end};
}

std::optional<std::pair<Units, Units>> selectedIn(const PieceFacts& facts, const Selected* selected)
{
    if (!selected || selected->rect || selected->range.cells.size() != facts.depth)
        return std::nullopt;
    const Units first = std::max(selected->range.from, facts.start()),
                last = std::min(selected->range.to, facts.end());
    const bool emptyBlock = facts.block.length() == 0 &&
                            selected->range.from <= facts.block.start &&
                            selected->range.to > facts.block.start;
    if (first >= last && !emptyBlock)
        return std::nullopt;
    return std::pair(first, last);
}

bool liesIn(const PieceFacts& facts, const TextRange* range)
{
    if (!range || range->cells.size() < facts.depth)
        return false;
    const Units from = range->placeAt(facts.depth);
    const Units to = range->cells.size() == facts.depth ? range->to : from + 1;
    return from < facts.end() && to > facts.start();
}

} // namespace corvelle
