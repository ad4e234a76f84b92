// Pieces that are tables, or some rows of a long one.
#include "interface/page/LaidPiece.h"

#include "interface/page/CellColumn.h"
#include "interface/page/TableCells.h"
#include "interface/page/TableColumns.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double cellEnd = 7, cellRule = 1, tableRadius = 8;
constexpr double fadeWidth = 18; // where the table goes on beyond the column
// Only tables of the page itself are cut into parts: of those in the cells of a part no more is
// shown than can be laid out at once.
constexpr int mostInnerCells = 2'000;

Qt::Alignment alignmentOf(const TablePlan::Slot& slot)
{
    const QString align = slot.cell->cell ? slot.cell->cell->align : QString();
    return align == u"right"    ? Qt::AlignRight
           : align == u"center" ? Qt::AlignHCenter
                                : Qt::AlignLeading;
}

// How many rows are shown; at least one.
int rowsOf(const PieceFacts& facts, const TablePlan& plan)
{
    if (facts.rowCount > 0 || !facts.innerCells)
        return facts.rowCount > 0 ? facts.rowCount : plan.rowCount;
    for (const TablePlan::Slot& slot : plan.cells)
        if (--*facts.innerCells < 0 && slot.row > 0)
            return slot.row;
    return plan.rowCount;
}

void squeeze(std::vector<double>& edges, double width)
{
    const double factor = width / edges.back();
    for (double& edge : edges)
        edge = std::floor(edge * factor);
}

class TablePiece : public LaidPiece
{
public:
    TablePiece(const PieceFacts& facts, const TableCells& cells)
        : m_facts(facts)
        , m_room(pieceRoom(facts))
        , m_state(facts.table ? *facts.table : m_ownState)
        , m_firstRow(facts.firstRow)
        , m_rowCount(rowsOf(facts, cells.plan))
        , m_isWhole(facts.rowCount > 0 || m_rowCount == cells.plan.rowCount)
    {
        if (m_state.columns.empty())
            m_state.columns = columnEdges(columnWants(cells, facts), m_room.width);
        // In a cell there is nothing to scroll: a table that is too wide even so is squeezed.
        if (!facts.table && wholeWidth() > m_room.width)
            squeeze(m_ownState.columns, m_room.width);
        layOutCells(cells);
        placeRows();
        m_height = facts.gap + m_rows.back() + (m_isWhole ? 0 : line());
    }

    double overhang() const override { return std::max(0.0, wholeWidth() - m_room.width); }

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        const Palette& colors = m_facts.style->colors();
        drawQuoteBar(painter, at, m_facts, m_height);
        const QPointF corner = at + QPointF(m_room.left - shift(), m_facts.gap);
        const QRectF whole = QRectF(0, 0, wholeWidth(), m_rows.back()).translated(corner);
        const QRectF shown(at.x() + m_room.left, corner.y(), shownWidth(), whole.height());
        // Parts of a long table meet without a seam.
        const QRectF outline = whole.adjusted(0.5, m_facts.isFirst ? 0.5 : -2 * tableRadius, -0.5,
            m_facts.isLast ? -0.5 : 2 * tableRadius);
        QPainterPath shape;
        shape.addRoundedRect(outline, tableRadius, tableRadius);
        painter.save();
        painter.setClipRect(shown, Qt::IntersectClip);
        painter.save();
        painter.setClipPath(shape, Qt::IntersectClip);
        Paint inner = paint;
        inner.visible &= shown;
        for (const Box& box : m_boxes)
            if (box.rect.translated(corner).intersects(inner.visible))
                drawCell(painter, box, corner, inner);
        painter.restore();
        painter.setPen(QPen(colors.hairline, 1));
        painter.setBrush(selectedIn(m_facts, paint.selected) ? QBrush(colors.textSelection)
                                                             : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(outline, tableRadius, tableRadius);
        drawFades(painter, shown);
        painter.restore();
        if (!m_isWhole) {
            painter.setPen(colors.ink3);
            painter.setFont(m_facts.style->inCell(false).font(Block::Paragraph));
            painter.drawText(
                QRectF(whole.bottomLeft(), QSizeF(m_room.width, line())), Qt::AlignCenter, u"…"_s);
        }
    }

    PagePlace placeAt(QPointF at) const override
    {
        const QPointF inside = inTable(at);
        const Box* box = boxNear(inside);
        if (!box)
            return {{}, m_facts.block.start + (at.y() > m_height / 2 ? 1 : 0)};
        PagePlace place = box->column->placeAt(inside - box->words);
        place.cells.insert(place.cells.begin(), {m_facts.block.start, box->cell});
        return place;
    }

