#include "library/VersionFiles.h"

#include "base/Log.h"
#include "platform/FileFacts.h"
#include "platform/FileMoves.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QStringView hidden = u".corvelle/";

} // namespace

QString parkedPath(const QString& path)
{
    const bool ours =
        path.startsWith(u".corvelle/versions/") || path.startsWith(u".corvelle/edits/");
    if (!ours || path.contains(QChar(u'\0')) || QDir::cleanPath(path) != path)
        return {};
    return u".corvelle/undo/"_s + path.mid(hidden.size());
}

QString findVersion(const QString& root, const QString& path)
{
    const QString parked = parkedPath(path);
    if (parked.isNull())
        return {};
    for (const QString& candidate : {path, parked})
        if (const QString absolute = root + u'/' + candidate; isThere(absolute))
            return absolute;
    return {};
}

bool unparkVersion(const QString& root, const QString& path)
{
    const QString parked = parkedPath(path);
    if (parked.isNull())
        return false;
    const QString absolute = root + u'/' + path;
    if (isThere(absolute))
        return true;
    return makeFolder(QFileInfo(absolute).path()) && moveItem(root + u'/' + parked, absolute);
}

std::vector<QString> versionPaths(
    const Step& step, const std::function<QString(const QString&)>& shownPath)
{
    std::vector<QString> paths;
    for (const Change& change : step.changes) {
        if (const auto* edit = std::get_if<change::FileEdit>(&change))
            paths.push_back(edit->version);
        else if (const auto* version = std::get_if<change::FinderVersion>(&change))
            if (!shownPath || shownPath(version->id) != version->copy)
                paths.push_back(version->copy);
    }
    std::erase_if(paths, [](const QString& path) { return parkedPath(path).isNull(); });
    return paths;
}

std::vector<qint64> stepsOverLimit(const std::vector<StepFiles>& newestFirst,
    const std::function<qint64(const QString&)>& bytesOf, qint64 most, std::vector<QString>& needed)
{
    std::vector<qint64> dropped;
    QSet<QString> counted;
    qint64 total = 0;
    bool over = false, hole = false;
    for (const StepFiles& step : newestFirst) {
        if (!over) {
            qint64 more = 0;
            QSet<QString> fresh;
            for (const QString& path : step.paths)
                if (!counted.contains(path) && !fresh.contains(path)) {
                    fresh.insert(path);
                    more += bytesOf(path);
                }
            over = total + more > most;
            if (!over) {
                total += more;
                counted.unite(fresh);
            }
        }
        if ((over && !step.paths.empty()) || (hole && !step.undone)) {
            dropped.push_back(step.seq);
            hole = true;
        }
    }
    needed.assign(counted.begin(), counted.end());
    return dropped;
}

void parkVersions(const QString& root, const std::vector<QString>& needed)
{
    QSet<QString> kept;
    for (const QString& path : needed) {
        const QString parked = root + u'/' + parkedPath(path);
        kept.insert(parked);
        if (isThere(parked) || !isThere(root + u'/' + path))
            continue;
        auto moved = makeFolder(QFileInfo(parked).path());
        if (moved)
            moved = moveItem(root + u'/' + path, parked);
        if (!moved)
            logLine(u"undo journal: "_s + moved.failure().sentence());
    }
    QDirIterator files(root + u"/.corvelle/undo"_s,
        QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    std::vector<QString> unneeded;
    while (files.hasNext())
        if (const QString path = files.next(); !kept.contains(path))
            unneeded.push_back(path);
    for (const QString& path : unneeded)
        (void)removeItem(path);
}

} // namespace corvelle
