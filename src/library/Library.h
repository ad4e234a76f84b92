// Owns one library: its root folder, its main database connection and the tree of all its nodes.
//
// One for a process, for all its life, on the main thread. Everything that shows or changes items
// goes through it; the table is the truth and the tree a cache of it. Every change writes the table
// first, then the memory, then tells by treeChanged. Reads touch no database and can't fail.
#pragma once

#include "base/SerialQueue.h"
#include "library/LibraryOpening.h"

#include <QDateTime>
#include <QObject>

#include <memory>

namespace corvelle {

// How far a large arrival has come, for the person.
struct ImportProgress
{
    int done = 0;
    std::optional<int> total;

    bool operator==(const ImportProgress&) const = default;
};

class Library : public QObject
{
    Q_OBJECT

public:
    Library(LibraryPlace place, OpenMode mode, QObject* parent = nullptr);
    ~Library() override;

    // Takes what openLibrary() made; false when it failed, and loadError() says why. May be tried
    // again.
    bool open(LibraryOpening opening);
    bool isOpen() const { return m_connection.has_value(); }

    const LibraryPlace& place() const { return m_place; }
    const QString& root() const { return m_root; }
    QString name() const { return libraryName(m_root); }
    const QString& loadError() const { return m_loadError; }
    std::optional<qint32> heldBy() const { return m_heldBy; }
    bool isMissingFolder() const { return m_missing; }
    bool isFirstRun() const { return m_firstRun; }
    // The lock, for another try at opening.
    FileLock takeLock() { return std::move(m_lock); }

    // ---- reads ----
    const NodeTree& tree() const { return m_tree; }
    const Node* node(const QString& id) const { return m_tree.node(id); }
    const std::vector<QString>& children(const QString& parent) const
    {
        return m_tree.children(parent);
    }
    bool isInTrash(const QString& id) const { return m_tree.isInTrash(id); }
    // Whether its file can't be found now: it is outside the library and isn't there, or its disk
    // went away. Only in memory.
    bool isMissing(const QString& id) const { return m_missingLinks.contains(id); }
    const QSet<QString>& missingLinks() const { return m_missingLinks; }
    // Goes up at each change of the tree or of a node's shown data.
    qint64 revision() const { return m_revision; }

    // Where new things for a folder go on disk: its own folder, or the first space's. Makes
    // nothing.
    QString folderPath(const QString& id) const;
    QString filePath(const Node& node) const;
    // Of a node's path, or of one that it may get.
    QString absolutePath(const QString& path) const;
    // The path below the root; the absolute path of what lies outside it.
    QString relativePath(const QString& absolutePath) const;
    QString thumbnailPath(const QString& id) const;
    QString shotPath(const QString& id) const;

    const std::optional<ImportProgress>& importProgress() const { return m_importProgress; }
    const QString& lastFailure() const { return m_lastFailure; }

    // ---- changes ----
    // Reads the tree again in the background and takes in what differs. Calls while one runs become
    // one.
    void reload();
    bool isReloading() const { return m_reloadTurn != m_reloadedTurn; }

    // Reads one node's row again: for a node that another process moved.
    void refreshNode(const QString& id);

    // The main connection, for the owners of their own tables and for edits. Only while open.
    SQLite& connection() { return *m_connection; }

    // The node as its row stands now, read again first: another process may have moved it since.
    // Null when it is gone. The memory follows.
    const Node* freshNode(const QString& id);

    // In the tool server, where nothing tells of changes in time: reads the whole tree again.
    void readAgainIfServing();

    // What an edit wrote to the table, now for the memory: nodes that are new or differ, with what
    // the disk told of them.
    void took(std::vector<std::pair<Node, SeenFile>> nodes);
    // Paths that a moved folder took along.
    void tookPaths(const std::vector<std::pair<QString, QString>>& pathsByID);
    void tookAway(const std::vector<QString>& ids);
    void tookPageStamp(const QString& id, double stamp) { m_tree.setPageStamp(id, stamp); }
    void tookSeen(const std::vector<std::pair<QString, SeenFile>>& seen);

    // Items that can't be found now, and such that are there again.
    void tookMissing(const QSet<QString>& gone, const QSet<QString>& found);

    void setImportProgress(std::optional<ImportProgress> progress);

    // Stores the message, logs it and shows it to the person.
    void fail(const QString& message);

    // Something told that work which keeps the main thread goes on; shown when it takes long.
    void stillWorking() { emit working(); }

signals:
    void treeChanged(const corvelle::TreeChange& change);
    void loadErrorChanged();
    void importProgressChanged();
    void pagesChangedElsewhere(const QSet<QString>& ids);
    void failed(const QString& message);
    // The main thread is kept by work that takes longer than a person takes for at once: paint
    // without waiting for the next event.
    void working();

private:
    void apply(Snapshot snapshot);
    void tell(const TreeChange& change);

    LibraryPlace m_place;
    const OpenMode m_mode;
    QString m_root;
    FileLock m_lock;
    std::optional<SQLite> m_connection;
    NodeTree m_tree;
    QSet<QString> m_nativeShots;
    QSet<QString> m_missingLinks;
    QString m_loadError;
    std::optional<qint32> m_heldBy;
    bool m_missing = false;
    bool m_firstRun = false;
    qint64 m_revision = 0;
    std::optional<ImportProgress> m_importProgress;
    QString m_lastFailure;

    int m_reloadTurn = 0;   // the newest call of reload()
    int m_reloadedTurn = 0; // the newest call that has ended
    int m_overtaken = 0;    // reads in a row that were older than the memory
    struct Reader;
    std::shared_ptr<Reader> m_reader; // the connection of the reads in the background, on m_reloads
    SerialQueue m_reloads;
};

} // namespace corvelle