    PageTarget targetAt(QPointF at) const override
    {
        const QPointF inside = inTable(at);
        const Box* box = boxNear(inside);
        const bool isShown = at.x() >= m_room.left && at.x() < m_room.left + m_room.width;
        return isShown && box && box->rect.contains(inside)
                   ? box->column->targetAt(inside - box->words)
                   : PageTarget();
    }

    QRectF rectOf(const TextRange& range) const override
    {
        const Box* box = boxOf(range.cells);
        if (!box)
            return wholeRect();
        return box->column->rectOf(range).translated(box->words + origin());
    }

    QRectF caretAt(const PagePlace& place) const override
    {
        if (const Box* box = boxOf(place.cells))
            return box->column->caretAt(place).translated(box->words + origin());
        QRectF caret = wholeRect();
        if (place.at > m_facts.block.start)
            caret.setLeft(caret.right());
        caret.setWidth(0);
        return caret;
    }

private:
    struct Box
    {
        int cell = 0; // its number among all cells of the table
        TablePlan::Slot slot;
        std::unique_ptr<CellColumn> column;
        QRectF rect;
        QPointF words; // where they begin
    };

    double shift() const { return std::clamp(m_state.shift, 0.0, overhang()); }
    double wholeWidth() const { return m_state.columns.back(); }
    double shownWidth() const { return std::min(m_room.width, wholeWidth()); }
    // Of the table in the piece.
    QPointF origin() const { return QPointF(m_room.left - shift(), m_facts.gap); }
    QPointF inTable(QPointF at) const { return at - origin(); }
    QRectF wholeRect() const
    {
        return QRectF(m_room.left, m_facts.gap, shownWidth(), m_rows.back());
    }

    double line() const { return m_facts.style->inCell(false).lineHeight(Block::Paragraph); }
    // The room round the words of a cell.
    double side(double width) const { return cellSide(width, m_facts.style->zoom()); }
    double end() const { return std::round(cellEnd * m_facts.style->zoom()); }
    double columnEdge(int column) const
    {
        return m_state.columns[std::min(static_cast<size_t>(column), m_state.columns.size() - 1)];
    }
    double widthOf(const TablePlan::Slot& slot) const
    {
        return columnEdge(slot.column + slot.colSpan) - columnEdge(slot.column);
    }

    void layOutCells(const TableCells& cells)
    {
        PieceFacts facts = m_facts;
        int innerCells = mostInnerCells;
        if (!facts.innerCells)
            facts.innerCells = &innerCells;
        for (size_t i = 0; i < cells.plan.cells.size(); ++i) {
            const TablePlan::Slot& slot = cells.plan.cells[i];
            if (slot.row < m_firstRow || slot.row >= m_firstRow + m_rowCount)
                continue;
            const double width = widthOf(slot);
            Box box;
            box.cell = static_cast<int>(i);
            box.slot = slot;
            box.column = std::make_unique<CellColumn>(facts, cells.texts[i], cells.mostOfCell(),
                slot.isHeader, alignmentOf(slot), std::max(1.0, width - 2 * side(width)));
            m_boxes.push_back(std::move(box));
        }
    }

    void placeRows()
    {
        std::vector<double> heights(static_cast<size_t>(m_rowCount), line() + 2 * end() + cellRule);
        const auto wants = [this](const Box& box) {
            return std::ceil(box.column->height()) + 2 * end() + cellRule;
        };
        for (const Box& box : m_boxes)
            if (box.slot.rowSpan == 1) {
                double& row = heights[static_cast<size_t>(box.slot.row - m_firstRow)];
                row = std::max(row, wants(box));
            }
        // What a merged cell lacks, its last row gets.
        for (const Box& box : m_boxes)
            if (box.slot.rowSpan > 1) {
                const auto first = static_cast<size_t>(box.slot.row - m_firstRow);
                const size_t last =
                    std::min(first + static_cast<size_t>(box.slot.rowSpan), heights.size());
                double sum = 0;
                for (size_t i = first; i < last; ++i)
                    sum += heights[i];
                heights[last - 1] += std::max(0.0, wants(box) - sum);
            }
        m_rows.push_back(0);
        for (const double height : heights)
            m_rows.push_back(m_rows.back() + height);
        for (Box& box : m_boxes) {
            const auto first = static_cast<size_t>(box.slot.row - m_firstRow);
            const size_t last =
                std::min(first + static_cast<size_t>(box.slot.rowSpan), m_rows.size() - 1);
            box.rect = QRectF(columnEdge(box.slot.column), m_rows[first], widthOf(box.slot),
                m_rows[last] - m_rows[first]);
            box.words = box.rect.topLeft() + QPointF(side(box.rect.width()), end());
        }
    }

