// A disk and the nodes of an earlier day, both made of the bytes. What the plan says must be
// carried out without doing a thing twice, and where all of the disk was looked at, it must lead to
// the disk as it is.

#include "disk/DiskPlan.h"

#include "Check.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <iterator>
#include <utility>

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

constexpr size_t mostThings = 24; // more of them meet no more often
constexpr int mostPasses = 20;
const QString top = QStringLiteral("Space");

bool liesIn(const QString& path, const QString& folder)
{
    return path.size() > folder.size() && path[folder.size()] == u'/' && path.startsWith(folder);
}

// What lies below one folder, a folder before its contents. No two have one key.
using Things = std::vector<Entry>;

class World
{
public:
    explicit World(FuzzedDataProvider& bytes)
        : nameCase(bytes.ConsumeBool() ? NameCase::Ignored : NameCase::Kept)
        , disk(things(bytes))
    {
        for (const Entry& entry : things(bytes)) {
            if (entry.generated || isInGenerated(entry.path))
                continue;
            Known node{QString::number(nodes.size()), entry.path, entry.folder, entry.inode,
                entry.size, entry.modified};
            if (bytes.ConsumeIntegralInRange(0, 7) == 0)
                node.inode.reset();
            if (bytes.ConsumeIntegralInRange(0, 7) == 0)
                node.modified.reset();
            nodes.push_back(node);
        }
        for (int i = bytes.ConsumeIntegralInRange(0, 4); i > 0; --i)
            trashed.insert(inode(bytes), QStringLiteral("trashed-%1").arg(i));
    }

    const NameCase nameCase;
    const Things disk;
    std::vector<Known> nodes;
    QHash<quint64, QString> trashed;

    QString key(const QString& path) const { return pathKey(path, nameCase); }

    Scans scanned() const
    {
        Scans scans{{top, {}}};
        for (const Entry& entry : disk)
            if (entry.folder && !entry.generated && !isInGenerated(entry.path))
                scans[entry.path];
        for (const Entry& entry : disk)
            if (const auto list = scans.find(parentPath(entry.path)); list != scans.end())
                list->second.push_back(entry);
        return scans;
    }

    QSet<QString> folderKeys() const
    {
        QSet<QString> keys{key(top)};
        for (const Known& node : nodes)
            if (node.folder)
                keys.insert(key(node.path));
        return keys;
    }

    static bool isInGenerated(const QString& path) { return path.contains(u"/Pods/"); }

private:
    static quint64 inode(FuzzedDataProvider& bytes)
    {
        return bytes.ConsumeIntegralInRange<quint64>(1, 12);
    }

    Things things(FuzzedDataProvider& bytes) const
    {
        static const QString names[] = {QStringLiteral("a"), QStringLiteral("A"),
            QStringLiteral("b"), QStringLiteral("ü"), QStringLiteral("u\u0308"),
            QStringLiteral("c"), QStringLiteral("d"), QStringLiteral("Pods")};
        Things result;
        std::vector<QString> folders = {top};
        QSet<QString> taken;
        for (size_t i = bytes.ConsumeIntegralInRange<size_t>(0, mostThings); i > 0; --i) {
            Entry entry;
            entry.path = folders[bytes.ConsumeIntegralInRange<size_t>(0, folders.size() - 1)] +
                         u'/' +
                         names[bytes.ConsumeIntegralInRange<size_t>(0, std::size(names) - 1)];
            entry.folder = bytes.ConsumeBool();
            entry.inode = inode(bytes);
            entry.size = entry.folder ? 0 : bytes.ConsumeIntegralInRange<qint64>(0, 2);
            entry.modified = 1000 + bytes.ConsumeIntegralInRange(0, 3);
            entry.generated = entry.folder && entry.path.endsWith(u"/Pods");
            if (taken.contains(pathKey(entry.path, nameCase)))
                continue;
            taken.insert(pathKey(entry.path, nameCase));
            if (entry.folder)
                folders.push_back(entry.path);
            result.push_back(entry);
        }
        return result;
    }
};

// Every id and every place is used once, and only such as there are.
class Uses
{
public:
    Uses(const World& world, const Scans& scans)
        : m_world(world)
    {
        for (const Known& node : world.nodes)
            m_ids.insert(node.id);
        for (const auto& [folder, entries] : scans)
            for (const Entry& entry : entries)
                m_places.insert(entry.path);
    }

    void take(const Changed& action) { takeNode(action.id), takePlace(action.entry); }
    void take(const Identity& action) { takeNode(action.id), takePlace(action.entry); }
    void take(const Moved& action) { takeNode(action.id), takePlace(action.to); }
    void take(const Removed& action) { takeNode(action.id); }
    void take(const Added& action) { takePlace(action.entry); }
    void take(const Restored& action)
    {
        check(m_world.trashed.value(action.to.inode) == action.id, "what returns was in the Trash");
        takePlace(action.to);
    }

private:
    void takeNode(const QString& id) { check(m_ids.remove(id), "a node is told once"); }
    void takePlace(const Entry& entry)
    {
        check(m_places.remove(entry.path), "a place on disk is given once");
    }

