#include "disk/FolderIndex.h"

namespace corvelle {

void FolderIndex::build(const Library& library, NameCase nameCase)
{
    m_nameCase = nameCase;
    m_ids.clear();
    m_keys.clear();
    m_sharing.clear();
    if (m_which == Which::Own)
        for (const Space& space : library.tree().spaces())
            m_ids.insert(pathKey(space.folder, nameCase), QString());
    library.tree().eachNode([&](const Node& node, const SeenFile&) {
        if (node.kind == NodeKind::Folder)
            put(library, node.id);
    });
}

void FolderIndex::update(const Library& library, const TreeChange& change)
{
    if (change.everything || change.spaces) {
        build(library, m_nameCase);
        return;
    }
    QSet<QString> before;
    for (const QString& id : change.nodes) {
        if (m_keys.contains(id))
            before.insert(id);
        takeOut(library, id);
    }
    for (const QString& id : change.nodes)
        put(library, id);
    if (m_which == Which::Linked)
        for (const QString& id : change.nodes)
            if (before.contains(id) != m_keys.contains(id))
                takeAgainBelow(library, id, change.nodes);
}

// What lies in a linked folder keeps its path in the Trash, where another card of the same folder
// may have its place; a change tells of the folder alone. What it told of too needs nothing more.
void FolderIndex::takeAgainBelow(
    const Library& library, const QString& folder, const QSet<QString>& told)
{
    QStringList waiting{folder};
    while (!waiting.isEmpty()) {
        for (const QString& id : library.children(waiting.takeLast())) {
            const Node* node = library.node(id);
            if (!node || node->kind != NodeKind::Folder || told.contains(id))
                continue;
            takeOut(library, id);
            put(library, id);
            waiting.append(id);
        }
    }
}

void FolderIndex::takeOut(const Library& library, const QString& id)
{
    const QString key = m_keys.take(id);
    if (key.isNull())
        return;
    m_sharing.remove(key, id);
    if (m_ids.value(key) != id)
        return;
    m_ids.remove(key);
    for (auto other = m_sharing.constFind(key); other != m_sharing.cend() && other.key() == key;
         ++other)
        if (library.node(*other) && !library.isInTrash(*other))
            m_ids.insert(key, *other);
}

void FolderIndex::put(const Library& library, const QString& id)
{
    const Node* node = library.node(id);
    const bool counts = node && node->kind == NodeKind::Folder && !node->path.isEmpty() &&
                        node->isLinked() == (m_which == Which::Linked) &&
                        !node->path.startsWith(u'.') && !library.isInTrash(id);
    if (!counts)
        return;
    const QString key = pathKey(node->path, m_nameCase);
    m_ids.insert(key, id);
    m_keys.insert(id, key);
    m_sharing.insert(key, id);
}

DiskMemory memoryOf(const Library& library, const FolderIndex& index, const DiskRequest& request)
{
    DiskMemory memory{{}, index.ids(), index.nameCase()};
    QSet<QString> taken;
    const auto take = [&](const QString& child, const QString& folder) {
        const Node* node = library.node(child);
        const bool counts =
            node && (node->kind == NodeKind::Folder || node->kind == NodeKind::File) &&
            !node->path.isEmpty() && parentPath(node->path) == folder && !library.isInTrash(child);
        if (!counts || taken.contains(child))
            return false;
        taken.insert(child);
        const SeenFile seen = library.tree().seen(child);
        memory.known.push_back({child, node->path, node->kind == NodeKind::Folder, seen.fileID,
            node->byteSize, seen.modified});
        return node->kind == NodeKind::Folder;
    };
    const auto idOf = [&](const QString& folder) {
        const auto id = index.ids().constFind(pathKey(folder, index.nameCase()));
        return id == index.ids().cend() ? std::nullopt : std::optional(*id);
    };
    for (const QString& folder : request.folders)
        if (const auto id = idOf(folder))
            for (const QString& child : library.children(*id))
                take(child, folder);
    QStringList waiting(request.trees.begin(), request.trees.end());
    while (!waiting.isEmpty()) {
        const QString folder = waiting.takeLast();
        const auto id = idOf(folder);
        if (!id)
            continue;
        for (const QString& child : library.children(*id)) {
            const Node* node = library.node(child);
            if (take(child, folder) ||
                (node && node->kind == NodeKind::Folder && parentPath(node->path) == folder))
                waiting.append(node->path);
        }
    }
    return memory;
}

} // namespace corvelle
