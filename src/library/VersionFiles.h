// The files behind the steps of undo: earlier contents of edited files and edited copies.
//
// At a start they are parked under `.corvelle/undo/`, in the same sub-path, before the folders they
// came from are cleared; what no step needs any more is deleted there. Paths are relative to the
// library's root. What a stored step names is believed only inside these folders.
#pragma once

#include "library/Change.h"

#include <functional>

namespace corvelle {

inline constexpr qint64 mostVersionBytes = 536'870'912;

// Where the file of such a path is parked; null for a path that is none of ours.
QString parkedPath(const QString& path);

// The file as it lies now, as an absolute path: where it was, else where it is parked. Null when it
// is neither.
QString findVersion(const QString& root, const QString& path);

// Brings a parked file back to its path. Whether it lies there now.
bool unparkVersion(const QString& root, const QString& path);

// The paths that a step needs. `shownPath` tells what a node shows now: a copy in use is no
// version.
std::vector<QString> versionPaths(
    const Step& step, const std::function<QString(const QString& nodeID)>& shownPath);

struct StepFiles
{
    qint64 seq = 0;
    bool undone = false;
    std::vector<QString> paths;
};

// Of all steps, newest first, those to drop so that the files behind the others stay at or under
// `most` bytes: from the first one over it, every step with files, and all older ones that could be
// undone, so that the stack has no hole. `needed` gets the paths of those that stay.
std::vector<qint64> stepsOverLimit(const std::vector<StepFiles>& newestFirst,
    const std::function<qint64(const QString& path)>& bytesOf, qint64 most,
    std::vector<QString>& needed);

// Parks the files and deletes whatever else lies under `.corvelle/undo/`.
void parkVersions(const QString& root, const std::vector<QString>& needed);

} // namespace corvelle
