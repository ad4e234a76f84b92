// One look at a folder outside the library that holds linked items: a linked folder with all below
// it, or the folder of linked files.
//
// Runs on a queue of the background with a connection of its own; everything in and out is a value.
// Paths are absolute. Changes no file; in the table only what is known of edited copies' originals.
#pragma once

#include "disk/DiskPass.h"

#include <stop_token>

namespace corvelle {

// What a look at a linked folder covers.
struct LinkedRequest
{
    bool everything = false;
    bool seeks = false;    // what is missing elsewhere may be here: look everywhere
    QSet<QString> folders; // each by itself
    QSet<QString> trees;   // with all below them

    bool isEverywhere() const { return everything || seeks; }
    void unite(const LinkedRequest& other);
};

struct LinkedQuery
{
    QString library;       // the root of the library
    QString root;          // the folder to look at
    bool isFolder = false; // whether it is itself linked
    bool isAway = false;   // known to be: not even looked for
    LinkedRequest request;
    DiskMemory memory; // of the request's folders, nothing for a look everywhere; of all folders
    // Items that were linked by themselves: those that lie here, and those that can't be found.
    std::vector<DiskPlan::Known> tops, sought;
};

struct LinkedFinding
{
    DiskPass pass;
    // The folder isn't there, or an empty one stands in its place: a disk went away, which says
    // nothing about what lies on it.
    bool isAway = false;
    std::optional<quint64> identity; // of the folder, where one is
    QStringList awayBelow;           // folders below it of which the same holds
    QSet<QString> here, gone;        // of the tops
};

// Whether the folder isn't there, or an empty one stands in the place of the one with this
// identity; and which one is there. Costs next to nothing; waits for the disk.
struct FolderPlace
{
    bool isAway = true;
    std::optional<quint64> identity;
};
FolderPlace lookAtPlace(const QString& folder, std::optional<quint64> known);

Result<LinkedFinding> lookAtLinked(LinkedQuery query, Round round, std::stop_token stop);

} // namespace corvelle
