#include "base/SerialQueue.h"

#include <pthread.h>

namespace corvelle {

SerialQueue::SerialQueue(QString name)
    : m_name(std::move(name))
    , m_thread([this] { loop(); })
{}

SerialQueue::~SerialQueue()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void SerialQueue::async(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
    }
    m_changed.notify_all();
}

void SerialQueue::sync(const std::function<void()>& work)
{
    Q_ASSERT(std::this_thread::get_id() != m_thread.get_id());
    async(work);
    drain();
}

void SerialQueue::drain()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.empty() && !m_running; });
}

bool SerialQueue::isIdle() const
{
    const std::lock_guard lock(m_mutex);
    return m_waiting.empty() && !m_running;
}

void SerialQueue::loop()
{
    // The kernel keeps 15 bytes of a thread's name; the end of ours tells more than "corvelle.".
    pthread_setname_np(pthread_self(), m_name.section(u'.', -1).left(15).toLatin1().constData());
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_ending || !m_waiting.empty(); });
        if (m_waiting.empty())
            return;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_running = true;
        lock.unlock();
        work();
        work = nullptr; // what it captured is gone before the queue counts as idle
        lock.lock();
        m_running = false;
        m_changed.notify_all();
    }
}

} // namespace corvelle
