// What is found in the sheets of a workbook, which are searched one after another: how much there
// is so far, and on which of it one stands. Pure.
#pragma once

#include "documents/CellPlace.h"
#include "documents/Xlsx.h"

#include <optional>
#include <vector>

namespace corvelle {

// A cell of one of the sheets.
struct BookPlace
{
    int sheet = 0;
    CellPlace cell;

    bool operator==(const BookPlace&) const = default;
};

class WorkbookFind
{
public:
    // Looks for nothing.
    WorkbookFind() = default;
    // Stands at `from`, on no hit yet. The sheet there is the first to be searched, and the ones
    // behind it follow round to the one before it.
    WorkbookFind(QString words, int sheets, BookPlace from);

    const QString& words() const { return m_words; }

    // The sheet that is to be searched now; none when all are.
    std::optional<int> nextSheet() const;
    bool isDone() const { return !nextSheet(); }
    // What was found in it, by rows. True when that leads to a hit that a step waited for.
    bool take(std::vector<CellPlace> found);

    // Goes so many hits on, or back, round all sheets. A step that leads into a sheet that hasn't
    // been searched is made once it has been. True when one was made.
    bool step(int by);
    bool isWaiting() const { return m_steps != 0; }
    // Leaves the hit: the next step counts from there.
    void stand(BookPlace place);

    int count() const;
    // The hit that one stands on, and how many are before it in the order of the sheets; -1: none.
    std::optional<BookPlace> hit() const;
    int number() const;
    const std::vector<CellPlace>& foundIn(int sheet) const;

private:
    bool isSearched(int sheet) const;
    bool goOn();

    QString m_words;
    std::vector<std::vector<CellPlace>> m_found; // by sheets
    int m_first = 0;                             // the sheet that was searched first,
    int m_searched = 0;                          // and how many have been
    BookPlace m_place;
    bool m_isOnHit = false;
    int m_steps = 0; // still to be made
};

// The cells with these words in any case, by rows.
std::vector<CellPlace> findInSheet(const SheetRows& sheet, const QString& words);

} // namespace corvelle
