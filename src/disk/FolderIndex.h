// Which node a folder on disk has, by the folder's path. Kept current with the tree at the cost of
// what changes, so that an event on disk never costs a walk. Main thread.
#pragma once

#include "base/Text.h"
#include "library/Library.h"

#include <QHash>

namespace corvelle {

class FolderIndex
{
public:
    // From the tree as it is.
    void build(const Library& library, NameCase nameCase);
    void update(const Library& library, const TreeChange& change);

    // Path key to id; a space's folder has the empty id.
    const QHash<QString, QString>& ids() const { return m_ids; }

private:
    void put(const Library& library, const QString& id);

    NameCase m_nameCase = NameCase::Kept;
    QHash<QString, QString> m_ids;  // by key
    QHash<QString, QString> m_keys; // by id
};

} // namespace corvelle
