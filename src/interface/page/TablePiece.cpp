// Pieces that are tables, or some rows of a long one.
#include "interface/page/LaidPiece.h"

#include "interface/page/TableCells.h"
#include "interface/theme/Fonts.h"
#include "pages/TablePlan.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <numeric>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double cellSide = 12, cellEnd = 7, cellLine = 20, cellRule = 1, tableRadius = 8;
constexpr double leastColumn = 48;
constexpr size_t sampledCells = 400;  // whose words tell how wide columns want to be,
constexpr Units sampledUnits = 2'000; // and how many of each

Qt::Alignment alignmentOf(const TablePlan::Slot& slot)
{
    const QString align = slot.cell->cell ? slot.cell->cell->align : QString();
    return align == u"right"    ? Qt::AlignRight
           : align == u"center" ? Qt::AlignHCenter
                                : Qt::AlignLeading;
}

// The room beside the words, less where that would leave them none.
double sideOf(double width)
{
    return std::floor(std::min(cellSide, width / 4));
}

QFont cellFont(bool head, double zoom)
{
    return corvelle::font(head ? TypeStyle::SmallStrong : TypeStyle::LabelText, zoom);
}

double naturalWidth(const QString& words, bool head, double zoom)
{
    const QFontMetricsF metrics(cellFont(head, zoom));
    double widest = 0;
    for (const QString& line : words.split(lineBreak))
        widest = std::max(widest, metrics.horizontalAdvance(line.left(200)));
    return widest + 2 * cellSide + 1;
}

// What each column wants, cut down or stretched to fill the width.
std::vector<double> fitted(std::vector<double> wanted, double width)
{
    const auto count = static_cast<double>(wanted.size());
    double sum = std::accumulate(wanted.begin(), wanted.end(), 0.0);
    if (sum > width) {
        // Columns that want less than their share get what they want; the others share the rest.
        std::vector<double> given(wanted.size(), -1);
        double left = width, open = count;
        for (bool changed = true; changed && open > 0;) {
            changed = false;
            const double share = left / open;
            for (size_t i = 0; i < wanted.size(); ++i)
                if (given[i] < 0 && wanted[i] <= share) {
                    given[i] = wanted[i];
                    left -= wanted[i];
                    --open;
                    changed = true;
                }
        }
        for (double& column : given)
            if (column < 0)
                column = left / open;
        wanted = given;
        sum = std::accumulate(wanted.begin(), wanted.end(), 0.0);
    }
    // Edges stand on whole pixels.
    double edge = 0, ideal = 0;
    for (double& column : wanted) {
        ideal += column * width / std::max(1.0, sum);
        column = std::round(ideal) - edge;
        edge += column;
    }
    return wanted;
}

class TablePiece : public LaidPiece
{
public:
    TablePiece(const PieceFacts& facts, const TableCells& cells)
        : m_facts(facts)
        , m_room(pieceRoom(facts))
        , m_firstRow(facts.firstRow)
        , m_rowCount(facts.rowCount > 0 ? facts.rowCount : cells.plan.rowCount)
    {
        measureColumns(cells);
        layOutCells(cells);
        placeRows();
        m_height = facts.gap + m_rows.back();
    }

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        const Palette& colors = m_facts.style->colors();
        drawQuoteBar(painter, at, m_facts, m_height);
        painter.save();
        painter.translate(at.x() + m_room.left, at.y() + m_facts.gap);
        const QRectF whole(0, 0, m_columns.back(), m_rows.back());
        // Parts of a long table meet without a seam.
        const QRectF outline = whole.adjusted(0.5, m_facts.isFirst ? 0.5 : -2 * tableRadius, -0.5,
            m_facts.isLast ? -0.5 : 2 * tableRadius);
        QPainterPath shape;
        shape.addRoundedRect(outline, tableRadius, tableRadius);
        painter.setClipRect(whole, Qt::IntersectClip);
        painter.setClipPath(shape, Qt::IntersectClip);
        for (const Box& box : m_boxes)
            drawCell(painter, box, paint);
        painter.setClipping(false);
        painter.restore();
        painter.save();
        painter.translate(at.x() + m_room.left, at.y() + m_facts.gap);
        painter.setClipRect(whole.adjusted(-1, 0, 1, 0), Qt::IntersectClip);
        painter.setPen(QPen(colors.hairline, 1));
        painter.setBrush(paint.selection ? QBrush(colors.textSelection) : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(outline, tableRadius, tableRadius);
        painter.restore();
    }

    Units placeAt(QPointF at) const override { return at.y() > m_height / 2 ? 1 : 0; }

    PageTarget targetAt(QPointF at) const override
    {
        const QPointF inside = at - QPointF(m_room.left, m_facts.gap);
        for (const Box& box : m_boxes) {
            const QPointF words = inside - box.words;
            if (!box.rect.contains(inside))
                continue;
            if (const auto* chip = box.text->chipAt(words))
                return {chip->look.exists ? chip->id : QString(), {}};
            if (const auto* link = box.text->linkAt(words))
                return {{}, link->link};
        }
        return {};
    }

