#include "disk/DiskScan.h"

#include "base/Log.h"
#include "platform/Directory.h"

#include <climits>
#include <utility>

namespace corvelle::DiskPlan {

namespace {

// Bytes of an absolute path that can still be opened: the kernel counts the zero byte behind it.
constexpr qsizetype longestPath = PATH_MAX - 1;

bool isFolder(const FileFacts& facts)
{
    return facts.kind == FileFacts::Kind::Folder;
}

Entry entryFrom(const FileFacts& facts, QString path)
{
    Entry entry;
    entry.path = std::move(path);
    entry.folder = isFolder(facts);
    entry.inode = facts.identity;
    entry.size = entry.folder ? 0 : facts.size;
    entry.modified = facts.modified.value_or(distantPast);
    return entry;
}

QString childPath(const QString& folder, const QString& name)
{
    return folder.isEmpty() ? name : folder + u'/' + name;
}

// A generated folder somewhere in the path, or a skipped one below the path's top. The top is a
// folder that the library was told to follow, whatever its name.
bool isShut(const QString& path, const QString& root)
{
    const qsizetype top = path.indexOf(u'/');
    if (top >= 0)
        for (const QStringView name : QStringView(path).mid(top + 1).split(u'/'))
            if (isSkippedName(name))
                return true;
    return isInsideGenerated(path, root);
}

// A folder that is to be listed, as the walk came to it.
struct Visit
{
    static constexpr qsizetype top = -1;

    QString path;
    qsizetype above = top; // the index of the folder that it was found in
    quint64 identity = 0, device = 0;
};

// One scan: lists folders below one root and keeps what it found.
class Scan
{
public:
    Scan(const QString& root, std::stop_token stop, QString leftOut);

    void list(const QString& folder);
    void walk(const QString& topFolder);

    // What was found; empty when the scan was stopped, since half a scan makes moves look like
    // removals.
    Scans take();

private:
    struct Listing
    {
        std::vector<Entry> entries;
        std::vector<Visit> inner; // the folders among them that may be entered
    };

    std::optional<Visit> start(const QString& folder) const;
    std::optional<Listing> read(const QString& folder);
    bool readChild(const Directory& directory, const QString& folder, qsizetype folderBytes,
        QByteArrayView name, Listing& listing);
    Result<Directory> open(const QByteArray& folder) const;
    static bool isLoop(const std::vector<Visit>& visits, const Visit& visit);

