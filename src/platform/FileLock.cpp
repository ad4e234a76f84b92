#include "platform/FileLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace corvelle {

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{}

FileLock& FileLock::operator=(FileLock&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileLock::Answer FileLock::tryLock(const QString& path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0)
        return {};
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        const QByteArray id = QByteArray::number(static_cast<qint64>(::getpid())) + '\n';
        if (::ftruncate(descriptor, 0) == 0)
            (void)!::pwrite(descriptor, id.constData(), static_cast<size_t>(id.size()), 0);
        return {FileLock(descriptor), std::nullopt};
    }
    const int error = errno;
    char text[16] = {};
    const ssize_t length = ::pread(descriptor, text, sizeof text, 0);
    ::close(descriptor);
    if (error != EWOULDBLOCK)
        return {};
    const QByteArray told = QByteArray(text, static_cast<int>(length > 0 ? length : 0)).trimmed();
    return {FileLock(), told.toInt()};
}

} // namespace corvelle
