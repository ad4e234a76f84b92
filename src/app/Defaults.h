// What the program remembers for this person, across libraries: an INI file in the configuration
// folder.
#pragma once

#include <QSettings>
#include <QString>

namespace corvelle {

class Defaults
{
public:
    Defaults();

    QString libraryPath() const { return m_settings.value("libraryPath").toString(); }
    // An empty path forgets it: the default library counts again.
    void setLibraryPath(const QString& path);

    bool showsDots() const { return m_settings.value("showDots", true).toBool(); }

private:
    QSettings m_settings;
};

} // namespace corvelle
