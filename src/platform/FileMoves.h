// Moving, copying and deleting what a person keeps.
//
// Nothing here ever replaces what is there, follows a symbolic link or crosses into another device:
// a disk that is mounted somewhere below is neither copied, moved nor emptied. A failure carries
// the number of the system's error. Any thread; paths are absolute.
#pragma once

#include "base/Result.h"

#include <functional>

namespace corvelle {

// Told now and then during long work, so that the caller can show that it goes on.
using WorkTick = std::function<void()>;

// The most that a move copies to another device: a wait of seconds, not of minutes.
inline constexpr qint64 mostBytesMovedAcrossDevices = 256'000'000;

// Moves a file, folder or link to a free path in a folder that is there. Fails with EEXIST when
// something is at the target. To another device it copies, syncs and then deletes the source; what
// is larger than mostBytesMovedAcrossDevices fails with EFBIG, a mount point always with EBUSY.
Result<void> moveItem(const QString& from, const QString& to, const WorkTick& tick = {});

// Changes the case of a name on a volume that takes both for one.
Result<void> renameCase(const QString& from, const QString& to);

// Told of each file that a copy passes over.
using CopyFault = std::function<void(const Failure& failure)>;

// Copies a file, folder or link to a free path, with permissions and times; clones where the file
// system can. On a failure nothing is left at the target. With `passOver` the copy of a folder goes
// on without what can't be copied in it, unless the disk is full.
Result<void> copyItem(const QString& from, const QString& to, const WorkTick& tick = {},
    const CopyFault& passOver = {});

// Deletes the item and all below it. Goes on after a failure and tells the first; what lies on
// another device stays, with the folders on the way to it. Nothing there is no failure.
Result<void> removeItem(const QString& path, const WorkTick& tick = {});

// Makes the folder and those above it that are missing.
Result<void> makeFolder(const QString& path);

// Whether anything is at the path, a dangling link included.
bool isThere(const QString& path);

// Whether both paths are there and name the same thing.
bool isSameItem(const QString& one, const QString& other);

// A seam for tests: called before each change of the disk with the name of the step and the path.
// What it returns, other than 0, is the error that the step fails with.
using DiskFault = int (*)(const char* step, const QByteArray& path);
void injectDiskFault(DiskFault fault);

} // namespace corvelle
