// A piece of a page as it is laid out: it knows its height, draws itself and finds what is at a
// point.
//
// A piece is a block, or a part of a long one. Points and rectangles count from its top left, whose
// x is that of the page's column. On the main thread.
#pragma once

#include "interface/page/PagePictures.h"
#include "interface/page/PagePlace.h"
#include "interface/page/PageStyle.h"
#include "interface/page/PageTargets.h"
#include "interface/page/TextBox.h"

#include <memory>
#include <span>

namespace corvelle {

// What the parts of a long table share, for as long as its columns keep their widths.
struct TableState
{
    double shift = 0;            // how far it is scrolled sideways
    std::vector<double> columns; // their edges from 0 on, once they are measured
};

// What a piece is laid out from.
struct PieceFacts
{
    const FlatText* text = nullptr;
    FlatText::BlockAt block;
    Units from = 0, to = 0;             // of the block, from its start
    int firstRow = 0, rowCount = 0;     // of a table: the rows that the piece holds; 0 for all
    bool isFirst = true, isLast = true; // of its block
    bool rightToLeft = false;
    bool quoteGoesOn = false; // the piece above is quoted as well
    int number = 1;           // of an item in a numbered list
    double gap = 0;           // above it
    double width = 680;       // of the column
    size_t depth = 0;         // how many tables are around the text
    Qt::Alignment alignment = Qt::AlignLeading;
    const PageStyle* style = nullptr;
    const ItemLooks* items = nullptr;
    PagePictures* pictures = nullptr;
    TableState* table = nullptr; // of a table in the page's own text
    // Of a table in another: how many cells may still be laid out. There only while they are.
    int* innerCells = nullptr;

    Units start() const { return block.start + from; }
    Units end() const { return block.start + to; }
};

class LaidPiece
{
public:
    virtual ~LaidPiece() = default;

    // The gap above it included.
    double height() const { return m_height; }

    // What is set off in the page. A piece gets what may lie in it, and takes what does.
    struct Paint
    {
        QRectF visible; // nothing is to be seen beyond it
        const Selected* selected = nullptr;
        std::span<const TextRange> found; // in order
        const TextRange* current = nullptr;
        const TextRange* focus = nullptr;
    };
    virtual void draw(QPainter& painter, QPointF at, const Paint& paint) const = 0;

    // The nearest place; its way begins in the text that the piece is of.
    virtual PagePlace placeAt(QPointF at) const = 0;

    virtual PageTarget targetAt(QPointF) const { return {}; }

    // Where a stretch is, to bring it into view. Its way begins in the page, as that below.
    virtual QRectF rectOf(const TextRange& range) const = 0;
    // Where a caret would stand; it has no width.
    virtual QRectF caretAt(const PagePlace& place) const = 0;

    // By how much it is wider than the column, which it is then scrolled in.
    virtual double overhang() const { return 0; }

protected:
    double m_height = 0;
};

// The part of what is found whose way, in the text at `depth`, begins from `from` up to `to`.
std::span<const TextRange> foundWithin(
    std::span<const TextRange> found, size_t depth, Units from, Units to);
// What of a piece is selected, in places of its text; an empty block may be as well.
std::optional<std::pair<Units, Units>> selectedIn(
    const PieceFacts& facts, const Selected* selected);
// Whether a stretch lies in the piece, or in a table that it is.
bool liesIn(const PieceFacts& facts, const TextRange* range);

std::unique_ptr<LaidPiece> layOutPiece(const PieceFacts& facts);

// Of the kinds of blocks; for layOutPiece().
std::unique_ptr<LaidPiece> layOutWords(const PieceFacts& facts);
std::unique_ptr<LaidPiece> layOutRule(const PieceFacts& facts);
std::unique_ptr<LaidPiece> layOutTable(const PieceFacts& facts, const BlockAttachment& table);
std::unique_ptr<LaidPiece> layOutPicture(const PieceFacts& facts, const BlockAttachment& picture);
std::unique_ptr<LaidPiece> layOutEmbed(const PieceFacts& facts, const BlockAttachment& embed);

// A block's room in the column, its depth and quote taken off on the side where reading begins.
struct PieceRoom
{
    double left = 0, width = 0;
};
PieceRoom pieceRoom(const PieceFacts& facts);
// The bar beside what is quoted.
void drawQuoteBar(QPainter& painter, QPointF at, const PieceFacts& facts, double height);

} // namespace corvelle
