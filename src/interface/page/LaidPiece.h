// A piece of a page as it is laid out: it knows its height, draws itself and finds what is at a
// point.
//
// A piece is a block, or a part of a long one. Points and rectangles count from its top left, whose
// x is that of the page's column. On the main thread.
#pragma once

#include "interface/page/PagePictures.h"
#include "interface/page/PageStyle.h"
#include "interface/page/PageTargets.h"
#include "interface/page/TextBox.h"

#include <memory>

namespace corvelle {

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
    const PageStyle* style = nullptr;
    const ItemLooks* items = nullptr;
    PagePictures* pictures = nullptr;
};

// A stretch in a piece; of a table in one of its cells, else `cell` is -1.
struct PieceMark
{
    int cell = -1;
    TextMark mark;
};

class LaidPiece
{
public:
    virtual ~LaidPiece() = default;

    // The gap above it included.
    double height() const { return m_height; }

    struct Paint
    {
        // Units of the block that are selected; a block that stands for itself is one unit.
        std::optional<std::pair<Units, Units>> selection;
        const std::vector<PieceMark>* marks = nullptr;
    };
    virtual void draw(QPainter& painter, QPointF at, const Paint& paint) const = 0;

    // The nearest place, in units of the block.
    virtual Units placeAt(QPointF at) const = 0;

    virtual PageTarget targetAt(QPointF) const { return {}; }

    // Where a stretch is, to bring it into view.
    virtual QRectF rectOf(const PieceMark& mark) const = 0;

protected:
    double m_height = 0;
};

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
