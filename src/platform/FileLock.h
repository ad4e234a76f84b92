// An exclusive lock on a file that the operating system frees when the process ends, also after a
// crash.
#pragma once

#include <QString>

#include <optional>

namespace corvelle {

class FileLock
{
public:
    FileLock() = default;
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;

    bool isHeld() const { return m_descriptor >= 0; }

    struct Answer;
    // Opens or makes the file (mode 0644) and tries the lock without waiting. On success the file
    // holds this process's id in decimal and a newline.
    static Answer tryLock(const QString& path);

private:
    explicit FileLock(int descriptor)
        : m_descriptor(descriptor)
    {}
    int m_descriptor = -1;
};

struct FileLock::Answer
{
    FileLock lock;                // not held when locks don't work there, which stops nobody
    std::optional<qint32> heldBy; // another process has it: its id, or 0 when it wrote none
};

} // namespace corvelle
