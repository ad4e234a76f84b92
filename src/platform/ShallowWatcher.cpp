#include "platform/ShallowWatcher.h"

#include "base/Log.h"
#include "platform/Directory.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto gatherTime = std::chrono::milliseconds(500);

constexpr uint32_t shallowEvents = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB |
                                   IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF |
                                   IN_ONLYDIR | IN_EXCL_UNLINK;

} // namespace

class ShallowWatcher::Thread
{
public:
    explicit Thread(Wishes wishes)
        : m_wishes(std::move(wishes))
        , m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
        , m_notify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
        , m_thread([this] { loop(); })
    {}

    ~Thread()
    {
        m_ending = true;
        wake();
        m_thread.join();
        for (const auto& done : m_flushes)
            done();
        ::close(m_wake);
        if (m_notify >= 0)
            ::close(m_notify);
    }

    bool watch(const QString& folder)
    {
        if (m_notify < 0)
            return false;
        const int descriptor =
            ::inotify_add_watch(m_notify, QFile::encodeName(folder).constData(), shallowEvents);
        if (descriptor < 0) {
            if (errno == ENOSPC || errno == ENOMEM)
                logLine(u"watch: no more folders can be watched (fs.inotify.max_user_watches)"_s);
            forget(folder);
            return false;
        }
        const std::lock_guard lock(m_mutex);
        const auto known = m_descriptors.constFind(folder);
        if (known != m_descriptors.cend() && *known != descriptor)
            drop(folder, *known); // another folder lay here before
        m_descriptors.insert(folder, descriptor);
        m_folders[descriptor].insert(folder);
        return true;
    }

    void forget(const QString& folder)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_descriptors.constFind(folder); known != m_descriptors.cend())
            drop(folder, *known);
        m_descriptors.remove(folder);
    }

    void flush(std::function<void()> done)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_flushes.push_back(std::move(done));
        }
        wake();
    }

private:
    void wake()
    {
        const uint64_t one = 1;
        (void)!::write(m_wake, &one, sizeof one);
    }

    // One folder may be watched under several names. With the lock.
    void drop(const QString& folder, int descriptor)
    {
        const auto names = m_folders.find(descriptor);
        if (names == m_folders.end())
            return;
        names->remove(folder);
        if (!names->isEmpty())
            return;
        m_folders.erase(names);
        ::inotify_rm_watch(m_notify, descriptor);
    }

    void loop()
    {
        while (true) {
            pollfd descriptors[] = {{m_wake, POLLIN, 0}, {m_notify, POLLIN, 0}};
            ::poll(descriptors, m_notify >= 0 ? 2 : 1, waitMs());
            uint64_t count = 0;
            (void)!::read(m_wake, &count, sizeof count);
            if (m_ending)
                return;
            std::vector<std::function<void()>> flushes;
            {
                const std::lock_guard lock(m_mutex);
                flushes.swap(m_flushes);
                readEvents();
            }
            if (m_since && (!flushes.empty() || SteadyClock::now() >= *m_since + gatherTime)) {
                m_since.reset();
                m_wishes.handler(std::exchange(m_changed, {}));
            }
            for (const auto& done : flushes)
                done();
        }
    }

    int waitMs() const
    {
        if (!m_since)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            *m_since + gatherTime - SteadyClock::now());
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
    }

    void readEvents()
    {
        alignas(inotify_event) char buffer[16 * 1024];
        while (m_notify >= 0) {
            const ssize_t size = ::read(m_notify, buffer, sizeof buffer);
            if (size <= 0)
                return;
            for (const char* at = buffer; at < buffer + size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                at += sizeof(inotify_event) + event->len;
                take(*event);
            }
        }
    }

    void take(const inotify_event& event)
    {
        if (event.mask & IN_Q_OVERFLOW) {
            for (auto folder = m_descriptors.cbegin(); folder != m_descriptors.cend(); ++folder)
                tell(folder.key());
            return;
        }
        const auto names = m_folders.constFind(event.wd);
        if (names == m_folders.cend())
            return;
        if (event.len > 0) {
            const auto name = nameText(QByteArrayView(static_cast<const char*>(event.name)));
            if (!name || m_wishes.isSkipped(*name))
                return;
        }
        for (const QString& folder : *names)
            tell(folder);
        if (event.mask & IN_IGNORED) {
            for (const QString& folder : *names)
                m_descriptors.remove(folder);
            m_folders.erase(names);
        }
    }

    void tell(const QString& folder)
    {
        if (!m_since)
            m_since = SteadyClock::now();
        m_changed.insert(folder);
    }

    const Wishes m_wishes;
    const int m_wake;
    const int m_notify;
    std::atomic<bool> m_ending = false;

    // Of the thread.
    QSet<QString> m_changed;
    std::optional<SteadyClock::time_point> m_since; // when the first of them changed

    std::mutex m_mutex;                // guards the next three
    QHash<QString, int> m_descriptors; // by folder
    QHash<int, QSet<QString>> m_folders;
    std::vector<std::function<void()>> m_flushes;

    std::thread m_thread; // last: it uses all others
};

ShallowWatcher::ShallowWatcher(Wishes wishes)
    : m_thread(std::make_unique<Thread>(std::move(wishes)))
{}

ShallowWatcher::~ShallowWatcher() = default;

bool ShallowWatcher::watch(const QString& folder)
{
    return m_thread->watch(folder);
}

void ShallowWatcher::forget(const QString& folder)
{
    m_thread->forget(folder);
}

void ShallowWatcher::flush(std::function<void()> done)
{
    m_thread->flush(std::move(done));
}

} // namespace corvelle
