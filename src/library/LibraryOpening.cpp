#include "library/LibraryOpening.h"

#include "base/Clock.h"
#include "base/Ids.h"
#include "base/Log.h"
#include "library/SnapshotReader.h"
#include "store/Schema.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

const QString firstSpaceName = u"My Space"_s;

// The root's real path; the path itself when it can't be resolved.
QString realPath(const QString& path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

// Unlike an item’s folder, the library’s own may be symbolic links that the person made.
Result<void> makePath(const QString& path)
{
    if (QDir().mkpath(path))
        return {};
    return Failure(u"mkdir: "_s + path);
}

bool holdsOnlyHiddenNames(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).isEmpty();
}

// The first space of a new library, with its folder.
Result<void> makeFirstSpace(SQLite& connection, const QString& root)
{
    const auto ids = connection.query(
        "SELECT id FROM spaces LIMIT 1", {}, [](const SQLRow& row) { return row.text(0); });
    if (!ids)
        return ids.failure();
    if (!ids->empty())
        return {};
    if (auto made = makePath(root + u'/' + firstSpaceName); !made)
        return made;
    return connection.run("INSERT INTO spaces (id, slug, name, mode, folder, created_at) "
                          "VALUES (?, ?, ?, 'local', ?, ?)",
        {newID(), "personal", firstSpaceName, firstSpaceName, now()});
}

QSet<QString> listNativeShots(const QString& folder)
{
    const QString ending = u".jpg"_s;
    QSet<QString> ids;
    for (const QString& name : QDir(folder).entryList(QDir::Files))
        if (name.endsWith(ending) && !name.startsWith(u'.'))
            ids.insert(name.chopped(ending.size()));
    return ids;
}

Result<void> openStore(LibraryOpening& opening, OpenMode mode)
{
    const QString hidden = hiddenFolder(opening.root);
    for (const QString& name : {u"thumbs"_s, u"shots"_s, u"Trash"_s})
        if (auto made = makePath(hidden + u'/' + name); !made)
            return made;
    auto connection = SQLite::open(databasePath(opening.root), checkIsOurs);
    if (!connection)
        return connection.failure();
    if (auto made = makeCoreTables(*connection); !made)
        return made;
    if (mode == OpenMode::Application)
        if (auto made = makeFirstSpace(*connection, opening.root); !made)
            return made;
    auto snapshot = readSnapshot(*connection, TextLife::Process);
    if (!snapshot)
        return snapshot.failure();
    opening.tree.apply(std::move(*snapshot));
    opening.nativeShots = listNativeShots(hidden + u"/shots"_s);
    opening.connection = std::move(*connection);
    return {};
}

} // namespace

LibraryOpening openLibrary(const LibraryPlace& place, OpenMode mode, FileLock held)
{
    LibraryOpening opening;
    opening.root = place.root;
    opening.lock = std::move(held);
    const QString name = libraryName(place.root);
    const auto failed = [&](const QString& error) {
        opening.loadError = u"Couldn’t open the library “%1”."_s.arg(name);
        logLine(u"Library failed to open: "_s + error);
    };

    if (isMissing(place)) {
        opening.missing = true;
        opening.loadError = u"Can’t find the library “%1”."_s.arg(name);
        return opening;
    }
    opening.isFirstRun = mode == OpenMode::Application &&
                         !QFileInfo::exists(databasePath(place.root)) &&
                         holdsOnlyHiddenNames(place.root);
    if (const auto made = makePath(hiddenFolder(place.root)); !made) {
        failed(made.failure().sentence());
        return opening;
    }
    opening.root = realPath(place.root);
    const QString hidden = hiddenFolder(opening.root);
    QFile::setPermissions(hidden, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    if (mode == OpenMode::Application && !opening.lock.isHeld()) {
        auto answer = FileLock::tryLock(hidden + u"/app.lock"_s);
        if (answer.heldBy) {
            opening.heldBy = answer.heldBy;
            opening.loadError = u"“%1” is open in another copy of Corvelle."_s.arg(name);
            return opening;
        }
        opening.lock = std::move(answer.lock);
    }
    if (const auto opened = openStore(opening, mode); !opened)
        failed(opened.failure().sentence());
    return opening;
}

} // namespace corvelle
