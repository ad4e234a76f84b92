// While one of these lives, work that keeps the main thread for longer than a person takes for at
// once tells the library so, and the window shows it without waiting for its events.
#pragma once

#include "library/Library.h"

#include <QElapsedTimer>

namespace corvelle {

class LongWork
{
public:
    explicit LongWork(Library& library)
        : m_library(library)
    {
        m_since.start();
        if (m_library.isOpen())
            m_library.connection().setTick([this] { tick(); });
    }
    ~LongWork()
    {
        if (m_library.isOpen())
            m_library.connection().setTick({});
    }
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;

    void tick()
    {
        constexpr qint64 silentMs = 40;
        if (m_since.elapsed() < silentMs)
            return;
        m_since.restart();
        m_library.stillWorking();
    }

    std::function<void()> ticks()
    {
        return [this] { tick(); };
    }

private:
    Library& m_library;
    QElapsedTimer m_since;
};

} // namespace corvelle
