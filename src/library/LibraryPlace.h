// Which folder is the library, and whether a folder can be one. Reads the disk, changes nothing.
#pragma once

#include <QString>

namespace corvelle {

struct LibraryPlace
{
    QString root; // absolute, as the person chose it
    bool fromEnvironment =
        false; // CORVELLE_LIBRARY named it: never missing, made when it is not there
};

// `environment` is the value of CORVELLE_LIBRARY, `remembered` the stored `libraryPath`; empty
// texts count as none.
LibraryPlace chooseLibrary(const QString& environment, const QString& remembered);

// The folder "Corvelle" in the person's home folder.
QString defaultLibrary();

// "~" and "~/…" with the home folder in its place; the path without "/" at its end.
QString expandedPath(const QString& path);

// The default library, a folder with a database of ours, a folder that holds nothing but hidden
// names, or a path where nothing is.
bool passesLibraryTest(const QString& folder);

// Whether the person has to be told that the library can't be found.
bool isMissing(const LibraryPlace& place);

// The folder's own files under `root`.
QString hiddenFolder(const QString& root);
QString databasePath(const QString& root);

// The library's name to the person: its root's last component.
QString libraryName(const QString& root);

} // namespace corvelle
