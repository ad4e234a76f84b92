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

} // namespace

void followOutOfRemovedFolders(Outcome& outcome, std::span<const Known> known, NameCase nameCase)
{
    QSet<QString> removedIDs;
    QHash<quint64, int> incomingCount;
    for (const Action& action : outcome.actions) {
        if (const auto* removed = std::get_if<Removed>(&action))
            removedIDs.insert(removed->id);
        else if (const Entry* entry = incoming(action))
            ++incomingCount[entry->inode];
    }
    if (removedIDs.isEmpty() || incomingCount.isEmpty())
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
