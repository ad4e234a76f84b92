// Decides what a scan of a folder means for the tree. Reads and changes nothing.
//
// Paths are relative to the scanned root and compared by pathKey(). Sizes are bytes, times seconds
// since 1970. Any thread. The same input always gives the same outcome.
#pragma once

#include "base/Clock.h"
#include "base/SkippedNames.h"
#include "base/Text.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <map>
#include <optional>
#include <span>
#include <variant>
#include <vector>

namespace corvelle::DiskPlan {

using corvelle::distantPast; // the modification time of something whose time is unknown

// Times that lie no further apart count as the same: some disks keep them only roughly.
inline constexpr double timeTolerance = 1.0; // seconds

// One node as the library knows it.
struct Known
{
    QString id;
    QString path;
    bool folder = false;
    std::optional<quint64> inode;   // the identity seen last
    std::optional<qint64> size;     // seen last
    std::optional<double> modified; // seen last

    bool operator==(const Known&) const = default;
};

// One thing on disk.
struct Entry
{
    QString path;
    bool folder = false;
    quint64 inode = 0; // the identity, see FileFacts
    qint64 size = 0;   // 0 for a folder
    double modified = distantPast;
    bool generated = false; // a folder whose contents are made by a tool

    bool operator==(const Entry&) const = default;
};

// What was found, by the path of the folder it lies in. A folder without a key was not looked at,
// and nothing is known about what lies in it; one with an empty list is empty.
using Scans = std::map<QString, std::vector<Entry>>;

struct Changed // the file has other contents
{
    QString id;
    Entry entry;
    bool operator==(const Changed&) const = default;
};
struct Identity // the same contents; what is stored of the file needs refreshing
{
    QString id;
    Entry entry;
    bool operator==(const Identity&) const = default;
};
struct Moved // lies at another path now, or at the same one in another case
{
    QString id;
    Entry to;
    bool operator==(const Moved&) const = default;
};
struct Restored // a node in the Trash has its file back on disk
{
    QString id;
    Entry to;
    bool operator==(const Restored&) const = default;
};
struct Added // new; a folder stands for all that lies in it
{
    Entry entry;
    bool operator==(const Added&) const = default;
};
struct Removed // gone; a folder stands for all that lay in it
{
    QString id;
    bool operator==(const Removed&) const = default;
};

using Action = std::variant<Changed, Identity, Moved, Restored, Added, Removed>;

struct Outcome
{
    std::vector<Action> actions; // in the order in which they must be carried out
    QSet<QString> again;         // paths of folders that only a structural pass can decide about

    bool operator==(const Outcome&) const = default;
};

// A move shows up as a removal and an addition that may arrive at different times. An incremental
// pass, which sees one of them, therefore decides neither and asks for its folders to be looked at
// again.
enum class Pass { Incremental, Structural };

// `trashed` gives the node in the Trash for a file identity, `folders` holds the path keys of the
// folders that have a node. Of the nodes only those count whose folder was scanned. Additions are
// told only for folders with a node.
Outcome compare(const Scans& scans, std::span<const Known> known,
    const QHash<quint64, QString>& trashed, const QSet<QString>& folders, Pass pass,
    NameCase nameCase);

} // namespace corvelle::DiskPlan