    QRectF rectOf(const PieceMark& mark) const override
    {
        for (const Box& box : m_boxes)
            if (box.cell == mark.cell)
                return box.rect.translated(m_room.left, m_facts.gap);
        return QRectF(m_room.left, m_facts.gap, 1, 1);
    }

private:
    struct Box
    {
        int cell = 0; // its number among all cells of the table
        TablePlan::Slot slot;
        std::unique_ptr<TextBox> text;
        QRectF rect;
        QPointF words; // where they begin
    };

    // The same for all parts of a table.
    void measureColumns(const TableCells& cells)
    {
        const TablePlan& plan = cells.plan;
        std::vector<double> wanted(static_cast<size_t>(plan.columnCount), leastColumn);
        for (size_t i = 0; i < std::min(plan.cells.size(), sampledCells); ++i) {
            const TablePlan::Slot& slot = plan.cells[i];
            if (slot.colSpan == 1) {
                double& column = wanted[static_cast<size_t>(slot.column)];
                const FlatText& text = cells.texts[i];
                column = std::max(
                    column, naturalWidth(text.text(0, std::min(text.length(), sampledUnits)),
                                slot.isHeader, m_facts.style->zoom()));
            }
        }
        for (size_t i = 0; i < wanted.size(); ++i)
            if (plan.widths[i] > 0)
                wanted[i] = std::max(leastColumn, plan.widths[i]);
        m_columns.push_back(0);
        for (const double width : fitted(std::move(wanted), m_room.width))
            m_columns.push_back(m_columns.back() + width);
    }

    void layOutCells(const TableCells& cells)
    {
        for (size_t i = 0; i < cells.plan.cells.size(); ++i) {
            const TablePlan::Slot& slot = cells.plan.cells[i];
            if (slot.row < m_firstRow || slot.row >= m_firstRow + m_rowCount)
                continue;
            const FlatText& text = cells.texts[i];
            const double width = columnEdge(slot.column + slot.colSpan) - columnEdge(slot.column);
            const Units end = std::min(text.length(), cells.mostOfCell());
            ShownText shown =
                shownText(text, 0, end, Block::Paragraph, *m_facts.style, *m_facts.items);
            if (end < text.length())
                shown.words += u'…';
            const bool reversed = readsRightToLeft(shown.words);
            Box box;
            box.cell = static_cast<int>(i);
            box.slot = slot;
            box.text = std::make_unique<TextBox>(
                std::move(shown), TextBox::Setting{cellFont(slot.isHeader, m_facts.style->zoom()),
                                      lineHeight(), std::max(1.0, width - 2 * sideOf(width)),
                                      alignmentOf(slot), reversed, m_facts.style->isDark()});
            m_boxes.push_back(std::move(box));
        }
    }

    double lineHeight() const { return std::round(cellLine * m_facts.style->zoom()); }
    double columnEdge(int column) const
    {
        return m_columns[std::min(static_cast<size_t>(column), m_columns.size() - 1)];
    }

    void placeRows()
    {
        std::vector<double> heights(
            static_cast<size_t>(m_rowCount), lineHeight() + 2 * cellEnd + cellRule);
        const auto wants = [](const Box& box) {
            return box.text->height() + 2 * cellEnd + cellRule;
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
            const double left = columnEdge(box.slot.column);
            box.rect =
                QRectF(left, m_rows[first], columnEdge(box.slot.column + box.slot.colSpan) - left,
                    m_rows[last] - m_rows[first]);
            box.words = box.rect.topLeft() + QPointF(sideOf(box.rect.width()), cellEnd);
        }
    }

    void drawCell(QPainter& painter, const Box& box, const Paint& paint) const
    {
        const Palette& colors = m_facts.style->colors();
        if (box.slot.isHeader)
            painter.fillRect(box.rect, colors.sunken);
        // Lines at the right and below, but not where the table's outline is.
        if (box.rect.right() < m_columns.back())
            painter.fillRect(QRectF(box.rect.right() - 1, box.rect.top(), 1, box.rect.height()),
                colors.hairline);
        if (box.rect.bottom() < m_rows.back() || !m_facts.isLast)
            painter.fillRect(QRectF(box.rect.left(), box.rect.bottom() - 1, box.rect.width(), 1),
                colors.hairline);
        TextBox::Ink ink{box.slot.isHeader ? colors.ink2 : colors.ink, &colors, {}, {}, false};
        std::vector<TextMark> marks;
        if (paint.marks) {
            for (const PieceMark& mark : *paint.marks)
                if (mark.cell == box.cell)
                    marks.push_back(mark.mark);
            ink.marks = &marks;
        }
        box.text->draw(painter, box.words, ink);
    }

    const PieceFacts m_facts;
    const PieceRoom m_room;
    const int m_firstRow, m_rowCount;
    std::vector<double> m_columns, m_rows; // edges, from 0 on
    std::vector<Box> m_boxes;
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
