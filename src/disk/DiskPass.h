// One look at the library's folder: reads the table and the disk, and works out what to do. Changes
// neither, but for the note of which folder a space's folder is.
//
// Runs on a queue of the background with a connection of its own; everything in and out is a value.
#pragma once

#include "disk/DiskPlan.h"
#include "library/Arrivals.h"

#include <QSize>

#include <stop_token>

namespace corvelle {

// What to look at: everything, or single folders.
struct DiskRequest
{
    bool everything = false;
    bool structural = false; // else only files that changed where they are
    QSet<QString> folders;   // paths relative to the root; each is looked at by itself
    QSet<QString> trees;     // these with all below them

    void unite(const DiskRequest& other);
};

// What the memory knows of the folders that are asked for.
struct DiskMemory
{
    std::vector<DiskPlan::Known> known; // what lies in the folders, and all below the trees
    QHash<QString, QString> folders;    // of all folders: path key to id
    NameCase nameCase = NameCase::Kept;
};

struct DiskPass
{
    // What to carry out, but for the additions, in order.
    std::vector<DiskPlan::Action> actions;
    // The additions with all that lies in new folders, a folder before its contents.
    std::vector<ArrivingItem> arriving;
    // Path key of each folder that has a node, to its id; a space's folder has the empty id.
    QHash<QString, QString> folders;
    // Linked items that are to move or to go: where the look knew them.
    QHash<QString, QString> knownAt;
    // Pixels of the pictures among changed and moved files, by node.
    QHash<QString, QSize> pictureSizes;
    NameCase nameCase = NameCase::Kept;
    // Something may have moved into a folder that had no node yet, or below one that moved: look
    // again once this is done.
    bool lookAgain = false;
    // Folders that came or moved: the next look goes through all that lies in them.
    QSet<QString> freshFolders;
    // Folders that the next look covers too: something seems to have left them.
    QSet<QString> lookAlso;
    // Folders of spaces that aren't there, or that a disk left empty: nothing is known of what lies
    // in them.
    QSet<QString> away;
    // Folders about which only a structural pass can tell more.
    QSet<QString> again;
};

// Whether another look can follow. What only that one could tell is otherwise taken as it is now.
enum class Round { Another, Last };

// At everything.
Result<DiskPass> lookAtDisk(const QString& root, Round round, std::stop_token stop);

// At single folders. Costs what lies in them, and for a structural look what is in the Trash.
Result<DiskPass> lookAtFolders(
    const QString& root, DiskRequest request, DiskMemory memory, Round round, std::stop_token stop);

} // namespace corvelle
