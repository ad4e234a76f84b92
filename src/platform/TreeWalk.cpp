#include "platform/TreeWalk.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

std::atomic<DiskFault> injected = nullptr;

// Every level keeps a folder open; a process may have 1,024 open by default.
constexpr int deepest = 400;
constexpr size_t chunkBytes = 1 << 20;

class Descriptor
{
public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {}
    Descriptor(Descriptor&& other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    explicit operator bool() const { return m_fd >= 0; }
    operator int() const { return m_fd; }

private:
    int m_fd;
};

struct Name
{
    int folder; // AT_FDCWD for a whole path
    const QByteArray& name;
};

Failure failureAt(int error, const Name& at)
{
    return systemFailure(error, QFile::decodeName(at.name));
}

bool look(const Name& at, struct stat& facts)
{
    return ::fstatat(at.folder, at.name, &facts, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) == 0;
}

Descriptor openFolder(const Name& at)
{
    return Descriptor(
        ::openat(at.folder, at.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Where a folder lies. A bind mount shows another place of the same device, so the mount counts
// too.
struct Volume
{
    quint64 device = 0;
    quint64 mount = 0; // 0 where the system doesn't tell it
    bool operator==(const Volume&) const = default;
};

std::optional<Volume> volumeOf(const Descriptor& folder)
{
    struct statx facts;
    if (::statx(folder, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MNT_ID, &facts) != 0)
        return std::nullopt;
    return Volume{(quint64(facts.stx_dev_major) << 32) | facts.stx_dev_minor,
        facts.stx_mask & STATX_MNT_ID ? facts.stx_mnt_id : 0};
}

// All names first: a folder that is changed while it is read may tell a name twice or never.
Result<std::vector<QByteArray>> namesIn(const Descriptor& folder, const Name& at)
{
    const int copy = ::dup(folder);
    DIR* stream = copy < 0 ? nullptr : ::fdopendir(copy);
    if (!stream) {
        const int error = errno;
        if (copy >= 0)
            ::close(copy);
        return failureAt(error, at);
    }
    std::vector<QByteArray> names;
    ::rewinddir(stream);
    errno = 0;
    while (const dirent* entry = ::readdir(stream))
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.emplace_back(entry->d_name);
    const int error = errno;
    ::closedir(stream);
    if (error != 0)
        return failureAt(error, at);
    return names;
}

void keepTimes(int fd, const struct stat& source)
{
    const timespec times[2] = {source.st_atim, source.st_mtim};
    ::futimens(fd, times);
}

// Shares the blocks where the file system can, lets it copy them itself where it can't, and reads
// and writes as the last way.
int copyBytes(int from, int to, const WorkTick& tick)
{
    if (::ioctl(to, FICLONE, from) == 0)
        return 0;
    while (true) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, chunkBytes * 16, 0);
        if (copied > 0) {
            if (tick)
                tick();
            continue;
        }
        if (copied == 0 && ::lseek(from, 0, SEEK_CUR) > 0)
            return 0;
        if (copied < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG))
            return errno;
        break; // not for these files, or for a made-up one that tells no size
    }
    const auto chunk = std::make_unique<char[]>(chunkBytes);
    while (true) {
        const ssize_t read = ::read(from, chunk.get(), chunkBytes);
        if (read == 0)
            return 0;
        if (read < 0 && errno == EINTR)
            continue;
        if (read < 0)
            return errno;
        for (ssize_t done = 0; done < read;) {
            const ssize_t written =
                ::write(to, chunk.get() + done, static_cast<size_t>(read - done));
            if (written < 0 && errno != EINTR)
                return errno;
            done += std::max<ssize_t>(written, 0);
        }
        if (tick)
            tick();
    }
}

Result<void> copyFile(const Name& from, const Name& to, const CopyTold& told)
{
    const Descriptor source(
        ::openat(from.folder, from.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!source)
        return failureAt(errno, from);
    struct stat facts;
    if (::fstat(source, &facts) != 0)
        return failureAt(errno, from);
    if (!S_ISREG(facts.st_mode))
        return failureAt(EINVAL, from);
    const Descriptor target(
        ::openat(to.folder, to.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!target)
        return failureAt(errno, to);
    if (const int error = copyBytes(source, target, told.tick))
        return failureAt(error, to);
    ::fchmod(target, facts.st_mode & 07777);
    keepTimes(target, facts);
    // Where a disk is full or broken it may say so only now.
    if (::fsync(target) != 0)
        return failureAt(errno, to);
    return {};
}

Result<void> copyLink(const Name& from, const Name& to)
{
    QByteArray target(4096, '\0');
    const ssize_t length =
        ::readlinkat(from.folder, from.name, target.data(), static_cast<size_t>(target.size()));
    if (length < 0)
        return failureAt(errno, from);
    target.truncate(length);
    if (::symlinkat(target, to.folder, to.name) != 0)
        return failureAt(errno, to);
    return {};
}

Result<void> copyAny(const Name& from, const Name& to, const std::optional<Volume>& volume,
    int depth, const CopyTold& told);
void removeAny(const Name& at, const Volume& volume, int depth, std::optional<Failure>& first,
    const WorkTick& tick);

// Whether a copy can go on without this one.
bool mayPassOver(const Failure& failure)
{
    const int error = failure.systemError();
    return error != ENOSPC && error != EDQUOT;
}

Result<void> copyFolder(const Name& from, const Name& to, const struct stat& facts,
    const std::optional<Volume>& outer, int depth, const CopyTold& told)
{
    if (depth > deepest)
        return failureAt(ELOOP, from);
    const Descriptor source = openFolder(from);
    if (!source)
        return failureAt(errno, from);
    // Leaving out a disk that is mounted below would make the copy less than its source.
    const auto volume = volumeOf(source);
    if (!volume || (outer && *outer != *volume))
        return failureAt(EXDEV, from);
    if (::mkdirat(to.folder, to.name, 0700) != 0)
        return failureAt(errno, to);
    const Descriptor target = openFolder(to);
    if (!target)
        return failureAt(errno, to);
    const auto made = volumeOf(target);
    if (!made)
        return failureAt(errno, to);
    const auto names = namesIn(source, from);
    if (!names)
        return names.failure();
    for (const QByteArray& name : *names) {
        auto copied = copyAny({source, name}, {target, name}, volume, depth + 1, told);
        if (copied)
            continue;
        if (!told.passOver || !mayPassOver(copied.failure()))
            return copied;
        told.passOver(copied.failure());
        std::optional<Failure> ignored; // of what was begun
        removeAny({target, name}, *made, depth, ignored, {});
    }
    ::fchmod(target, facts.st_mode & 07777);
    keepTimes(target, facts);
    ::fsync(target);
    return {};
}

Result<void> copyAny(const Name& from, const Name& to, const std::optional<Volume>& volume,
    int depth, const CopyTold& told)
{
    if (told.tick)
        told.tick();
    if (const int fault = diskFault("copy", from.name))
        return failureAt(fault, from);
    struct stat facts;
    if (!look(from, facts))
        return failureAt(errno, from);
    if (S_ISDIR(facts.st_mode))
        return copyFolder(from, to, facts, volume, depth, told);
    if (S_ISLNK(facts.st_mode))
        return copyLink(from, to);
    return copyFile(from, to, told);
}

Result<void> weigh(const Name& at, const std::optional<Volume>& outer, qint64 enough, int depth,
    qint64& bytes, const WorkTick& tick)
{
    struct stat facts;
    if (!look(at, facts))
        return failureAt(errno, at);
    if (tick)
        tick();
    if (!S_ISDIR(facts.st_mode)) {
        bytes += S_ISREG(facts.st_mode) ? facts.st_size : 0;
        return {};
    }
    if (depth > deepest)
        return failureAt(ELOOP, at);
    const Descriptor folder = openFolder(at);
    if (!folder)
        return failureAt(errno, at);
    const auto volume = volumeOf(folder);
    if (!volume || (outer && *outer != *volume))
        return failureAt(EBUSY, at);
    const auto names = namesIn(folder, at);
    if (!names)
        return names.failure();
    for (const QByteArray& name : *names) {
        if (bytes > enough)
            return {};
        if (auto weighed = weigh({folder, name}, volume, enough, depth + 1, bytes, tick); !weighed)
            return weighed;
    }
    return {};
}

// The first failure is kept in `first`; the rest goes on.
void removeAny(const Name& at, const Volume& volume, int depth, std::optional<Failure>& first,
    const WorkTick& tick)
{
    const auto fail = [&](int error) {
        if (!first && error != ENOENT)
            first = failureAt(error, at);
    };
    struct stat facts;
    if (!look(at, facts))
        return fail(errno);
    if (tick)
        tick();
    if (const int fault = diskFault("remove", at.name))
        return fail(fault);
    if (!S_ISDIR(facts.st_mode)) {
        if (::unlinkat(at.folder, at.name, 0) != 0)
            fail(errno);
        return;
    }
    if (depth > deepest)
        return fail(ELOOP);
    if (const Descriptor folder = openFolder(at)) {
        if (volumeOf(folder) != volume)
            return fail(EBUSY);
        if (const auto names = namesIn(folder, at))
            for (const QByteArray& name : *names)
                removeAny({folder, name}, volume, depth + 1, first, tick);
    }
    if (::unlinkat(at.folder, at.name, AT_REMOVEDIR) != 0)
        fail(errno);
}

} // namespace

Failure systemFailure(int error, const QString& path)
{
    return Failure(QString::fromLocal8Bit(std::strerror(error)) + u": "_s + path, error);
}

void injectDiskFault(DiskFault fault)
{
    injected = fault;
}

int diskFault(const char* step, const QByteArray& path)
{
    const DiskFault fault = injected;
    return fault ? fault(step, path) : 0;
}

Result<qint64> bytesOf(const QByteArray& path, qint64 enough, const WorkTick& tick)
{
    qint64 bytes = 0;
    if (auto weighed = weigh({AT_FDCWD, path}, {}, enough, 0, bytes, tick); !weighed)
        return weighed.failure();
    return bytes;
}

Result<void> copyTree(const QByteArray& from, const QByteArray& to, const CopyTold& told)
{
    return copyAny({AT_FDCWD, from}, {AT_FDCWD, to}, {}, 0, told);
}

Result<void> removeTree(const QByteArray& path, const WorkTick& tick)
{
    // A mount point itself is never emptied: it must lie on the volume of its folder.
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray above = slash > 0 ? path.left(slash) : QByteArray("/");
    const Descriptor folder(::open(above, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return errno == ENOENT ? Result<void>() : failureAt(errno, {AT_FDCWD, above});
    const auto volume = volumeOf(folder);
    if (!volume)
        return failureAt(errno, {AT_FDCWD, above});
    std::optional<Failure> first;
    removeAny({folder, path.mid(slash + 1)}, *volume, 0, first, tick);
    if (first)
        return *first;
    return {};
}

void syncFolder(const QByteArray& path)
{
    if (const Descriptor folder = openFolder({AT_FDCWD, path}))
        ::fsync(folder);
}

} // namespace corvelle
