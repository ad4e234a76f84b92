// Makes the undo of the library survive a quit.
//
// The UndoManager orders undo and redo and names them; the journal holds what each step changed, in
// the table `undo_journal`, and fills the manager again at the next start. A step is never trusted:
// before it is applied, each of its changes is compared by its owner with what stands now, and a
// step that was overtaken is refused with a sentence and forgotten. The journal knows no owner;
// each registers a ChangeApplier for its cases. On the main thread.
#pragma once

#include "library/ChangeApplier.h"
#include "library/PageHistory.h"
#include "library/UndoManager.h"
#include "library/UndoStore.h"

#include <array>
#include <deque>
#include <memory>

namespace corvelle {

class UndoJournal : public QObject
{
    Q_OBJECT

public:
    explicit UndoJournal(UndoManager& manager, QObject* parent = nullptr);
    ~UndoJournal() override;

    template<class Case>
    void setApplier(ChangeApplier* applier)
    {
        m_appliers[Change(Case{}).index()] = applier;
    }

    struct Opening
    {
        QString root;
        QString databasePath;
        bool isToolServer = false; // then nothing is read or written
        // The path, relative to the root, that a node shows now.
        std::function<QString(const QString& nodeID)> shownPath;
        qint64 mostVersionBytes = 536'870'912;
    };
    // Reads the steps of earlier runs. Once the library is open.
    void start(const Opening& opening);
    // Writes the step that is still gathering and waits for all writes.
    void quit();
    bool isStarted() const { return m_started; }

    // Adds to the step that is gathering, or begins one. Nothing while a step is applied.
    void record(Change change);
    // Of the gathering step.
    void setName(const QString& name);
    void setGlide();
    void forgetGathering();
    // Ends the person's gesture now, so that what comes next is a step of its own.
    void closeGesture() { m_manager.closeEventGroup(); }

    void forget(qint64 seq);
    void forgetCoworker(const QString& turn);

    // Records a change of a file's or website's notes, when they differ in more than white space at
    // their ends.
    void setNotes(const QString& id, const QString& from, const QString& to);

    bool isApplying() const { return m_applying; }
    bool isWriting() const { return !m_store.isIdle(); }
    PageHistory& pageHistory() { return m_pageHistory; }

signals:
    // A step wasn't applied: "Couldn’t undo Rename", and why.
    void refused(const QString& title, const QString& reason);
    // Around the applying of a step; cards glide to their places when `glide` says so.
    void applyBegins(bool glide);
    void applyEnds();

private:
    struct Target
    {};
    struct Plan; // of one step that is about to be applied

    void registerStep(qint64 seq, UndoDirection direction);
    void groupClosed();
    void closeGathering();
    void cutRedo();
    void drop(qint64 seq);
    void perform(qint64 seq, UndoDirection direction);
    bool lookAt(const Step& step, UndoDirection direction, std::vector<std::optional<Change>>& kept,
        QString& problem) const;
    bool applyAll(std::vector<std::optional<Change>>& kept, UndoDirection direction);
    void refuse(qint64 seq, UndoDirection direction, const QString& reason);
    void readRows(std::vector<qint64>& dropped);
    void tidyVersions(const Opening& opening, std::vector<qint64>& dropped);
    void rebuild();

    UndoManager& m_manager;
    UndoStore m_store;
    PageHistory m_pageHistory;
    std::array<ChangeApplier*, std::variant_size_v<Change>> m_appliers{};

    std::map<qint64, Step> m_steps;
    std::map<qint64, std::unique_ptr<Target>> m_targets;
    std::deque<qint64> m_done;    // can be undone, oldest first
    std::vector<qint64> m_undone; // can be done again, the next one last
    std::optional<qint64> m_gathering;
    qint64 m_nextSeq = 1;
    bool m_started = false;
    bool m_applying = false;
    bool m_rebuilding = false;
    QSet<qint64> m_lost;       // to be forgotten once the undo or redo that runs has ended
    QSet<qint64> m_forgetting; // to be forgotten once they have gathered
};

} // namespace corvelle
