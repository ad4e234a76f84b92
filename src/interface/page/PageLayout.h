// A page cut into pieces that are laid out when they come into sight.
//
// Pieces that weren't yet have estimated heights, so a place in the page is a piece and an offset
// in it, never a distance from the top: what is on screen doesn't move when an estimate turns out
// wrong. A piece holds at most 2,000 units of a block. Main thread.
#pragma once

#include "interface/page/HeightIndex.h"
#include "interface/page/LaidPiece.h"
#include "interface/page/PageFind.h"

#include <map>
#include <vector>

namespace corvelle {

class PageLayout
{
public:
    static constexpr Units mostUnits = 2'000;

    PageLayout(const ItemLooks& items, PagePictures& pictures);

    // Each of these lays everything out anew.
    void setPage(FlatText text, const PageStyle& style);
    void setStyle(const PageStyle& style);
    void setWidth(double width);
    double width() const { return m_width; }
    const PageStyle& style() const { return m_style; }

    int count() const { return m_heights.count(); }
    double total() const { return m_heights.total(); }
    double top(int piece) const { return m_heights.top(piece); }
    double height(int piece) const { return m_heights.height(piece); }
    int pieceAtHeight(double y) const { return m_heights.at(y); }

    // Laid out now if it wasn't; the height is the true one from then on.
    const LaidPiece& laid(int piece);
    // What was laid out is laid out anew when it is next asked for.
    void forgetLaid() { m_laid.clear(); }
    // Lets go of all that is laid out beyond these.
    void keepOnly(int first, int last);

    struct Extent
    {
        qsizetype block = 0;
        Units from = 0, to = 0;         // of the block, from its start
        int firstRow = 0, rowCount = 0; // of a long table; 0 for all rows
    };
    const Extent& extent(int piece) const { return m_extents[static_cast<size_t>(piece)]; }
    // The piece in which a place of a block lies, or a row of a table.
    int pieceOf(qsizetype block, Units offset, int row = 0) const;
    int pieceOf(const TextRange& range) const;
    int pieceOf(const PagePlace& place) const
    {
        return pieceOf(TextRange{place.cells, place.at, place.at});
    }

    // ---- tables wider than the column ----
    // How far the table of a piece is scrolled sideways, and how far it can be.
    double shift(int piece) const;
    double mostShift(int piece) { return laid(piece).overhang(); }
    void setShift(int piece, double shift);
    void forgetShifts();

    PagePlace placeAt(int piece, QPointF at);
    Units startOf(int piece) const;

private:
    void cut();
    void cutBlock(const FlatText::BlockAt& block, float gap, int number);
    void cutTable(qsizetype block, const BlockAttachment& table, float gap, int number);
    void addPiece(const Extent& extent, float gap, int number, double estimate);

    FlatText m_text;
    PageStyle m_style;
    double m_width = 680;
    const ItemLooks& m_items;
    PagePictures& m_pictures;

    std::vector<Extent> m_extents;
    struct Made
    {
        float gap = 0;
        qint32 number = 1;
    };
    std::vector<Made> m_made;        // beside the extents
    std::vector<double> m_estimates; // while cutting
    HeightIndex m_heights;
    std::map<qsizetype, TableState> m_tables; // by their blocks; outlives what is laid out
    std::map<int, std::unique_ptr<LaidPiece>> m_laid;
};

} // namespace corvelle
