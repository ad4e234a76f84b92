#include "platform/FileMoves.h"

#include "platform/FileFacts.h"
#include "platform/TreeWalk.h"

#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// A name that every look at the folder passes over, for what isn't whole yet.
QString partBeside(const QString& target)
{
    return QFileInfo(target).path() + u"/.corvelle-"_s +
           QUuid::createUuid().toString(QUuid::Id128) + u".part"_s;
}

int renameToFreePath(const QByteArray& from, const QByteArray& to)
{
    if (const int fault = diskFault("rename", from))
        return fault;
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL)
        return errno;
    // A file system that doesn't know the flag: look, then rename.
    if (fileFacts(to))
        return EEXIST;
    return ::rename(from, to) == 0 ? 0 : errno;
}

bool isMountPoint(const QString& path)
{
    struct statx facts;
    return ::statx(AT_FDCWD, QFile::encodeName(path), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
               STATX_TYPE, &facts) == 0 &&
           (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT);
}

// The source goes only when the copy is whole and on the disk. What of the source can't be deleted
// stays beside the copy: a thing twice is no loss.
Result<void> moveAcrossDevices(const QString& from, const QString& to, const WorkTick& tick)
{
    if (isMountPoint(from))
        return systemFailure(EBUSY, from);
    const auto bytes = bytesOf(QFile::encodeName(from), mostBytesMovedAcrossDevices, tick);
    if (!bytes)
        return bytes.failure();
    if (*bytes > mostBytesMovedAcrossDevices)
        return systemFailure(EFBIG, from);
    if (auto copied = copyItem(from, to, tick); !copied)
        return copied;
    (void)removeItem(from, tick);
    return {};
}

} // namespace

Result<void> moveItem(const QString& from, const QString& to, const WorkTick& tick)
{
    const int error = renameToFreePath(QFile::encodeName(from), QFile::encodeName(to));
    if (error == EXDEV)
        return moveAcrossDevices(from, to, tick);
    if (error != 0)
        return systemFailure(error, from);
    return {};
}

Result<void> renameCase(const QString& from, const QString& to)
{
    if (const int fault = diskFault("rename", QFile::encodeName(from)))
        return systemFailure(fault, from);
    if (::rename(QFile::encodeName(from), QFile::encodeName(to)) != 0)
        return systemFailure(errno, from);
    return {};
}

Result<void> copyItem(
    const QString& from, const QString& to, const WorkTick& tick, const CopyFault& passOver)
{
    const QString part = partBeside(to);
    auto copied = copyTree(QFile::encodeName(from), QFile::encodeName(part), {tick, passOver});
    if (copied)
        if (const int error = renameToFreePath(QFile::encodeName(part), QFile::encodeName(to)))
            copied = systemFailure(error, to);
    if (!copied)
        (void)removeItem(part, tick);
    else
        syncFolder(QFile::encodeName(QFileInfo(to).path()));
    return copied;
}

Result<void> removeItem(const QString& path, const WorkTick& tick)
{
    return removeTree(QFile::encodeName(path), tick);
}

Result<void> makeFolder(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (const auto there = fileFacts(name); there && there->kind == FileFacts::Kind::Folder)
        return {};
    if (const int fault = diskFault("mkdir", name))
        return systemFailure(fault, path);
    if (::mkdir(name, 0777) == 0)
        return {};
    if (errno != ENOENT)
        return systemFailure(errno, path);
    const QString above = QFileInfo(path).path();
    if (above == path)
        return systemFailure(ENOENT, path);
    if (auto made = makeFolder(above); !made)
        return made;
    if (::mkdir(name, 0777) != 0 && errno != EEXIST)
        return systemFailure(errno, path);
    return {};
}

bool isThere(const QString& path)
{
    return fileFacts(QFile::encodeName(path)).has_value();
}

bool isSameItem(const QString& one, const QString& other)
{
    struct stat left, right;
    return ::lstat(QFile::encodeName(one), &left) == 0 &&
           ::lstat(QFile::encodeName(other), &right) == 0 && left.st_ino == right.st_ino &&
           left.st_dev == right.st_dev;
}

} // namespace corvelle
