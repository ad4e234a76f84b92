// Where the undo journal and the pages' histories are written: one queue, `corvelle.undo-journal`,
// with one connection that it opens at its first use and keeps.
//
// Calls are carried out in their order. A write that fails is rolled back and logged, and nothing
// is shown: what it held then lives only until the quit.
#pragma once

#include "base/SerialQueue.h"
#include "library/Change.h"
#include "store/SQLite.h"

#include <functional>

namespace corvelle {

class UndoStore
{
public:
    UndoStore();
    ~UndoStore();

    // Before this, nothing is written.
    void open(const QString& databasePath);
    bool isOpen() const { return m_state != nullptr; }

    // Runs the body in a transaction on the queue.
    using Body = std::function<Result<void>(SQLite& connection)>;
    void write(Body body);
    // The same, and waits for it.
    void read(const std::function<void(SQLite& connection)>& body);

    void put(qint64 seq, const Step& step, bool undone);
    void remove(std::vector<qint64> seqs);
    void removeUndone();

    bool isIdle() const { return m_queue.isIdle(); }
    void drain() { m_queue.drain(); }

private:
    struct State; // of the queue's thread
    std::shared_ptr<State> m_state;
    SerialQueue m_queue;
};

} // namespace corvelle
