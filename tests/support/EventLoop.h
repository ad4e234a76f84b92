#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

// Turns the event loop until the condition holds; false when it doesn't within the time.
template<class Condition>
bool turnUntil(Condition condition, int timeoutMs = 20'000)
{
    QElapsedTimer time;
    time.start();
    while (!condition()) {
        if (time.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(1);
    }
    return true;
}
