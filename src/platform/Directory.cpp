#include "platform/Directory.h"

#include <QList>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

namespace corvelle {

namespace {

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
constexpr int stepFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr qsizetype recordBytes = 32'768;

// As the kernel lays out one entry; the C library has no declaration of it under this name.
struct Record
{
    quint64 inode;
    qint64 offset;
    quint16 length; // of the whole record
    unsigned char type;
    char name[1]; // as long as the record, ends in a zero byte
};
constexpr size_t nameOffset = offsetof(Record, name);

Failure lastError()
{
    return Failure(QString::fromLocal8Bit(std::strerror(errno)));
}

bool leadsUpward(const QByteArray& path)
{
    return path.startsWith('/') || path == ".." || path.startsWith("../") || path.endsWith("/..") ||
           path.contains("/../");
}

// The same as openat2() with RESOLVE_BENEATH and RESOLVE_NO_SYMLINKS, for kernels and containers
// that refuse that call.
int openStepByStep(int from, const QByteArray& relativePath)
{
    int at = ::fcntl(from, F_DUPFD_CLOEXEC, 0);
    const QList<QByteArray> names = relativePath.split('/');
    for (qsizetype i = 0; at >= 0 && i < names.size(); ++i) {
        const bool isLast = i + 1 == names.size();
        const int next = ::openat(at, names[i].constData(), isLast ? openFlags : stepFlags);
        const int error = errno;
        ::close(at);
        errno = error;
        at = next;
    }
    return at;
}

int openInside(int from, const QByteArray& relativePath)
{
    if (leadsUpward(relativePath)) {
        errno = EXDEV;
        return -1;
    }
    open_how how = {};
    how.flags = openFlags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    // EAGAIN: something was renamed while the kernel made sure that the path stays below.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const long fd = ::syscall(SYS_openat2, from, relativePath.constData(), &how, sizeof how);
        if (fd >= 0)
            return static_cast<int>(fd);
        if (errno == ENOSYS || errno == EPERM)
            return openStepByStep(from, relativePath);
        if (errno != EAGAIN && errno != EINTR)
            break;
    }
    return -1;
}

bool isDots(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

} // namespace

Result<Directory> Directory::open(const QByteArray& path)
{
    const int fd = ::open(path.constData(), openFlags);
    if (fd < 0)
        return lastError();
    return Directory(fd);
}

Result<Directory> Directory::openBelow(const QByteArray& relativePath) const
{
    const int fd = openInside(m_fd, relativePath);
    if (fd < 0)
        return lastError();
    return Directory(fd);
}

Directory::Directory(int fd)
    : m_fd(fd)
{}

Directory::Directory(Directory&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_records(std::move(other.m_records))
    , m_used(other.m_used)
    , m_next(other.m_next)
    , m_broken(other.m_broken)
{}

Directory& Directory::operator=(Directory&& other) noexcept
{
    std::swap(m_fd, other.m_fd);
    std::swap(m_records, other.m_records);
    std::swap(m_used, other.m_used);
    std::swap(m_next, other.m_next);
    std::swap(m_broken, other.m_broken);
    return *this;
}

Directory::~Directory()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

std::optional<QByteArrayView> Directory::nextName()
{
    while (m_next < m_used || refill()) {
        const char* record = m_records.get() + m_next;
        quint16 length = 0;
        std::memcpy(&length, record + offsetof(Record, length), sizeof length);
        m_next += length;
        const char* name = record + nameOffset;
        if (!isDots(name))
            return QByteArrayView(name, static_cast<qsizetype>(std::strlen(name)));
    }
    return std::nullopt;
}

bool Directory::refill()
{
    if (m_broken)
        return false;
    if (!m_records)
        m_records.reset(new char[recordBytes]);
    const long got = ::syscall(SYS_getdents64, m_fd, m_records.get(), recordBytes);
    m_broken = got < 0;
    m_used = got > 0 ? got : 0;
    m_next = 0;
    return got > 0;
}

Result<std::optional<FileFacts>> Directory::facts(const char* name) const
{
    struct statx status;
    if (::statx(m_fd, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, factsMask, &status) == 0)
        return factsOf(status);
    if (errno == ENOENT || errno == ENOTDIR)
        return std::optional<FileFacts>();
    return lastError();
}

std::optional<QString> nameText(QByteArrayView name)
{
    if (!name.isValidUtf8())
        return std::nullopt;
    QString text = QString::fromUtf8(name);
    // Decoding takes a leading byte order mark away, but here it is a part of the name.
    if (name.startsWith("\xEF\xBB\xBF"))
        text.prepend(QChar(QChar::ByteOrderMark));
    return text;
}

} // namespace corvelle
