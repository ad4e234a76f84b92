#include "disk/AddFiles.h"

#include "base/Ids.h"
#include "base/Log.h"
#include "base/MainThread.h"
#include "disk/DiskScan.h"
#include "library/EditWords.h"
#include "library/FileNames.h"
#include "platform/FileFacts.h"
#include "platform/FileMoves.h"
#include "platform/Volatile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QSizeF cardSpace(176 + freeSpotMargin, 224 + freeSpotMargin);

ArrivingItem arriving(const DiskPlan::Entry& entry, const QString& path)
{
    return {path, entry.folder, entry.size, entry.modified, entry.inode, {}};
}

// The item and, for a folder, all below it, a folder before what lies in it. Paths begin with
// `prefix` in place of the item's own absolute path.
Result<std::vector<ArrivingItem>> itemsAt(
    const QString& absolute, const QString& prefix, std::stop_token stop)
{
    const auto top = DiskPlan::entry(absolute, prefix, DiskPlan::NameRules::Ignore);
    if (!top)
        return Failure(u"it isn’t there: "_s + absolute, ENOENT);
    std::vector<ArrivingItem> items{arriving(*top, prefix)};
    if (!top->folder)
        return items;
    const QString name = lastComponent(absolute);
    const std::array<QString, 1> folders{name};
    for (const auto& [folder, entries] :
        DiskPlan::scanTree(QFileInfo(absolute).path(), folders, stop))
        for (const DiskPlan::Entry& entry : entries)
            items.push_back(arriving(entry, prefix + entry.path.mid(name.size())));
    // By path a folder stands before what lies in it; siblings in the order people expect.
    std::stable_sort(
        items.begin() + 1, items.end(), [](const ArrivingItem& left, const ArrivingItem& right) {
            const auto depth = [](const ArrivingItem& item) { return item.path.count(u'/'); };
            if (depth(left) != depth(right))
                return depth(left) < depth(right);
            return compareNaturally(left.path, right.path) < 0;
        });
    return items;
}

} // namespace

AddFiles::AddFiles(Edits& edits, QObject* parent)
    : QObject(parent)
    , m_edits(edits)
    , m_library(edits.library())
    , m_arrivals(edits.library())
    , m_queue(u"corvelle.arrivals"_s)
{}

AddFiles::~AddFiles()
{
    m_stop.request_stop();
}

QString AddFiles::liveCard(const QString& path) const
{
    QString found;
    (void)m_library.connection().each("SELECT id FROM nodes WHERE path = ? AND deleted_at IS NULL",
        {m_library.relativePath(path)}, [&](const SQLRow& row) {
            if (const QString id = row.text(0); m_library.node(id) && !m_library.isInTrash(id))
                found = id;
        });
    return found;
}

// What is to be added of the paths; tells the person of what isn't.
std::vector<AddFiles::Source> AddFiles::sourcesOf(
    const QStringList& paths, std::vector<QString>& here)
{
    std::vector<Source> sources;
    std::vector<QString> busy;
    std::vector<std::pair<QString, Failure>> failures;
    const QString& root = m_library.root();
    bool looks = false;
    for (const QString& given : paths) {
        const QString path = QFileInfo(given).canonicalFilePath();
        const QString name = lastComponent(QDir::cleanPath(given));
        if (path.isEmpty() || path == u"/"_s || root == path || root.startsWith(path + u'/')) {
            failures.emplace_back(name, Failure(u"it can’t be added: "_s + given, ENOENT));
        } else if (m_importing.contains(path)) {
            busy.push_back(name);
        } else if (const QString id = liveCard(path); !id.isEmpty()) {
            here.push_back(id);
        } else if (path.startsWith(root + u'/') && !path.startsWith(hiddenFolder(root) + u'/')) {
            looks = true;
        } else {
            sources.push_back({path, path.startsWith(root + u'/') || isVolatile(path)});
        }
    }
    // What lies in another one of them comes with it.
    const auto covered = [&](const Source& inner) {
        return std::any_of(sources.begin(), sources.end(),
            [&](const Source& outer) { return inner.path.startsWith(outer.path + u'/'); });
    };
    std::vector<Source> tops;
    for (const Source& source : sources) {
        const bool twice = std::any_of(
            tops.begin(), tops.end(), [&](const Source& top) { return top.path == source.path; });
        if (!twice && !covered(source))
            tops.push_back(source);
    }
    if (busy.size() == 1)
        m_library.fail(u"“%1” is still being added."_s.arg(busy.front()));
    else if (!busy.empty())
        m_library.fail(u"%1 of these are still being added."_s.arg(busy.size()));
    tellFailures(failures);
    if (looks)
        emit lookWanted();
    return tops;
}

