#include "library/LibraryPlace.h"

#include "base/Text.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

LibraryPlace chooseLibrary(const QString& environment, const QString& remembered)
{
    if (!environment.isEmpty())
        return {expandedPath(environment), true};
    if (!remembered.isEmpty())
        return {expandedPath(remembered), false};
    return {defaultLibrary(), false};
}

QString defaultLibrary()
{
    return QDir::homePath() + u"/Corvelle"_s;
}

QString expandedPath(const QString& path)
{
    QString expanded = path;
    if (path == u"~" || path.startsWith(u"~/"))
        expanded = QDir::homePath() + path.mid(1);
    return QDir::cleanPath(QDir::current().absoluteFilePath(expanded));
}

bool passesLibraryTest(const QString& folder)
{
    const QFileInfo info(folder);
    if (expandedPath(folder) == defaultLibrary() || QFileInfo(databasePath(folder)).exists())
        return true;
    if (!info.exists())
        return !info.isSymLink();
    const QDir dir(folder);
    if (!info.isDir() || !info.isReadable())
        return false;
    const QStringList names =
        dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    return std::all_of(
        names.begin(), names.end(), [](const QString& name) { return name.startsWith(u'.'); });
}

bool isMissing(const LibraryPlace& place)
{
    if (place.fromEnvironment || place.root == defaultLibrary())
        return false;
    return !QFileInfo(place.root).isDir() || !passesLibraryTest(place.root);
}

QString hiddenFolder(const QString& root)
{
    return root + u"/.corvelle"_s;
}

QString databasePath(const QString& root)
{
    return hiddenFolder(root) + u"/library.sqlite"_s;
}

QString libraryName(const QString& root)
{
    return lastComponent(root);
}

} // namespace corvelle
