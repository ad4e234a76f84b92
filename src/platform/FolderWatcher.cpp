#include "platform/FolderWatcher.h"

#include "base/Log.h"
#include "platform/Directory.h"

#include <QFile>
#include <QHash>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <map>
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

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

constexpr auto latency = std::chrono::milliseconds(500);
constexpr auto moveWait = std::chrono::milliseconds(50); // for the other half of a move
constexpr auto rootPoll = std::chrono::seconds(2);       // while the root is away
constexpr qsizetype mostPaths = 100'000; // in a batch; more are told as "everything"

constexpr uint32_t watchedEvents = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB |
                                   IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF |
                                   IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;

} // namespace

class FolderWatcher::Thread
{
    // A watched folder. Its path is put together from the names above it, so a folder that moves
    // takes all below it along.
    struct Watched
    {
        int descriptor = -1;
        Watched* parent = nullptr;
        QString name;            // of the root empty
        bool isComplete = false; // all folders in it are watched; not so when it moved meanwhile,
                                 // or when rights are missing
        std::map<QString, std::unique_ptr<Watched>> children;

        QString path() const
        {
            if (!parent)
                return {};
            const QString above = parent->path();
            return above.isEmpty() ? name : above + u'/' + name;
        }
    };

public:
    Thread(const QString& root, Wishes wishes)
        : m_root(root)
        , m_wishes(std::move(wishes))
        , m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        watchAll();
        m_thread = std::thread([this] { loop(); });
    }

    ~Thread()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        wake();
        m_thread.join();
        for (const auto& done : m_flushes)
            done();
        closeNotify();
        ::close(m_wake);
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

    // ---- the loop ----
    void loop()
    {
        while (true) {
            pollfd descriptors[] = {{m_wake, POLLIN, 0}, {m_notify, POLLIN, 0}};
            ::poll(descriptors, m_notify >= 0 ? 2 : 1, waitMs());
            uint64_t count = 0;
            (void)!::read(m_wake, &count, sizeof count);
            std::vector<std::function<void()>> flushes;
            {
                const std::lock_guard lock(m_mutex);
                if (m_ending)
                    return;
                flushes.swap(m_flushes);
            }
            readEvents();
            const Time now = Clock::now();
            dropLostMoves(flushes.empty() ? now : now + moveWait);
            if (m_isShort && now >= m_nextSlowPoll) {
                m_nextSlowPoll = now + m_wishes.slowPoll;
                everything();
            }
            lookForRoot(now);
            if (!flushes.empty() || (m_since && now >= *m_since + latency))
                deliver();
            for (const auto& done : flushes)
                done();
        }
    }

    int waitMs() const
    {
        std::optional<Time> wanted;
        const auto by = [&](Time time) { wanted = wanted ? std::min(*wanted, time) : time; };
        if (m_since)
            by(*m_since + latency);
        if (!m_moves.empty())
            by(m_moves.begin()->second.since + moveWait);
        if (m_isShort)
            by(m_nextSlowPoll);
        if (!m_top)
            by(m_nextRootLook);
        if (!wanted)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*wanted - Clock::now());
        return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
    }

    void deliver()
    {
        m_since.reset();
        Batch batch = std::exchange(m_batch, {});
        if (batch.everything)
            batch.paths.clear();
        if (!batch.isEmpty())
            m_wishes.handler(std::move(batch));
    }

    void tell(const QString& path)
    {
        if (!m_since)
            m_since = Clock::now();
        if (!m_batch.everything)
            m_batch.paths.insert(path);
        if (m_batch.paths.size() > mostPaths)
            everything();
    }

    void everything()
    {
        if (!m_since)
            m_since = Clock::now();
        m_batch.everything = true;
        m_batch.paths.clear();
    }

    // ---- watches ----
    void closeNotify()
    {
        if (m_notify >= 0)
            ::close(m_notify); // ends all watches
        m_notify = -1;
        m_folders.clear();
        m_moves.clear();
        m_top.reset();
    }

    void watchAll()
    {
        closeNotify();
        m_isShort = false;
        m_notify = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        m_top = std::make_unique<Watched>();
        if (m_notify < 0) {
            fallShort();
            return;
        }
        if (!watch(*m_top)) {
            m_top.reset();
            m_nextRootLook = Clock::now() + rootPoll;
            return;
        }
        enter(*m_top, false);
    }

    void fallShort()
    {
        if (m_isShort)
            return;
        m_isShort = true;
        const Time now = Clock::now();
        if (now < m_nextSlowPoll)
            return; // it was short before, and nothing puts off what is due
        m_nextSlowPoll = now + m_wishes.slowPoll;
        logLine(u"watch: no more folders can be watched (fs.inotify.max_user_watches), so changes "
                u"are looked for twice a minute"_s);
    }

    QString absolute(const QString& path) const
    {
        return path.isEmpty() ? m_root : m_root + u'/' + path;
    }

    bool watch(Watched& folder)
    {
        const QByteArray path = QFile::encodeName(absolute(folder.path()));
        folder.descriptor = ::inotify_add_watch(m_notify, path.constData(), watchedEvents);
        if (folder.descriptor < 0) {
            const int error = errno;
            if (error == ENOSPC || error == ENOMEM)
                fallShort();
            errno = error;
            return false;
        }
        // The same folder under another name: it moved between its event and now.
        Watched*& known = m_folders[folder.descriptor];
        if (known && known != &folder)
            forgetDescriptors(*known, folder.descriptor);
        known = &folder;
        return true;
    }

    // The folder object is out of date; the kernel's watch goes on for another one.
    static void forgetDescriptors(Watched& folder, int descriptor)
    {
        if (folder.descriptor == descriptor)
            folder.descriptor = -1;
    }

    // Watches the folders below one that is watched. What lies there may be new: it is told.
    void enter(Watched& top, bool tells)
    {
        std::vector<Watched*> waiting = {&top};
        while (!waiting.empty()) {
            Watched* folder = waiting.back();
            waiting.pop_back();
            const QString path = folder->path();
            auto listing = Directory::open(QFile::encodeName(absolute(path)));
            folder->isComplete = static_cast<bool>(listing);
            if (!listing)
                continue;
            while (const auto raw = listing->nextName()) {
                const auto name = nameText(*raw);
                if (!name || m_wishes.isSkipped(*name))
                    continue;
                const QString child = path.isEmpty() ? *name : path + u'/' + *name;
                if (tells)
                    tell(child);
                if (Watched* below = addChild(*folder, *name))
                    waiting.push_back(below);
            }
        }
    }

    // Null for what is no folder, or one that isn't entered.
    Watched* addChild(Watched& parent, const QString& name)
    {
        auto folder = std::make_unique<Watched>();
        folder->parent = &parent;
        folder->name = name;
        // First the watch, which fails for all but folders and costs nothing for files.
        if (!watch(*folder)) {
            if (errno == ENOENT || (errno == EACCES && isShut(parent)))
                parent.isComplete = false;
            return nullptr;
        }
        if (m_wishes.isExcludedFolder(name, absolute(folder->path()))) {
            drop(*folder);
            return nullptr;
        }
        Watched* result = folder.get();
        std::unique_ptr<Watched>& place = parent.children[name];
        if (place)
            drop(*place);
        place = std::move(folder);
        return result;
    }

    // Whether it may be listed at most, and nothing in it be reached.
    bool isShut(const Watched& folder) const
    {
        const QByteArray path = QFile::encodeName(absolute(folder.path()));
        return ::faccessat(AT_FDCWD, path.constData(), X_OK, AT_EACCESS) != 0;
    }

    // Ends the watches of a folder and of all below it.
    void drop(Watched& top)
    {
        std::vector<Watched*> waiting = {&top};
        while (!waiting.empty()) {
            Watched* folder = waiting.back();
            waiting.pop_back();
            const auto known = m_folders.constFind(folder->descriptor);
            if (known != m_folders.cend() && *known == folder) {
                m_folders.erase(known);
                ::inotify_rm_watch(m_notify, folder->descriptor);
            }
            for (const auto& [name, child] : folder->children)
                waiting.push_back(child.get());
        }
    }

    void lookForRoot(Time now)
    {
        if (m_top || now < m_nextRootLook)
            return;
        watchAll();
        if (m_top)
            everything();
    }

    // ---- events ----
    void readEvents()
    {
        alignas(inotify_event) char buffer[64 * 1024];
        while (m_notify >= 0) {
            const ssize_t size = ::read(m_notify, buffer, sizeof buffer);
            if (size <= 0)
                return;
            for (const char* at = buffer; at < buffer + size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                at += sizeof(inotify_event) + event->len;
                if (!take(*event))
                    break; // all watches are new: the rest is about the old ones
            }
        }
    }

    bool take(const inotify_event& event)
    {
        if (event.mask & IN_Q_OVERFLOW) {
            watchAll();
            everything();
            return false;
        }
        Watched* folder = m_folders.value(event.wd);
        if (!folder)
            return true;
        if (event.mask & IN_IGNORED) {
            m_folders.remove(event.wd);
            folder->descriptor = -1;
            return true;
        }
        if (event.len == 0) {
            if (folder == m_top.get() &&
                (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT))) {
                closeNotify();
                m_nextRootLook = Clock::now();
                everything();
                return false;
            }
            if (event.mask & (IN_DELETE_SELF | IN_UNMOUNT | IN_ATTRIB))
                tell(folder->path());
            if ((event.mask & IN_ATTRIB) && !folder->isComplete)
                enter(*folder, true); // its rights may be back
            return true;
        }
        const auto name = nameText(QByteArrayView(static_cast<const char*>(event.name)));
        if (!name || m_wishes.isSkipped(*name)) {
            if (event.mask & IN_ISDIR)
                takeFolderEvent(*folder, name.value_or(QString()), event);
            return true;
        }
        const QString above = folder->path();
        tell(above.isEmpty() ? *name : above + u'/' + *name);
        if (event.mask & IN_ISDIR)
            takeFolderEvent(*folder, *name, event);
        return true;
    }

    void takeFolderEvent(Watched& parent, const QString& name, const inotify_event& event)
    {
        if (event.mask & IN_MOVED_FROM) {
            if (const auto child = parent.children.find(name); child != parent.children.end()) {
                child->second->parent = nullptr;
                m_moves[event.cookie] = {std::move(child->second), Clock::now()};
                parent.children.erase(child);
            }
        } else if (event.mask & IN_DELETE) {
            if (const auto child = parent.children.find(name); child != parent.children.end()) {
                drop(*child->second);
                parent.children.erase(child);
            }
        } else if (event.mask & IN_ATTRIB) {
            // One that couldn't be watched may have its rights now.
            if (!name.isEmpty() && !m_wishes.isSkipped(name) && !parent.children.contains(name))
                if (Watched* child = addChild(parent, name))
                    enter(*child, true);
        } else if (event.mask & (IN_MOVED_TO | IN_CREATE)) {
            const auto move = m_moves.find(event.cookie);
            if (name.isEmpty() || m_wishes.isSkipped(name)) {
                if (move != m_moves.end()) {
                    drop(*move->second.folder);
                    m_moves.erase(move);
                }
                return;
            }
            const bool keepsWatches =
                (event.mask & IN_MOVED_TO) && move != m_moves.end() &&
                attach(parent, name, std::move(m_moves.extract(move).mapped().folder));
            if (!keepsWatches && !parent.children.contains(name))
                if (Watched* child = addChild(parent, name))
                    enter(*child, true);
        }
    }

    // A folder that moved keeps its watches. But a walk may have met it in its new place before its
    // event was read, or something else in its old one: then it isn't what the event means.
    bool attach(Watched& parent, const QString& name, std::unique_ptr<Watched> folder)
    {
        const QString above = parent.path();
        const QString path = absolute(above.isEmpty() ? name : above + u'/' + name);
        const bool isIt = folder->descriptor >= 0 &&
                          ::inotify_add_watch(m_notify, QFile::encodeName(path).constData(),
                              watchedEvents) == folder->descriptor;
        if (!isIt || m_wishes.isExcludedFolder(name, path)) {
            drop(*folder);
            return false;
        }
        std::unique_ptr<Watched>& place = parent.children[name];
        if (place)
            drop(*place);
        folder->parent = &parent;
        folder->name = name;
        place = std::move(folder);
        complete(*place);
        return true;
    }

    // What couldn't be entered under a path that was already out of date.
    void complete(Watched& top)
    {
        std::vector<Watched*> waiting = {&top};
        while (!waiting.empty()) {
            Watched* folder = waiting.back();
            waiting.pop_back();
            if (!folder->isComplete) {
                enter(*folder, true);
                continue;
            }
            for (const auto& [name, child] : folder->children)
                waiting.push_back(child.get());
        }
    }

    // What moved and came to no place here has left.
    void dropLostMoves(Time now)
    {
        for (auto move = m_moves.begin(); move != m_moves.end();) {
            if (now < move->second.since + moveWait) {
                ++move;
                continue;
            }
            drop(*move->second.folder);
            move = m_moves.erase(move);
        }
    }

    const QString m_root;
    const Wishes m_wishes;
    const int m_wake;
    int m_notify = -1;

    std::unique_ptr<Watched> m_top; // null while the root is away
    QHash<int, Watched*> m_folders; // by watch descriptor
    struct Move
    {
        std::unique_ptr<Watched> folder;
        Time since;
    };
    std::map<uint32_t, Move> m_moves; // by cookie: gone from one place and not come to another yet
    Time m_nextRootLook, m_nextSlowPoll;
    bool m_isShort = false; // of watches

    Batch m_batch;
    std::optional<Time> m_since; // when the batch began

    std::mutex m_mutex; // guards the next two
    std::vector<std::function<void()>> m_flushes;
    bool m_ending = false;
    std::thread m_thread;
};

FolderWatcher::FolderWatcher(const QString& root, Wishes wishes)
    : m_thread(std::make_unique<Thread>(root, std::move(wishes)))
{}

FolderWatcher::~FolderWatcher() = default;

void FolderWatcher::flush(std::function<void()> done)
{
    m_thread->flush(std::move(done));
}

} // namespace corvelle
