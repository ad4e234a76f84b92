#include "app/Defaults.h"

#include <QStandardPaths>

namespace corvelle {

namespace {

QString file()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Corvelle/Corvelle.conf");
}

} // namespace

Defaults::Defaults()
    : m_settings(file(), QSettings::IniFormat)
{}

void Defaults::setLibraryPath(const QString& path)
{
    if (path.isEmpty())
        m_settings.remove("libraryPath");
    else
        m_settings.setValue("libraryPath", path);
    m_settings.sync();
}

} // namespace corvelle
