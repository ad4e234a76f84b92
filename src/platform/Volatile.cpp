#include "platform/Volatile.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/statvfs.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

bool isBelow(const QString& path, const QString& folder)
{
    return !folder.isEmpty() && path.startsWith(folder + u'/');
}

QString resolved(const QString& folder)
{
    const QString real = QDir(folder).canonicalPath();
    return real.isEmpty() ? folder : real;
}

} // namespace

bool isVolatile(const QString& path)
{
    for (const QString& folder : {u"/tmp"_s, u"/var/tmp"_s, u"/dev/shm"_s, QDir::tempPath(),
             qEnvironmentVariable("XDG_RUNTIME_DIR"),
             QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)})
        if (isBelow(path, folder) || isBelow(path, resolved(folder)))
            return true;
    // The Trash of the desktop: in the home folder, and at the top of other volumes.
    if (path.contains(u"/.local/share/Trash/") || path.contains(u"/.Trash-") ||
        path.contains(u"/.Trash/"))
        return true;
    struct statvfs volume = {};
    return ::statvfs(QFile::encodeName(path), &volume) == 0 && (volume.f_flag & ST_RDONLY);
}

} // namespace corvelle
