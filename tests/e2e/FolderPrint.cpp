#include "e2e/FolderPrint.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSet>

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray contentOf(int folder, const char* name)
{
    const int descriptor = ::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return "unreadable";
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(&file);
    return hash.result().toHex();
}

QByteArray targetOf(int folder, const char* name)
{
    char target[4096];
    const ssize_t length = ::readlinkat(folder, name, target, sizeof target);
    return QByteArray(target, length < 0 ? 0 : static_cast<qsizetype>(length));
}

// Takes the descriptor over.
void read(int folder, const QByteArray& below, FolderPrint& print)
{
    DIR* listing = ::fdopendir(folder);
    if (!listing) {
        ::close(folder);
        return;
    }
    while (const dirent* entry = ::readdir(listing)) {
        const char* name = entry->d_name;
        const bool ours = below.isEmpty() && std::strcmp(name, ".corvelle") == 0;
        if (ours || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat facts = {};
        if (::fstatat(folder, name, &facts, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        const QByteArray path = below + name;
        QByteArray line = QByteArray::number(facts.st_mode, 8) + ' ' +
                          QByteArray::number(facts.st_uid) + " #" +
                          QByteArray::number(static_cast<quint64>(facts.st_ino)) + ' ' +
                          QByteArray::number(static_cast<qint64>(facts.st_size)) + " at " +
                          QByteArray::number(static_cast<qint64>(facts.st_mtim.tv_sec)) + '.' +
                          QByteArray::number(static_cast<qint64>(facts.st_mtim.tv_nsec)) + ' ';
        if (S_ISREG(facts.st_mode))
            line += contentOf(folder, name);
        else if (S_ISLNK(facts.st_mode))
            line += targetOf(folder, name);
        print.insert(path, line);
        if (S_ISDIR(facts.st_mode)) {
            const int inner =
                ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
            if (inner >= 0)
                read(inner, path + '/', print);
        }
    }
    ::closedir(listing);
}

} // namespace

FolderPrint printOf(const QString& folder)
{
    FolderPrint print;
    const int descriptor =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0)
        read(descriptor, {}, print);
    return print;
}

QStringList differences(const FolderPrint& before, const FolderPrint& after)
{
    QStringList lines;
    for (auto old = before.cbegin(); old != before.cend(); ++old) {
        const auto now = after.constFind(old.key());
        if (now == after.cend())
            lines.append("gone: " + QString::fromUtf8(old.key()));
        else if (*now != *old)
            lines.append("changed: " + QString::fromUtf8(old.key() + ": " + *old + " -> " + *now));
    }
    for (auto now = after.cbegin(); now != after.cend(); ++now)
        if (!before.contains(now.key()))
            lines.append("came: " + QString::fromUtf8(now.key()));
    return lines;
}
