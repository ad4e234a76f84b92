// Turns things found on disk into nodes, in batches, away from the main thread.
//
// Owned by the main thread. Rows are written on the queue `corvelle.arrivals` by a connection of
// its own, each batch in one transaction; the memory takes a batch once it stands in the table.
// What a killed program had not written yet, the next opening's pass finds again.
#pragma once

#include "base/CardPlacement.h"
#include "base/SerialQueue.h"
#include "base/Text.h"
#include "library/Library.h"

#include <QElapsedTimer>

#include <atomic>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace corvelle {

// One file or folder on disk that has no node.
struct ArrivingItem
{
    QString path; // relative to the root; absolute for what is linked from outside
    bool folder = false;
    qint64 size = 0;
    double modified = distantPast;
    quint64 fileID = 0;
    std::optional<QPointF> place; // of its card; none: the next free one in its folder
};

// What became of the items that somebody waits for.
struct Arrived
{
    std::vector<QString> placed; // the ids of those that had a place
    bool failed = false;         // and all that was written has been taken back
};

class Arrivals : public QObject
{
    Q_OBJECT

public:
    explicit Arrivals(Library& library, QObject* parent = nullptr);
    ~Arrivals() override;

    // Makes nodes of the items, a folder before what lies in it. `folders` tells the nodes of the
    // folders that are there already: path key to id, an empty id for a space's folder. An item
    // whose parent is neither among them nor among the items is passed over. Returns at once. With
    // `done` it is all or nothing, and `done` hears the end; without, what could be written stays.
    void bringIn(std::vector<ArrivingItem> items, const QHash<QString, QString>& folders,
        NameCase nameCase, std::function<void(const Arrived&)> done = {});

    bool isIdle() const { return m_running == 0; }

    // Whether something found on disk was no longer there when its row was to be written; asking
    // forgets it.
    bool takeOvertaken() { return std::exchange(m_overtaken, false); }

signals:
    // All that was asked for so far is in the table and in memory.
    void finished();

private:
    void took(std::vector<std::pair<Node, SeenFile>> batch);
    void catchUp(std::vector<std::pair<Node, SeenFile>>& batch) const;
    void ended();

    Library& m_library;
    int m_running = 0;
    int m_done = 0, m_total = 0; // of the calls since the queue was last idle
    bool m_overtaken = false;
    QElapsedTimer m_since;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_pathsGivenUp =
        false; // rows changed that the memory doesn't hear of by a batch
    SerialQueue m_queue;
};

} // namespace corvelle
