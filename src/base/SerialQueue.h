// A named queue that runs work one after another on a thread of its own.
//
// The work gets values and returns values. run() brings its result back to the main thread, where
// it is dropped when the receiver is gone. Destroying the queue drains it: everything accepted has
// run when the destructor returns.
#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QPointer>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace corvelle {

class SerialQueue
{
public:
    explicit SerialQueue(QString name);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const QString& name() const { return m_name; }

    // Any thread.
    void async(std::function<void()> work);

    // Waits until the work has run. Never from the queue's own work: that would wait for itself.
    void sync(const std::function<void()>& work);

    // Waits until everything accepted so far has run.
    void drain();

    // Whether nothing waits and nothing runs.
    bool isIdle() const;

    // Runs `work` here, then `then(result)` on the main thread if the receiver still lives.
    template<class Work, class Then>
    void run(Work work, QObject* receiver, Then then)
    {
        async([work = std::move(work), guard = QPointer<QObject>(receiver),
                  then = std::move(then)]() mutable {
            auto result = std::make_shared<decltype(work())>(work());
            onMain(guard, [result, then = std::move(then)]() mutable { then(std::move(*result)); });
        });
    }

    // Hops to the main thread from any thread; dropped when the receiver is gone by then.
    template<class Then>
    static void onMain(const QPointer<QObject>& guard, Then then)
    {
        if (QCoreApplication* app = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                app,
                [guard, then = std::move(then)]() mutable {
                    if (guard)
                        then();
                },
                Qt::QueuedConnection);
    }

private:
    void loop();

    const QString m_name;
    mutable std::mutex m_mutex; // guards all below
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    bool m_running = false;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace corvelle
