// Which node a folder on disk has, by the folder's path. Kept current with the tree at the cost of
// what changes, so that an event on disk never costs a walk. Main thread.
#pragma once

#include "base/Text.h"
#include "disk/DiskPass.h"
#include "library/Library.h"

#include <QHash>

namespace corvelle {

class FolderIndex
{
public:
    // Of the library's own folders, or of those that are linked from outside.
    enum class Which { Own, Linked };

    explicit FolderIndex(Which which = Which::Own)
        : m_which(which)
    {}

    // From the tree as it is.
    void build(const Library& library, NameCase nameCase);
    void update(const Library& library, const TreeChange& change);

    // Path key to id; a space's folder has the empty id.
    const QHash<QString, QString>& ids() const { return m_ids; }
    NameCase nameCase() const { return m_nameCase; }

private:
    void put(const Library& library, const QString& id);
    void takeOut(const Library& library, const QString& id);
    void takeAgainBelow(const Library& library, const QString& folder, const QSet<QString>& told);

    const Which m_which;
    NameCase m_nameCase = NameCase::Kept;
    QHash<QString, QString> m_ids;          // by key
    QHash<QString, QString> m_keys;         // by id
    QMultiHash<QString, QString> m_sharing; // by key, all ids: one folder may be linked twice
};

// What the memory knows of the folders that are asked for, and the index.
DiskMemory memoryOf(const Library& library, const FolderIndex& index, const DiskRequest& request);

} // namespace corvelle
