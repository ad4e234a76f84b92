#include "disk/FolderIndex.h"

namespace corvelle {

void FolderIndex::build(const Library& library, NameCase nameCase)
{
    m_nameCase = nameCase;
    m_ids.clear();
    m_keys.clear();
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
    for (const QString& id : change.nodes) {
        if (const auto key = m_keys.constFind(id); key != m_keys.cend()) {
            if (m_ids.value(*key) == id)
                m_ids.remove(*key);
            m_keys.erase(key);
        }
    }
    for (const QString& id : change.nodes)
        put(library, id);
}

void FolderIndex::put(const Library& library, const QString& id)
{
    const Node* node = library.node(id);
    const bool counts = node && node->kind == NodeKind::Folder && !node->path.isEmpty() &&
                        !node->path.startsWith(u'/') && !node->path.startsWith(u'.') &&
                        !library.isInTrash(id);
    if (!counts)
        return;
    const QString key = pathKey(node->path, m_nameCase);
    m_ids.insert(key, id);
    m_keys.insert(id, key);
}

} // namespace corvelle
