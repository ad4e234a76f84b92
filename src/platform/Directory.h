// One open folder: its names, and the facts of what lies in it.
//
// Everything is looked up from the folder itself, so it doesn't matter how long its path is or
// whether it was moved meanwhile. No symbolic link in it is followed. Only opening a folder can
// mount a disk, and FileFacts::mountTrigger says so beforehand. One thread at a time.
#pragma once

#include "base/Result.h"
#include "platform/FileFacts.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <memory>
#include <optional>

namespace corvelle {

class Directory
{
public:
    // Fails for anything that is no folder, a link to a folder included. Links on the way there are
    // followed.
    static Result<Directory> open(const QByteArray& path);

    // A folder somewhere below this one; fails also when the way there leads through a link or
    // upward.
    Result<Directory> openBelow(const QByteArray& relativePath) const;

    Directory(Directory&& other) noexcept;
    Directory& operator=(Directory&& other) noexcept;
    ~Directory();

    // The next name, in the order of the file system, without "." and "..". The view ends in a zero
    // byte and holds until the next call. None at the end, or when reading failed: then isBroken().
    // Names come once; open the folder again to read them again.
    std::optional<QByteArrayView> nextName();

    // Whether reading the names failed, so that those told are not all there are.
    bool isBroken() const { return m_broken; }

    // The facts of a name in this folder, or of a relative path below it. No value inside means
    // that nothing is there; a failure, that it couldn't be told.
    Result<std::optional<FileFacts>> facts(const char* name) const;

private:
    explicit Directory(int fd);
    bool refill();

    int m_fd;
    std::unique_ptr<char[]> m_records; // what the kernel gave last
    qsizetype m_used = 0, m_next = 0;  // bytes of m_records
    bool m_broken = false;
};

// A name as text; none when it isn't valid UTF-8. Gives the same bytes back by toUtf8().
std::optional<QString> nameText(QByteArrayView name);

} // namespace corvelle