    const QByteArray m_rootPath;
    const Result<Directory> m_root;
    const std::stop_token m_stop;
    const QString m_leftOut;
    Scans m_scans;
    int m_notText = 0;
    int m_tooLong = 0;
};

Scan::Scan(const QString& root, std::stop_token stop, QString leftOut)
    : m_rootPath(root.toUtf8())
    , m_root(Directory::open(m_rootPath))
    , m_stop(std::move(stop))
    , m_leftOut(std::move(leftOut))
{}

void Scan::list(const QString& folder)
{
    if (!start(folder))
        return;
    if (std::optional<Listing> listing = read(folder))
        m_scans.insert_or_assign(folder, std::move(listing->entries));
}

// Level by level, so that neither the stack nor the number of open folders grows with the depth of
// the tree.
void Scan::walk(const QString& topFolder)
{
    const std::optional<Visit> first = start(topFolder);
    if (!first)
        return;
    std::vector<Visit> visits = {*first};
    for (size_t i = 0; i < visits.size() && !m_stop.stop_requested(); ++i) {
        std::optional<Listing> listing = read(visits[i].path);
        if (!listing)
            continue;
        m_scans.insert_or_assign(visits[i].path, std::move(listing->entries));
        for (Visit& inner : listing->inner) {
            inner.above = static_cast<qsizetype>(i);
            if (!isLoop(visits, inner))
                visits.push_back(std::move(inner));
        }
    }
}

Scans Scan::take()
{
    if (m_stop.stop_requested())
        return {};
    if (m_notText > 0)
        logLine(QString("disk scan: left out %1 names that are not UTF-8").arg(m_notText));
    if (m_tooLong > 0)
        logLine(QString("disk scan: left out %1 paths that are too long to open").arg(m_tooLong));
    return std::move(m_scans);
}

// None where there is nothing to enter, or where entering would mount a disk.
std::optional<Visit> Scan::start(const QString& folder) const
{
    if (!m_root)
        return std::nullopt;
    const QByteArray path = folder.isEmpty() ? QByteArray(".") : folder.toUtf8();
    const Result<std::optional<FileFacts>> found = m_root->facts(path.constData());
    if (!found || !*found || (*found)->mountTrigger)
        return std::nullopt;
    return Visit{folder, Visit::top, (*found)->identity, (*found)->device};
}

std::optional<Scan::Listing> Scan::read(const QString& folder)
{
    const QByteArray folderBytes = folder.toUtf8();
    Result<Directory> directory = open(folderBytes);
    if (!directory)
        return std::nullopt;
    Listing listing;
    while (const auto name = directory->nextName())
        if (m_stop.stop_requested() ||
            !readChild(*directory, folder, folderBytes.size(), *name, listing))
            return std::nullopt;
    if (directory->isBroken())
        return std::nullopt;
    return listing;
}

// False when it can't be told whether the child is there: its folder then counts as not looked at,
// or everything in a folder whose rights were taken away would seem deleted.
bool Scan::readChild(const Directory& directory, const QString& folder, qsizetype folderBytes,
    QByteArrayView name, Listing& listing)
{
    const std::optional<QString> text = nameText(name);
    if (!text) {
        ++m_notText;
        return true;
    }
    if (isSkippedName(*text))
        return true;
    if (m_rootPath.size() + 1 + folderBytes + 1 + name.size() > longestPath) {
        ++m_tooLong;
        return true;
    }
    const Result<std::optional<FileFacts>> found = directory.facts(name.data());
    if (!found)
        return false;
    const std::optional<FileFacts>& facts = *found;
    if (!facts || facts->kind == FileFacts::Kind::Other)
        return true;

    Entry entry = entryFrom(*facts, childPath(folder, *text));
    if (!m_leftOut.isEmpty() && entry.path == m_leftOut)
        return true;
    if (entry.folder) {
        const Generated generated = generatedByName(*text);
        if (generated == Generated::IfMarked) {
            const auto mark =
                directory.facts((name.toByteArray() + '/' + generatedMark).constData());
            entry.generated = mark && *mark && !isFolder(**mark);
        } else {
            entry.generated = generated == Generated::Yes;
        }
        if (!entry.generated && !facts->mountTrigger)
            listing.inner.push_back({entry.path, Visit::top, facts->identity, facts->device});
    }
    listing.entries.push_back(std::move(entry));
    return true;
}

Result<Directory> Scan::open(const QByteArray& folder) const
{
    if (!m_root)
        return m_root.failure();
    return folder.isEmpty() ? Directory::open(m_rootPath) : m_root->openBelow(folder);
}

// A bind mount or a network disk can hold one of the folders that it lies in.
bool Scan::isLoop(const std::vector<Visit>& visits, const Visit& visit)
{
    for (qsizetype above = visit.above; above != Visit::top;) {
        const Visit& outer = visits[static_cast<size_t>(above)];
        if (outer.identity == visit.identity && outer.device == visit.device)
            return true;
        above = outer.above;
    }
    return false;
}

} // namespace

Scans scanFolders(const QString& root, std::span<const QString> folders, std::stop_token stop,
    const QString& leftOut)
{
    Scan scan(root, std::move(stop), leftOut);
    for (const QString& folder : folders)
        if (!isShut(folder, root) &&
            (leftOut.isEmpty() || (folder != leftOut && !liesBelow(folder, leftOut))))
            scan.list(folder);
    return scan.take();
}

Scans scanTree(const QString& root, std::span<const QString> folders, std::stop_token stop,
    const QString& leftOut)
{
    Scan scan(root, std::move(stop), leftOut);
    for (const QString& folder : folders)
        scan.walk(folder);
    return scan.take();
}

std::optional<Entry> entry(const QString& absolutePath, const QString& path, NameRules rules)
{
    const QString name = lastComponent(absolutePath);
    if (rules == NameRules::Apply && isSkippedName(name))
        return std::nullopt;
    const std::optional<FileFacts> facts = fileFacts(absolutePath.toUtf8());
    if (!facts || facts->kind == FileFacts::Kind::Other)
        return std::nullopt;
    Entry result = entryFrom(*facts, path);
    result.generated = result.folder && isGeneratedFolder(name, absolutePath);
    return result;
}

bool isGeneratedFolder(QStringView name, const QString& absolutePath)
{
    const Generated generated = generatedByName(name);
    if (generated != Generated::IfMarked)
        return generated == Generated::Yes;
    const auto mark = fileFacts(absolutePath.toUtf8() + '/' + generatedMark);
    return mark && !isFolder(*mark);
}

bool isInsideGenerated(const QString& path, const QString& root)
{
    for (qsizetype end = 0, start = 0; end < path.size(); start = end + 1) {
        end = path.indexOf(u'/', start);
        if (end < 0)
            end = path.size();
        const QStringView name = QStringView(path).mid(start, end - start);
        if (isGeneratedFolder(name, root + u'/' + path.left(end)))
            return true;
    }
    return false;
}

} // namespace corvelle::DiskPlan
