#include "platform/FileFacts.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace corvelle {

const unsigned factsMask = STATX_TYPE | STATX_INO | STATX_SIZE | STATX_MTIME | STATX_BTIME;

namespace {

FileFacts::Kind kindOf(unsigned mode)
{
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileFacts::Kind::Regular;
    case S_IFDIR:
        return FileFacts::Kind::Folder;
    case S_IFLNK:
        return FileFacts::Kind::SymbolicLink;
    default:
        return FileFacts::Kind::Other;
    }
}

// One round of a well-known 64-bit finaliser: every bit of the input reaches every bit of the
// result.
quint64 mixed(quint64 value)
{
    value += 0x9e3779b97f4a7c15u;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9u;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebu;
    return value ^ (value >> 31);
}

quint64 mixed(quint64 seed, const statx_timestamp& time)
{
    return mixed(mixed(seed ^ static_cast<quint64>(time.tv_sec)) ^ time.tv_nsec);
}

// Some file systems claim to know a birth time and then give the zero point.
bool hasBirthTime(const struct statx& status)
{
    return (status.stx_mask & STATX_BTIME) &&
           (status.stx_btime.tv_sec != 0 || status.stx_btime.tv_nsec != 0);
}

// A freed inode is handed out again at once, so that a new file often has the inode of the one just
// deleted. The birth time tells them apart; without one, size and modification time do, at the
// price of losing a file that was edited and moved. Those of a folder change with everything put
// into it and are no help.
quint64 identityOf(const struct statx& status)
{
    quint64 identity = mixed(status.stx_ino);
    if (hasBirthTime(status))
        identity = mixed(identity, status.stx_btime);
    else if (!S_ISDIR(status.stx_mode))
        identity = mixed(mixed(identity ^ status.stx_size), status.stx_mtime);
    return identity ? identity : 1;
}

} // namespace

std::optional<FileFacts> factsOf(const struct statx& status)
{
    constexpr unsigned needed = STATX_TYPE | STATX_INO;
    if ((status.stx_mask & needed) != needed)
        return std::nullopt;
    FileFacts facts;
    facts.kind = kindOf(status.stx_mode);
    facts.mountTrigger = status.stx_attributes & STATX_ATTR_AUTOMOUNT;
    if (status.stx_mask & STATX_SIZE)
        facts.size = static_cast<qint64>(status.stx_size);
    if (status.stx_mask & STATX_MTIME)
        facts.modified =
            static_cast<double>(status.stx_mtime.tv_sec) + status.stx_mtime.tv_nsec / 1e9;
    facts.identity = identityOf(status);
    facts.device = (quint64(status.stx_dev_major) << 32) | status.stx_dev_minor;
    return facts;
}

std::optional<FileFacts> fileFacts(const QByteArray& path)
{
    struct statx status;
    if (::statx(AT_FDCWD, path.constData(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, factsMask,
            &status) != 0)
        return std::nullopt;
    return factsOf(status);
}

} // namespace corvelle
