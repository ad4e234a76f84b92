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

struct DiskPass
{
    // What to carry out, but for the additions, in order.
    std::vector<DiskPlan::Action> actions;
    // The additions with all that lies in new folders, a folder before its contents.
    std::vector<ArrivingItem> arriving;
    // Path key of each folder that has a node, to its id; a space's folder has the empty id.
    QHash<QString, QString> folders;
    // Pixels of the pictures among changed and moved files, by node.
    QHash<QString, QSize> pictureSizes;
    NameCase nameCase = NameCase::Kept;
    // Something may have moved into a folder that had no node yet, or below one that moved: look
    // again once this is done.
    bool lookAgain = false;
};

// Whether another look can follow. What only that one could tell is otherwise taken as it is now.
enum class Round { Another, Last };

Result<DiskPass> lookAtDisk(const QString& root, Round round, std::stop_token stop);

} // namespace corvelle
