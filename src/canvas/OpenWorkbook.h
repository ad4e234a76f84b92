// The workbook that is open over the canvas: one of its sheets at a time, read in the background,
// and again when the file changes.
//
// Main thread; reading runs on the queue `corvelle.sheet-open`.
#pragma once

#include "base/SerialQueue.h"
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

signals:
    // The state, the names or the rows are others now.
    void changed();

private:
    struct Outcome
    {
        State state = State::Unreadable;
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

    Library& m_library;
    QString m_id;
    State m_state = State::Reading;
    QStringList m_names;
    int m_sheetCount = 0;
    int m_sheet = 0;
    Rows m_rows;
    int m_reading = 0;
    int m_turn = 0;                   // counts what was asked for
    std::shared_ptr<Reader> m_reader; // on the queue
    SerialQueue m_queue;
};

} // namespace corvelle
