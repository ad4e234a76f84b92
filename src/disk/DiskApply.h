// Carries out what a look at the disk found: in the library's own folder and in linked ones.
//
// On the main thread, in slices, so that the window stays awake. Between look and use the tree and
// the disk may have changed: moves, returns and removals look at the row and the disk again before
// they act, and a row that says otherwise leads to a re-read of that node and no more. Other disks
// than the library's own aren't asked again, since one that hangs would hold up the window: there
// an item must be where the look knew it, and what changed since, the next look puts right. No file
// of the person's is ever touched.
#pragma once

#include "base/SerialQueue.h"
#include "disk/DiskPass.h"
#include "library/Arrivals.h"
#include "library/Library.h"
#include "platform/FileFacts.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>

namespace corvelle {

class DiskApply : public QObject
{
    Q_OBJECT

public:
    struct Done
    {
        bool overtaken = false;     // something was no longer where the look had found it
        bool movedFolder = false;   // one went one step further
        QSet<QString> placed;       // nodes that are at the place that the look found for them
        QSet<QString> freshFolders; // of the pass
        QSet<QString> away;
        QSet<QString> again;
        QSet<QString> lookAlso;
        bool lookAgain = false;
        NameCase nameCase = NameCase::Kept;
    };

    explicit DiskApply(Library& library, QObject* parent = nullptr);
    ~DiskApply() override;

    // One pass at a time. `done` is called once all of it stands in the table and in memory.
    void run(DiskPass pass, std::function<void(Done)> done);

    // What the person just said comes before the rest of the pass: it isn't carried out, and counts
    // as overtaken.
    void leaveRest();

    bool isIdle() const { return !m_apply && m_arrivals.isIdle() && m_seenQueue.isIdle(); }

signals:
    // The contents of these files are others.
    void filesChanged(const QSet<QString>& ids);
    // These were gone from the disk and are in the Trash since those times.
    void removedOnDisk(const std::map<QString, double>& times);

private:
    struct Apply; // the pass that is being carried out

    void leaveOvertaken();
    void slice();
    void end();

    void changed(const QString& id, const DiskPlan::Entry& entry);
    void identified(const QString& id, const DiskPlan::Entry& entry);
    void moved(const QString& id, const DiskPlan::Entry& to);
    void restored(const QString& id, const DiskPlan::Entry& to);
    void removed(const QString& id);

    bool wentAwayByItself(const Node& node) const;
    std::optional<FileFacts> factsNow(const Node& node) const;
    bool isStillThere(const DiskPlan::Entry& entry);
    bool hasOtherCard(const Node& node, const QString& path);
    bool follow(const Node& from, const DiskPlan::Entry& to, const QByteArray& alsoSet);
    std::optional<QString> newParent(const Node& from, const QString& path) const;
    void place(Node& node, const QString& parent);
    void takePathsBelow(const QString& folder, std::vector<std::pair<Node, SeenFile>>& nodes);
    Result<void> noteLink(const Node& node, quint64 fileID, const QString& from);
    void writeIdentities();

    Library& m_library;
    Arrivals m_arrivals;
    std::unique_ptr<Apply> m_apply;
    QTimer m_slice;
    SerialQueue m_seenQueue;
};

} // namespace corvelle
