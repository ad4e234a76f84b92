// A page as one text for screen readers: a mention is its label, a picture its description, a table
// the words of its cells.
//
// Offsets count in that text, places in the page's. Answers read the blocks asked for, never the
// whole page. A value; on the main thread.
#pragma once

#include "interface/page/PagePlace.h"

#include <vector>

namespace corvelle {

// What stands for a table, a picture or a card where only words can. Cells are apart by tabs, their
// rows by line breaks, blocks in a cell by blanks.
QString wordsForObject(const BlockAttachment& attachment);

class SpokenPage
{
public:
    SpokenPage() = default;
    explicit SpokenPage(FlatText text);

    qsizetype length() const { return m_starts.empty() ? 0 : m_starts.back(); }
    QString text(qsizetype from, qsizetype to) const;

    // Where a table begins or ends, the offset is that of its first or last cell as well: that is
    // the place it gives.
    qsizetype offsetOf(const PagePlace& place) const;
    PagePlace placeOf(qsizetype offset) const;

private:
    QString blockWords(qsizetype block) const;
    qsizetype blockOf(qsizetype offset) const;

    FlatText m_text;
    std::vector<qsizetype> m_starts; // of each block, its newline counted; the last is the end
};

} // namespace corvelle