    const World& m_world;
    QSet<QString> m_ids, m_places;
};

// Does to the nodes what the plan says.
class Tree
{
public:
    explicit Tree(World& world)
        : m_world(world)
    {}

    void take(const Changed& action) { refresh(node(action.id), action.entry); }
    void take(const Identity& action) { refresh(node(action.id), action.entry); }
    void take(const Moved& action)
    {
        Known& moved = node(action.id);
        const QString from = std::exchange(moved.path, action.to.path);
        refresh(moved, action.to);
        if (!moved.folder)
            return;
        for (Known& below : m_world.nodes)
            if (liesIn(below.path, from))
                below.path = action.to.path + below.path.mid(from.size());
    }
    void take(const Added& action) { add(action.entry, newID()); }
    void take(const Restored& action)
    {
        m_world.trashed.remove(action.to.inode);
        add(action.to, action.id);
    }
    void take(const Removed& action)
    {
        const Known gone = node(action.id);
        std::erase_if(m_world.nodes, [&](const Known& one) {
            const bool isGone = one.id == gone.id || (gone.folder && liesIn(one.path, gone.path));
            if (isGone && one.inode)
                m_world.trashed.insert(*one.inode, one.id);
            return isGone;
        });
    }

private:
    QString newID() { return QStringLiteral("new-%1").arg(++m_made); }

    Known& node(const QString& id)
    {
        const auto found = std::find_if(m_world.nodes.begin(), m_world.nodes.end(),
            [&](const Known& one) { return one.id == id; });
        check(found != m_world.nodes.end(), "what is done is done to a node that is there");
        return *found;
    }

    static void refresh(Known& node, const Entry& entry)
    {
        node.inode = entry.inode;
        node.size = entry.size;
        node.modified = entry.modified;
    }

    // A folder comes with all that lies in it.
    void add(const Entry& entry, const QString& id)
    {
        m_world.nodes.push_back(
            {id, entry.path, entry.folder, entry.inode, entry.size, entry.modified});
        if (!entry.folder)
            return;
        for (const Entry& below : m_world.disk)
            if (liesIn(below.path, entry.path) && !below.generated &&
                !World::isInGenerated(below.path))
                m_world.nodes.push_back(
                    {newID(), below.path, below.folder, below.inode, below.size, below.modified});
    }

    World& m_world;
    int m_made = 0;
};

QStringList lines(const World& world, bool ofNodes)
{
    QStringList result;
    const auto add = [&](const QString& path, bool folder) {
        result += folder ? path + u'/' : path;
    };
    if (ofNodes)
        for (const Known& node : world.nodes)
            add(node.path, node.folder);
    else
        for (const Entry& entry : world.disk)
            if (!entry.generated && !World::isInGenerated(entry.path))
                add(entry.path, entry.folder);
    result.sort();
    return result;
}

void checkPlan(const World& world, const Scans& scans, Pass pass)
{
    const auto plan = [&] {
        return compare(scans, world.nodes, world.trashed, world.folderKeys(), pass, world.nameCase);
    };
    const Outcome outcome = plan();
    check(plan() == outcome, "the same input gives the same plan");
    Uses uses(world, scans);
    for (const Action& action : outcome.actions) {
        check(pass == Pass::Structural || std::holds_alternative<Changed>(action) ||
                  std::holds_alternative<Identity>(action),
            "an incremental pass moves nothing");
        std::visit([&](const auto& one) { uses.take(one); }, action);
    }
}

void checkItComesToRest(World& world)
{
    const Scans scans = world.scanned();
    Tree tree(world);
    for (int pass = 0; pass < mostPasses; ++pass) {
        checkPlan(world, scans, Pass::Structural);
        const Outcome outcome = compare(scans, world.nodes, world.trashed, world.folderKeys(),
            Pass::Structural, world.nameCase);
        if (outcome.actions.empty()) {
            check(lines(world, true) == lines(world, false), "the nodes are those of the disk");
            return;
        }
        for (const Action& action : outcome.actions)
            std::visit([&](const auto& one) { tree.take(one); }, action);
    }
    check(false, "a few passes bring it to rest");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider bytes(data, size);
    World world(bytes);
    const Pass pass = bytes.ConsumeBool() ? Pass::Incremental : Pass::Structural;

    // Some folders weren't looked at.
    Scans partial = world.scanned();
    std::erase_if(partial, [&](const auto&) { return bytes.ConsumeIntegralInRange(0, 3) == 0; });
    checkPlan(world, partial, pass);

    checkItComesToRest(world);
    return 0;
}
