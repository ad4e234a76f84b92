// The part of opening a library that needs no main thread: the lock, the folders, the database, the
// first read.
//
// It runs beside the start of the toolkit, so that the window's first picture already has its
// cards. Every failure leaves the files as they were: nothing is written to a database before it is
// known to be ours.
#pragma once

#include "library/LibraryPlace.h"
#include "library/NodeTree.h"
#include "platform/FileLock.h"
#include "store/SQLite.h"

#include <QSet>

#include <optional>

namespace corvelle {

// The application owns the library; the tool server works beside it.
enum class OpenMode { Application, ToolServer };

struct LibraryOpening
{
    QString root; // its real path, once it exists
    bool missing = false;
    std::optional<qint32> heldBy; // the process that has it open; 0 when it told no number
    QString loadError;            // why it did not open; empty when it did
    bool isFirstRun = false; // there was no database, and nothing but hidden names in the folder

    FileLock lock;
    std::optional<SQLite> connection;
    NodeTree tree;
    QSet<QString> nativeShots; // websites whose picture is a .jpg
};

// Takes the lock that an earlier, failed try in this process may already hold.
LibraryOpening openLibrary(const LibraryPlace& place, OpenMode mode, FileLock held = {});

} // namespace corvelle
