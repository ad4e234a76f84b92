// Copying, weighing and deleting a file or folder with all below it, by open folders, so that
// nothing on the way can be exchanged for a link. What lies on another device is left alone.
#pragma once

#include "base/Result.h"
#include "platform/FileMoves.h"

#include <QByteArray>

namespace corvelle {

Failure systemFailure(int error, const QString& path);

// The error that a test wants for this step, or 0.
int diskFault(const char* step, const QByteArray& path);

// The bytes of all files; ends early once they are over `enough`.
Result<qint64> bytesOf(const QByteArray& path, qint64 enough, const WorkTick& tick);

// To a path where nothing is. Synced to the disk when it succeeds; a failure leaves what was copied
// so far.
struct CopyTold
{
    WorkTick tick;
    CopyFault passOver;
};
Result<void> copyTree(const QByteArray& from, const QByteArray& to, const CopyTold& told);

Result<void> removeTree(const QByteArray& path, const WorkTick& tick);

void syncFolder(const QByteArray& path);

} // namespace corvelle
