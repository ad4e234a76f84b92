// What stands in a cell of a table, laid out: its blocks one below another, as on a page.
#pragma once

#include "interface/page/LaidPiece.h"

namespace corvelle {

class CellColumn : public LaidPiece
{
public:
    // `table` tells of the table that the cell is in. What is beyond `most` units isn't shown.
    CellColumn(const PieceFacts& table, FlatText text, Units most, bool isHead,
        Qt::Alignment alignment, double width);
    ~CellColumn() override;

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override;
    PagePlace placeAt(QPointF at) const override;
    PageTarget targetAt(QPointF at) const override;
    QRectF rectOf(const TextRange& range) const override;
    QRectF caretAt(const PagePlace& place) const override;

private:
    struct Part
    {
        PieceFacts facts;
        std::unique_ptr<LaidPiece> piece;
        double top = 0;
    };
    const Part& partAt(Units place) const;
    const Part& partAtHeight(double y) const;

    const FlatText m_text;
    const PageStyle m_style;
    const size_t m_depth;
    std::vector<Part> m_parts; // never empty
};

} // namespace corvelle
