#include "disk/DissolvedFolders.h"

#include <algorithm>

namespace corvelle::DiskPlan {

namespace {

// The nodes below the removed folders by their identity. Of links to the same file, of which the
// others are gone anyhow, the one with the first path.
QHash<quint64, const Known*> nodesBelow(
    const QSet<QString>& removedIDs, std::span<const Known> known, NameCase nameCase)
{
    QSet<QString> folders;
    for (const Known& node : known)
        if (node.folder && removedIDs.contains(node.id))
            folders.insert(pathKey(node.path, nameCase));
    QHash<quint64, const Known*> found;
    if (folders.isEmpty())
        return found;
    for (const Known& node : known) {
        if (!node.inode)
            continue;
        QString above = parentPath(pathKey(node.path, nameCase));
        while (!above.isEmpty() && !folders.contains(above))
            above = parentPath(above);
        if (above.isEmpty())
            continue;
        const Known*& first = found[*node.inode];
        if (!first || node.path < first->path)
            first = &node;
    }
    return found;
}

// What came in: new, or taken for something that had gone to the Trash before.
const Entry* incoming(const Action& action)
{
    if (const auto* added = std::get_if<Added>(&action))
        return &added->entry;
    const auto* restored = std::get_if<Restored>(&action);
    return restored ? &restored->to : nullptr;
}

// How often each identity came in, by itself or inside a folder that did: such a folder may be the
// one that is thought to be gone, or hold it.
QHash<quint64, int> countIncoming(const Outcome& outcome, const Scans& scans)
{
    QHash<quint64, int> count;
    QSet<QString> folders;
    for (const Action& action : outcome.actions) {
        if (const Entry* entry = incoming(action)) {
            ++count[entry->inode];
            if (entry->folder)
                folders.insert(entry->path);
        } else if (const auto* moved = std::get_if<Moved>(&action); moved && moved->to.folder) {
            folders.insert(moved->to.path); // something may have gone into it before
        }
    }
    if (folders.isEmpty())
        return count;
    for (const auto& [folder, entries] : scans) {
        QString above = folder;
        while (!above.isEmpty() && !folders.contains(above))
            above = parentPath(above);
        if (above.isEmpty())
            continue;
        for (const Entry& entry : entries)
            ++count[entry.inode];
    }
    return count;
}

} // namespace

void followOutOfRemovedFolders(
    Outcome& outcome, const Scans& scans, std::span<const Known> known, NameCase nameCase)
{
    QSet<QString> removedIDs;
    for (const Action& action : outcome.actions)
        if (const auto* removed = std::get_if<Removed>(&action))
            removedIDs.insert(removed->id);
    if (removedIDs.isEmpty())
        return;
    const QHash<quint64, int> incomingCount = countIncoming(outcome, scans);
    if (incomingCount.isEmpty())
        return;
    const auto below = nodesBelow(removedIDs, known, nameCase);
    for (Action& action : outcome.actions) {
        const Entry* entry = incoming(action);
        if (!entry || incomingCount.value(entry->inode) > 1)
            continue;
        const Known* node = below.value(entry->inode);
        if (node && node->folder == entry->folder)
            action = Moved{node->id, Entry(*entry)};
    }
    // Moves come before what is new, as everywhere; removals stay last.
    std::stable_partition(outcome.actions.begin(), outcome.actions.end(), [](const Action& action) {
        return !std::holds_alternative<Added>(action) &&
               !std::holds_alternative<Restored>(action) &&
               !std::holds_alternative<Removed>(action);
    });
}

} // namespace corvelle::DiskPlan
