#include "base/MainThread.h"

#include <QCoreApplication>
#include <QThread>

namespace corvelle {

bool onMainThread()
{
    const QCoreApplication* app = QCoreApplication::instance();
    return !app || QThread::currentThread() == app->thread();
}

} // namespace corvelle
