// Every change that a person or the coworker makes to the tree.
//
// One for each library, on the main thread. Each operation checks, acts on disk, writes the
// database in one transaction, changes the memory and records an undo step, in this order. Disk and
// database can't share a transaction: when the second fails, the first is taken back. A failure
// changes nothing, reaches the person by Library::fail and the log with its cause; operations on
// several items go on with the others. Nothing happens while no library is open.
#pragma once

#include "base/SerialQueue.h"
#include "library/LongWork.h"
#include "library/UndoJournal.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <functional>
#include <map>

namespace corvelle {

class EditAppliers;

class Edits : public QObject
{
    Q_OBJECT

public:
    Edits(Library& library, UndoManager& manager, UndoJournal& journal, QObject* parent = nullptr);
    ~Edits() override;

    Library& library() const { return m_library; }
    UndoJournal& journal() const { return m_journal; }

    struct Wish
    {
        NodeKind kind = NodeKind::Page;
        QString title;                  // blank: the kind's own
        QString parent;                 // empty: the top of the space
        QPointF point;                  // the card's centre
        std::optional<NodeColor> color; // none: gray; for a folder a random one, not a sibling's
        QString url;                    // of a website
    };
    // The id of the new node; empty when it couldn't be made.
    QString make(const Wish& wish);

    // Whether the title is another one now. The file's name follows.
    bool rename(const QString& id, const QString& title);

    // Where a card goes in its new folder.
    struct Target
    {
        QString id;
        QPointF point;
    };
    // Moves into another folder, in the order given. What lies there already only changes its
    // place; a folder that would land in itself is passed over. Those that went.
    std::vector<QString> move(const std::vector<Target>& items, const QString& parent);

    // The same, laid out around a point: each at the free spot nearest to it.
    std::vector<QString> moveTo(
        const std::vector<QString>& ids, const QString& parent, QPointF point);

    void setColor(const std::vector<QString>& ids, NodeColor color);
    // None for a null text.
    void setIcon(const QString& id, const QString& icon);

    // Those that went. Children stay live in the trashed folder and go with it.
    std::vector<QString> trash(const std::vector<QString>& ids);
    // Back into its folder, or to the top when that isn't there any more. Those that came.
    std::vector<QString> restore(const std::vector<QString>& ids);
    // With all below them. Can't be undone; whether it was done.
    bool deleteForGood(const std::vector<QString>& ids);

    // Cards that a hand has moved on their canvas. False when it couldn't be saved.
    bool savePositions(
        const std::map<QString, QPointF>& points, const QString& stepName = QStringLiteral("Move"));

    // Notes that these nodes were made in one step, by an operation that writes by itself.
    void recordMade(const std::vector<QString>& ids, const QString& stepName);

    // Whether something can be put into the folder; tells the person when not.
    bool checkParent(const QString& parent);
    // The same, as the sentence; null when it can.
    QString parentProblem(const QString& parent) const;
    // The folder on disk that takes what is put into the parent; made when it is one of our own.
    Result<QString> folderFor(const QString& parent) const;

    // A free name in a folder on disk, that no card has either: one whose file has been taken away
    // still has its path.
    QString freeName(
        const QString& name, const QString& folder, NodeKind kind, const QString& self = {}) const;

    // Waits for what is removed in the background.
    void drain() { m_removals.drain(); }
    bool isIdle() const { return m_removals.isIdle(); }

signals:
    // Linked items came back and want to be looked at.
    void linkedRestored(const QSet<QString>& ids);

private:
    friend class EditAppliers;

    using DatabaseStep = std::function<Result<void>()>;

    bool isReady() const { return m_library.isOpen(); }
    bool hasFile(const Node& node) const;
    bool hasCard(const QString& absolutePath) const;
    Result<void> write(const DatabaseStep& step);
    Result<void> writeNode(const Node& node, const SeenFile& seen, const QString& url);
    Result<void> relocate(
        Node& node, const QString& target, const DatabaseStep& step, LongWork& work);
    void put(Node node);
    Result<void> moveOne(const Node& from, const Place& place, LongWork& work);
    bool applyPlaces(const std::map<QString, Place>& places);
    std::map<QString, double> trashAt(const std::map<QString, double>& times, bool apart);
    Result<void> trashOne(Node node, double at, LongWork& work);
    Result<void> restoreOne(Node node, LongWork& work);
    change::Restored restoreAll(const std::vector<QString>& ids);
    bool storeParents(const std::map<QString, QString>& parents);
    bool storeColors(const std::map<QString, QString>& colors);
    bool storePoints(const std::map<QString, QPointF>& points);
    bool storeTitle(const QString& id, const QString& title);
    bool storeIcon(const QString& id, const QString& icon);
    void registerIcon(const QString& id, const QString& icon);
    void removeFiles(const std::vector<QString>& ids);
    NodeColor colorOfNewFolder(const QString& parent) const;

    Library& m_library;
    UndoManager& m_manager;
    UndoJournal& m_journal;
    std::unique_ptr<EditAppliers> m_appliers;
    SerialQueue m_removals;
};

} // namespace corvelle
