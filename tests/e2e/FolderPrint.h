// What lies in a folder, down to the last byte, to see whether anything in it was touched.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

// By path below the folder: kind, rights, owner, identity, size, modification time, and the
// contents or a link's target.
using FolderPrint = QMap<QByteArray, QByteArray>;

// The folder itself and the library's own ".corvelle" at its top are left out. Works below paths
// that are too long to open.
FolderPrint printOf(const QString& folder);

// A line for each path that came, went or changed; empty when nothing did.
QStringList differences(const FolderPrint& before, const FolderPrint& after);