    // ---- places ----

    // Null where the piece's rows have no cell of their own.
    const Box* boxNear(QPointF at) const
    {
        const Box* nearest = nullptr;
        double least = -1;
        for (const Box& box : m_boxes) {
            const double x = std::max({box.rect.left() - at.x(), at.x() - box.rect.right(), 0.0}),
                         y = std::max({box.rect.top() - at.y(), at.y() - box.rect.bottom(), 0.0});
            if (box.rect.contains(at))
                return &box;
            if (const double away = x * x + y * y; least < 0 || away < least) {
                least = away;
                nearest = &box;
            }
        }
        return nearest;
    }

    const Box* boxOf(const CellPath& cells) const
    {
        if (cells.size() <= m_facts.depth)
            return nullptr;
        const int cell = cells[m_facts.depth].cell;
        const auto box = std::partition_point(
            m_boxes.begin(), m_boxes.end(), [cell](const Box& each) { return each.cell < cell; });
        return box != m_boxes.end() && box->cell == cell ? &*box : nullptr;
    }

    // ---- painting ----

    void drawCell(QPainter& painter, const Box& box, QPointF corner, const Paint& paint) const
    {
        const Palette& colors = m_facts.style->colors();
        const QRectF rect = box.rect.translated(corner);
        if (box.slot.isHeader)
            painter.fillRect(rect, colors.sunken);
        if (isSelected(box, paint.selected))
            painter.fillRect(rect, colors.textSelection);
        // Lines at the right and below, but not where the table's outline is.
        if (box.rect.right() < wholeWidth())
            painter.fillRect(
                QRectF(rect.right() - 1, rect.top(), 1, rect.height()), colors.hairline);
        if (box.rect.bottom() < m_rows.back() || !m_facts.isLast)
            painter.fillRect(
                QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), colors.hairline);
        box.column->draw(painter, corner + box.words, paintOf(box, paint));
    }

    // Whether it is one of the cells that are selected whole.
    bool isSelected(const Box& box, const Selected* selected) const
    {
        return selected && selected->rect && selected->range.cells.size() == m_facts.depth &&
               selected->range.from == m_facts.block.start && selected->rect->touches(box.slot);
    }

    Paint paintOf(const Box& box, const Paint& paint) const
    {
        const auto isInside = [&](const CellPath& cells) {
            return cells.size() > m_facts.depth &&
                   cells[m_facts.depth] == CellStep{m_facts.block.start, box.cell};
        };
        Paint inner = paint;
        if (paint.selected && !isInside(paint.selected->range.cells))
            inner.selected = nullptr;
        if (paint.focus && !isInside(paint.focus->cells))
            inner.focus = nullptr;
        const auto cellOf = [this](
                                const TextRange& range) { return range.cells[m_facts.depth].cell; };
        const auto first = std::partition_point(paint.found.begin(), paint.found.end(),
            [&](const TextRange& range) { return cellOf(range) < box.cell; });
        const auto end = std::partition_point(first, paint.found.end(),
            [&](const TextRange& range) { return cellOf(range) <= box.cell; });
        inner.found = {first, end};
        return inner;
    }

    void drawFades(QPainter& painter, const QRectF& shown) const
    {
        const auto fade = [&](double outer, double inner) {
            QLinearGradient veil(outer, 0, inner, 0);
            QColor clear = m_facts.style->colors().surface;
            veil.setColorAt(0, clear);
            clear.setAlpha(0);
            veil.setColorAt(1, clear);
            painter.fillRect(
                QRectF(std::min(outer, inner), shown.top() - 1, fadeWidth, shown.height() + 2),
                veil);
        };
        if (shift() > 0)
            fade(shown.left(), shown.left() + fadeWidth);
        if (shift() < overhang())
            fade(shown.right(), shown.right() - fadeWidth);
    }

    const PieceFacts m_facts;
    const PieceRoom m_room;
    TableState m_ownState; // of a table in another
    TableState& m_state;
    const int m_firstRow, m_rowCount;
    const bool m_isWhole;       // all its rows are shown, here or in other parts
    std::vector<double> m_rows; // edges, from 0 on
    std::vector<Box> m_boxes;   // by their numbers
};

} // namespace

std::unique_ptr<LaidPiece> layOutTable(const PieceFacts& facts, const BlockAttachment& table)
{
    const auto cells = tableCells(table);
    // A table without a cell is told in words, as any block that can't be shown.
    return cells->plan.cells.empty() ? layOutWords(facts)
                                     : std::make_unique<TablePiece>(facts, *cells);
}

} // namespace corvelle
