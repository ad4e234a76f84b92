// The workbook that is open over the canvas: one of its sheets at a time, and what is found in all
// of them. It is read in the background, and again when the file changes.
//
// Main thread; reading runs on the queue `corvelle.sheet-open`.
#pragma once

#include "base/SerialQueue.h"
#include "canvas/WorkbookFind.h"
#include "documents/Xlsx.h"
#include "library/Library.h"

#include <memory>

namespace corvelle {

class OpenWorkbook : public QObject
{
    Q_OBJECT

public:
    enum class State : unsigned char {
        Reading, // nothing of it is there yet
        Read,
        TooLarge, // it isn't read at all
        Unreadable,
    };
    using Rows = std::shared_ptr<const SheetRows>;

    explicit OpenWorkbook(Library& library, QObject* parent = nullptr);
    ~OpenWorkbook() override;

    void open(const QString& id);
    void close();
    // Empty when nothing is open.
    const QString& id() const { return m_id; }

    State state() const { return m_state; }
    const QStringList& names() const { return m_names; } // of the sheets that can be shown
    int sheetCount() const { return m_sheetCount; }      // of all that the file has

    // The sheet that is shown, or will be once it is read.
    int sheet() const { return m_sheet; }
    void turnTo(int sheet);
    // Its rows. None while it is being read, and when it can't be.
    const Rows& rows() const { return m_rows; }
    bool isReading() const { return m_reading > 0; }

    // ---- finding ----
    // Searches all sheets, from that place on, and goes to the first hit; what was looked for
    // before is given up. Empty words: no more.
    void find(const QString& words, BookPlace from);
    // See WorkbookFind.
    void goToFound(int step);
    void standForFinding(BookPlace place);
    const WorkbookFind& found() const { return m_found; }
    bool isSearching() const { return m_isSearching; }

signals:
    // The state, the names or the rows are others now.
    void changed();
    // More was found, or one stands elsewhere in it.
    void foundChanged();
    // The person wants to see the hit that is stood on.
    void hitReached();

private:
    struct Outcome
    {
        State state = State::Unreadable;
        int edition = 0; // counts the states of the file that were read
        QStringList names;
        int sheetCount = 0;
        int sheet = 0;
        Rows rows;
    };
    struct Reader;

    enum class From : unsigned char { File, Memory };
    void read(From from);
    void took(Outcome outcome);
    void takeTreeChange(const TreeChange& change);
    void findAgain();
    void search();
    void tookFound(std::vector<CellPlace> found);

    Library& m_library;
    QString m_id;
    State m_state = State::Reading;
    QStringList m_names;
    int m_sheetCount = 0;
    int m_sheet = 0;
    Rows m_rows;
    int m_edition = 0; // that names and rows are of
    int m_reading = 0;
    int m_turn = 0; // counts what was asked for

    WorkbookFind m_found;
    bool m_isSearching = false; // one sheet, on the queue
    bool m_showsHit = false;    // to the person, once there is one
    int m_findTurn = 0;

    std::shared_ptr<Reader> m_reader; // on the queue
    SerialQueue m_queue;
};

} // namespace corvelle
