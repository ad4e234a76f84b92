#include "disk/DiskPlan.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace corvelle::DiskPlan {

namespace {

QStringView parentOf(QStringView path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QStringView() : path.left(slash);
}

QStringView nameOf(QStringView path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

// A text for looking something up, without a copy; it must not outlive the view.
QString borrowed(QStringView text)
{
    return QString::fromRawData(text.data(), text.size());
}

// One path on disk. The views in the maps below point into its key.
struct Place
{
    QString key;
    const Entry* entry = nullptr;
    std::optional<bool> nodeIsFolder = {}; // of the last node with this key; none without one
    bool claimed = false;                  // a missing node has moved here
};

struct Missing
{
    QString key;
    const Known* node = nullptr;
};

// One comparison. Its steps run once, in the order of the functions.
class Comparison
{
public:
    Comparison(Pass pass, NameCase nameCase)
        : m_pass(pass)
        , m_nameCase(nameCase)
    {}

    void readScans(const Scans& scans);
    void lookAtNodes(std::span<const Known> known);
    void findFresh(const QSet<QString>& folders);
    void deferStructure();
    void followMoves();
    void takeNew(const QHash<quint64, QString>& trashed);
    void takeRemovals();

    Outcome outcome;

private:
    void lookAt(const Known& node, const Entry& entry);
    Place* freshWithIdentity(const Known& node, const QHash<quint64, Place*>& byIdentity);

    const Pass m_pass;
    const NameCase m_nameCase;
    std::vector<QString> m_scannedKeys; // what the views in m_scanned point to
    QSet<QStringView> m_scanned;
    std::vector<Place> m_places; // never grows after readScans(): others point into it
    QHash<QStringView, Place*> m_onDisk;
    std::vector<Missing> m_missing;
    std::vector<Place*> m_fresh;
};

void Comparison::readScans(const Scans& scans)
{
    size_t count = 0;
    for (const auto& [folder, entries] : scans)
        count += entries.size();
    m_scannedKeys.reserve(scans.size());
    m_scanned.reserve(static_cast<qsizetype>(scans.size()));
    m_places.reserve(count);
    m_onDisk.reserve(static_cast<qsizetype>(count));

    for (const auto& [folder, entries] : scans) {
        m_scannedKeys.push_back(pathKey(folder, m_nameCase));
        m_scanned.insert(m_scannedKeys.back());
        for (const Entry& entry : entries) {
            m_places.push_back({pathKey(entry.path, m_nameCase), &entry});
            Place*& place = m_onDisk[m_places.back().key];
            if (place) {
                place->entry = &entry;
                m_places.pop_back();
            } else {
                place = &m_places.back();
            }
        }
    }
}

void Comparison::lookAtNodes(std::span<const Known> known)
{
    for (const Known& node : known) {
        const QString key = pathKey(node.path, m_nameCase);
        Place* place = m_onDisk.value(key);
        if (place)
            place->nodeIsFolder = node.folder;
        if (!m_scanned.contains(parentOf(key)))
            continue; // nothing was learnt about it
        if (place && place->entry->folder == node.folder)
            lookAt(node, *place->entry);
        else
            m_missing.push_back({key, &node});
    }
}

void Comparison::lookAt(const Known& node, const Entry& entry)
{
    if (nameOf(node.path) != nameOf(entry.path)) {
        // The keys are equal, so the rename changed only case or composition.
        if (m_pass == Pass::Structural)
            outcome.actions.push_back(Moved{node.id, entry});
        else
            outcome.again.insert(parentPath(entry.path));
        return;
    }
    const bool hasOtherSize = node.size && *node.size != entry.size;
    const bool hasOtherTime =
        node.modified && std::abs(*node.modified - entry.modified) > timeTolerance;
    if (!node.folder && node.modified && (hasOtherSize || hasOtherTime)) {
        outcome.actions.push_back(Changed{node.id, entry});
        return;
    }
    const bool isTheSame = node.inode && *node.inode == entry.inode;
    if (!isTheSame || (!node.folder && !node.modified))
        outcome.actions.push_back(Identity{node.id, entry});
}

void Comparison::findFresh(const QSet<QString>& folders)
{
    for (Place& place : m_places) {
        const Entry& entry = *place.entry;
        if (entry.generated || place.nodeIsFolder == entry.folder)
            continue;
        // What lies in a new folder comes in together with that folder.
        if (folders.contains(borrowed(parentOf(place.key))))
            m_fresh.push_back(&place);
    }
}

void Comparison::deferStructure()
{
    for (const Missing& missing : m_missing)
        outcome.again.insert(parentPath(missing.node->path));
    for (const Place* place : m_fresh)
        outcome.again.insert(parentPath(place->entry->path));
}

void Comparison::followMoves()
{
    QHash<quint64, Place*> byIdentity;
    byIdentity.reserve(static_cast<qsizetype>(m_fresh.size()));
    for (Place* place : m_fresh) {
        const bool isTwin = byIdentity.contains(place->entry->inode);
        // Of hard links it can't be told which of them the node became.
        byIdentity.insert(place->entry->inode, isTwin ? nullptr : place);
    }
    std::vector<Missing> still;
    for (const Missing& missing : m_missing) {
        if (Place* place = freshWithIdentity(*missing.node, byIdentity)) {
            place->claimed = true;
            outcome.actions.push_back(Moved{missing.node->id, *place->entry});
        } else {
            still.push_back(missing);
        }
    }
    m_missing = std::move(still);
}

Place* Comparison::freshWithIdentity(const Known& node, const QHash<quint64, Place*>& byIdentity)
{
    Place* place = node.inode ? byIdentity.value(*node.inode) : nullptr;
    return place && !place->claimed && place->entry->folder == node.folder ? place : nullptr;
}

void Comparison::takeNew(const QHash<quint64, QString>& trashed)
{
    // A folder comes before what lies in it.
    std::sort(m_fresh.begin(), m_fresh.end(),
        [](const Place* a, const Place* b) { return a->entry->path < b->entry->path; });
    QSet<quint64> back;
    for (const Place* place : m_fresh) {
        if (place->claimed)
            continue;
        const Entry& entry = *place->entry;
        const auto node = trashed.constFind(entry.inode);
        if (node == trashed.cend() || back.contains(entry.inode)) {
            outcome.actions.push_back(Added{entry});
        } else {
            back.insert(entry.inode); // further links to the same file are new
            outcome.actions.push_back(Restored{*node, entry});
        }
    }
}

void Comparison::takeRemovals()
{
    QSet<QStringView> goneFolders;
    for (const Missing& missing : m_missing)
        if (missing.node->folder)
            goneFolders.insert(missing.key);
    const auto isCovered = [&](QStringView key) {
        for (QStringView above = parentOf(key); !above.isEmpty(); above = parentOf(above))
            if (goneFolders.contains(above))
                return true;
        return false;
    };
    for (const Missing& missing : m_missing)
        if (!isCovered(missing.key))
            outcome.actions.push_back(Removed{missing.node->id});
}

} // namespace

Outcome compare(const Scans& scans, std::span<const Known> known,
    const QHash<quint64, QString>& trashed, const QSet<QString>& folders, Pass pass,
    NameCase nameCase)
{
    Comparison comparison(pass, nameCase);
    comparison.readScans(scans);
    comparison.lookAtNodes(known);
    comparison.findFresh(folders);
    if (pass == Pass::Incremental) {
        comparison.deferStructure();
    } else {
        comparison.followMoves();
        comparison.takeNew(trashed);
        comparison.takeRemovals();
    }
    return std::move(comparison.outcome);
}

} // namespace corvelle::DiskPlan
