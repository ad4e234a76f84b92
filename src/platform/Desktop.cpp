#include "platform/Desktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace corvelle {

void showInFileManager(const QString& path)
{
    const QUrl url = QUrl::fromLocalFile(path);
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.FileManager1"_s,
        u"/org/freedesktop/FileManager1"_s, u"org.freedesktop.FileManager1"_s, u"ShowItems"_s);
    call << QStringList{url.toString()} << QString();
    if (QDBusConnection::sessionBus().isConnected() && QDBusConnection::sessionBus().send(call))
        return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace corvelle