void AddFiles::add(const QStringList& paths, const QString& parent, QPointF point)
{
    Q_ASSERT(onMainThread());
    if (!m_library.isOpen())
        return;
    std::vector<QString> here;
    Request request{parent, point, hiddenFolder(m_library.root()) + u"/staging/"_s + newID(),
        sourcesOf(paths, here)};
    if (!here.empty())
        emit alreadyHere(here);
    if (request.sources.empty())
        return;
    forget(request.sources);
    if (!m_edits.checkParent(parent))
        return;
    for (const Source& source : request.sources)
        m_importing.insert(source.path);
    ++m_running;
    m_queue.run(
        [sources = request.sources, staging = request.staging, stop = m_stop.get_token()] {
            std::vector<Prepared> found;
            for (size_t i = 0; i < sources.size() && !stop.stop_requested(); ++i) {
                Prepared& each = found.emplace_back();
                each.source = sources[i];
                if (sources[i].copies) {
                    const QString folder = staging + u'/' + QString::number(i);
                    each.staged = folder + u'/' + lastComponent(sources[i].path);
                    auto done = makeFolder(folder);
                    if (done)
                        done = copyItem(sources[i].path, each.staged);
                    if (!done)
                        each.problem = done.failure();
                    continue;
                }
                auto items = itemsAt(sources[i].path, sources[i].path, stop);
                if (items)
                    each.items = std::move(*items);
                else
                    each.problem = items.failure();
            }
            return found;
        },
        this,
        [this, request](std::vector<Prepared> found) { prepared(request, std::move(found)); });
}

// Adding something by hand ends its having been deleted for good.
void AddFiles::forget(const std::vector<Source>& sources)
{
    for (const Source& source : sources)
        if (auto done = m_library.connection().run("DELETE FROM forgotten_links WHERE path = ?1 OR "
                                                   "substr(path, 1, length(?1) + 1) = ?1 || '/'",
                {source.path});
            !done)
            logLine(u"import: "_s + done.failure().sentence());
}

// A copy comes into the parent's folder only now, when it is whole.
Result<void> AddFiles::moveIn(Prepared& source, const QString& parent)
{
    LongWork work(m_library);
    const auto folder = m_edits.folderFor(parent);
    if (!folder)
        return folder.failure();
    const QString name = m_edits.freeName(safeFileName(lastComponent(source.source.path)), *folder,
        QFileInfo(source.staged).isDir() ? NodeKind::Folder : NodeKind::File);
    const QString target = *folder + u'/' + name;
    if (auto moved = moveItem(source.staged, target, work.ticks()); !moved)
        return moved;
    auto items = itemsAt(target, m_library.relativePath(target), m_stop.get_token());
    if (!items)
        return items.failure();
    source.items = std::move(*items);
    return {};
}

void AddFiles::prepared(const Request& request, std::vector<Prepared> found)
{
    if (!request.parent.isEmpty()) {
        const Node* folder = m_library.freshNode(request.parent);
        const bool inTrash = folder && m_library.isInTrash(request.parent);
        if (!folder || inTrash) {
            m_library.fail(
                inTrash
                    ? u"These files weren’t added: their folder is in the Trash. Put it back, or add them to another folder."_s
                    : u"These files weren’t added: their folder no longer exists. Add them to another folder."_s);
            end(request);
            return;
        }
    }
    std::vector<QRectF> taken;
    for (const QString& id : m_library.children(request.parent))
        taken.push_back(cardRect(*m_library.node(id)));
    std::vector<ArrivingItem> items;
    QHash<QString, QString> folders;
    std::vector<std::pair<QString, Failure>> failures;
    const NameCase nameCase = NameCase::Kept; // nothing is compared with what has a node
    for (Prepared& each : found) {
        if (!each.problem && each.source.copies)
            if (auto moved = moveIn(each, request.parent); !moved)
                each.problem = moved.failure();
        if (each.problem) {
            failures.emplace_back(lastComponent(each.source.path), *each.problem);
            continue;
        }
        ArrivingItem& top = each.items.front();
        top.place = freeSpot(request.point, cardSpace, taken);
        taken.emplace_back(
            *top.place - QPointF(cardSpace.width() / 2, cardSpace.height() / 2), cardSpace);
        folders.insert(pathKey(parentPath(top.path), nameCase), request.parent);
        std::move(each.items.begin(), each.items.end(), std::back_inserter(items));
    }
    tellFailures(failures);
    m_arrivals.bringIn(
        std::move(items), folders, nameCase, [this, request](const Arrived& arrived) {
            if (arrived.failed)
                m_library.fail(u"Couldn’t add these files. Try again."_s);
            m_edits.journal().closeGesture();
            m_edits.recordMade(arrived.placed, u"Add Files"_s);
            m_edits.journal().closeGesture();
            if (!arrived.placed.empty())
                emit added(arrived.placed);
            end(request);
        });
}

void AddFiles::tellFailures(const std::vector<std::pair<QString, Failure>>& failures)
{
    for (const auto& [name, failure] : failures)
        logLine(u"import: "_s + failure.sentence());
    if (failures.empty())
        return;
    const QString what = failures.size() == 1 ? u"“%1”"_s.arg(failures.front().first)
                                              : u"%1 of these items"_s.arg(failures.size());
    m_library.fail(u"Couldn’t add "_s + what + reasonText(failures.front().second));
}

void AddFiles::end(const Request& request)
{
    for (const Source& source : request.sources)
        m_importing.remove(source.path);
    m_queue.async([staging = request.staging] { (void)removeItem(staging); });
    --m_running;
}

} // namespace corvelle
