#include "app/Relaunch.h"

#include <QCoreApplication>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace corvelle {

void relaunch(bool background)
{
    const QString opener =
        background ? u"env -u CORVELLE_DRIVER -u CORVELLE_LIBRARY CORVELLE_BACKGROUND=1"_s
                   : u"env -u CORVELLE_DRIVER -u CORVELLE_LIBRARY"_s;
    const QString script =
        u"while kill -0 %1 2>/dev/null; do sleep 0.1; done; exec %2 \"$0\""_s.arg(
            QString::number(QCoreApplication::applicationPid()), opener);
    QProcess::startDetached(
        u"/bin/sh"_s, {u"-c"_s, script, QCoreApplication::applicationFilePath()});
}

} // namespace corvelle
