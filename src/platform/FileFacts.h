// What the file system says about one path. A symbolic link is looked at itself, never through.
#pragma once

#include <QByteArray>

#include <optional>

struct statx;

namespace corvelle {

struct FileFacts
{
    enum class Kind : unsigned char { Regular, Folder, SymbolicLink, Other };

    Kind kind = Kind::Other;
    bool mountTrigger = false; // entering this folder would mount a disk that isn't mounted now
    qint64 size = 0;           // bytes
    std::optional<double> modified; // seconds since 1970; none when the file system doesn't know
    quint64 identity = 0; // the same as long as the file lives, wherever it is moved; never 0
    quint64 device = 0;   // changes when a disk is plugged in again: not for storing

    bool operator==(const FileFacts&) const = default;
};

// None when nothing is there or it can't be looked at. A relative path starts at the working
// folder. Mounts nothing. Any thread.
std::optional<FileFacts> fileFacts(const QByteArray& path);

// The fields that factsOf() reads, for a call of statx() elsewhere.
extern const unsigned factsMask;

// None when the file system didn't give what every fact is built on.
std::optional<FileFacts> factsOf(const struct statx& status);

} // namespace corvelle
