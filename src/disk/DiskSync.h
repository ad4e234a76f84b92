// Keeps the tree in step with the library's own folder: a pass looks at the disk, and what it found
// is carried out here.
//
// One for each library, on the main thread. The look runs on the queue `corvelle.disk-pass`; what
// it found comes back and is applied in slices, so that the window stays awake. Between look and
// apply the tree and the disk may have changed: moves, returns and removals look at the row and the
// disk again before they act, and a row that says otherwise leads to a re-read of that node and no
// more. No file of the person's is ever touched.
#pragma once

#include "base/SerialQueue.h"
#include "disk/DiskPass.h"
#include "library/Arrivals.h"
#include "library/Library.h"

#include <QObject>
#include <QTimer>

#include <map>
#include <memory>
#include <stop_token>

namespace corvelle {

class DiskSync : public QObject
{
    Q_OBJECT

public:
    explicit DiskSync(Library& library, QObject* parent = nullptr);
    ~DiskSync() override;

    // Runs a whole structural pass: it catches all that happened while the program was not running.
    // Once the library is open.
    void start();

    bool isIdle() const { return !m_running && m_arrivals.isIdle() && m_seenQueue.isIdle(); }

signals:
    // Nothing is under way any more.
    void finished();
    // These were gone from the disk and are in the Trash since those times.
    void removedOnDisk(const std::map<QString, double>& times);

private:
    struct Apply; // a pass that is being carried out

    void runPass();
    void took(Result<DiskPass> pass);
    void applySlice();
    void endApply();

    void changed(const QString& id, const DiskPlan::Entry& entry);
    void identified(const QString& id, const DiskPlan::Entry& entry);
    void moved(const QString& id, const DiskPlan::Entry& to);
    void restored(const QString& id, const DiskPlan::Entry& to);
    void removed(const QString& id);
    bool isStillThere(const DiskPlan::Entry& entry);
    bool follow(const Node& node, const DiskPlan::Entry& to, const QByteArray& alsoSet);
    void writeIdentities();

    Library& m_library;
    Arrivals m_arrivals;
    bool m_running = false;
    int m_rounds = 0; // looks in a row that asked for another and moved no folder
    std::unique_ptr<Apply> m_apply;
    QTimer m_slice;
    std::stop_source m_stop;
    SerialQueue m_seenQueue;
    SerialQueue m_queue;
};

} // namespace corvelle
