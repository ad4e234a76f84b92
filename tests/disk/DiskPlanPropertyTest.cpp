// Random things are done to a made-up disk; the plan is carried out on a made-up tree. However the
// disk came to be as it is, the tree must end up the same, and a file that was only moved must keep
// its node.

#include "disk/DiskPlan.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace corvelle;
using namespace corvelle::DiskPlan;

namespace {

bool isAtOrBelow(const QString& key, const QString& topKey)
{
    return key == topKey || (key.startsWith(topKey) && key.at(topKey.size()) == u'/');
}

// What lies on the disk, by path key.
class Disk
{
public:
    Disk(unsigned seed, NameCase nameCase)
        : m_random(seed)
        , m_nameCase(nameCase)
    {
        m_things[key("Space")] = {"Space", true, 1, 0, 1000, false};
    }

    QString key(const QString& path) const { return pathKey(path, m_nameCase); }
    NameCase nameCase() const { return m_nameCase; }
    const std::map<QString, Entry>& things() const { return m_things; }
    const Entry* at(const QString& path) const
    {
        const auto found = m_things.find(key(path));
        return found == m_things.end() ? nullptr : &found->second;
    }

    // Does one thing, if it can be done; says what.
    QString actAtRandom();

    // All of it, or some folders, which the disk finds in any form of their path.
    Scans scan(const std::optional<QSet<QString>>& folders = std::nullopt) const
    {
        QSet<QString> keys;
        for (const QString& path : folders.value_or(QSet<QString>()))
            keys.insert(key(path));
        Scans scans;
        for (const auto& [key, thing] : m_things)
            if (thing.folder && !isGenerated(thing.path) && (!folders || keys.contains(key)))
                scans[thing.path];
        for (const auto& [key, thing] : m_things)
            if (const auto list = scans.find(parentPath(thing.path)); list != scans.end())
                list->second.push_back(thing);
        return scans;
    }

    // Whether a path lies in a generated folder or is one.
    bool isGenerated(const QString& path) const
    {
        for (QString above = path; !above.isEmpty(); above = parentPath(above))
            if (const Entry* thing = at(above); thing && thing->generated)
                return true;
        return false;
    }

private:
    unsigned upTo(unsigned count) { return m_random() % count; }
    const Entry& any()
    {
        return std::next(m_things.begin(), upTo(unsigned(m_things.size())))->second;
    }
    QString anyFolder();
    QString anyName();
    void put(Entry thing);
    QString create(bool folder);
    QString edit();
    QString link();
    QString remove(const QString& path);
    QString rename(const QString& from, const QString& to);
    QString swap();

    std::mt19937 m_random;
    const NameCase m_nameCase;
    std::map<QString, Entry> m_things;
    quint64 m_lastInode = 1;
    double m_now = 1000;
};

QString Disk::anyFolder()
{
    for (int attempt = 0; attempt < 8; ++attempt)
        if (const Entry& thing = any(); thing.folder)
            return thing.path;
    return "Space";
}

// Few names, so that things meet.
QString Disk::anyName()
{
    const QString names[] = {"a", "A", "b", "B", "ü", QString("u") + QChar(0x0308), "c", "Pods"};
    return names[upTo(std::size(names))];
}

void Disk::put(Entry thing)
{
    thing.generated = thing.folder && lastComponent(thing.path) == "Pods";
    m_things[key(thing.path)] = thing;
}

QString Disk::create(bool folder)
{
    const QString path = anyFolder() + u'/' + anyName();
    if (at(path))
        return {};
    put({path, folder, ++m_lastInode, folder ? 0 : qint64(upTo(3)), m_now, false});
    return (folder ? "create folder " : "create ") + path;
}

QString Disk::edit()
{
    const Entry thing = any();
    if (thing.folder)
        return {};
    const qint64 size = upTo(3);
    for (auto& [key, other] : m_things)
        if (other.inode == thing.inode) {
            other.size = size;
            other.modified = m_now;
        }
    return "edit " + thing.path;
}

QString Disk::link()
{
    Entry thing = any();
    const QString path = anyFolder() + u'/' + anyName();
    if (thing.folder || at(path))
        return {};
    const QString from = std::exchange(thing.path, path);
    put(thing);
    return "link " + from + " to " + path;
}

QString Disk::remove(const QString& path)
{
    if (path == "Space")
        return {};
    std::erase_if(m_things, [&](const auto& thing) { return isAtOrBelow(thing.first, key(path)); });
    return "remove " + path;
}

// As rename(2) does it: over another file, but not over a folder, not into itself, and nothing for
// two links to one file.
QString Disk::rename(const QString& from, const QString& to)
{
    const Entry* source = at(from);
    const Entry* target = at(to);
    const bool isSamePlace = key(from) == key(to);
    if (from == "Space" || from == to || (!isSamePlace && isAtOrBelow(key(to), key(from))))
        return {};
    if (target && !isSamePlace &&
        (target->folder || source->folder || target->inode == source->inode))
        return {};
    std::vector<Entry> moving;
    for (const auto& [thingKey, thing] : m_things)
        if (isAtOrBelow(thingKey, key(from)))
            moving.push_back(thing);
    remove(from);
    for (Entry& thing : moving) {
        thing.path = to + thing.path.mid(from.size());
        put(thing);
    }
    return "rename " + from + " to " + to;
}

QString Disk::swap()
{
    const QString one = any().path;
    const QString other = any().path;
    if (isAtOrBelow(key(one), key(other)) || isAtOrBelow(key(other), key(one)))
        return {};
    const QString aside = "Space/aside";
    if (rename(one, aside).isEmpty())
        return {};
    if (rename(other, one).isEmpty()) {
        rename(aside, one);
        return {};
    }
    rename(aside, other);
    return "swap " + one + " and " + other;
}

QString Disk::actAtRandom()
{
    m_now += 10;
    const QString thing = any().path;
    switch (upTo(12)) {
    case 0:
    case 1:
    case 2:
        return create(false);
    case 3:
    case 4:
        return create(true);
    case 5:
        return edit();
    case 6:
        return link();
    case 7:
        return remove(thing);
    case 8:
        return swap();
    case 9: // in place, often in case alone
        return rename(thing, parentPath(thing) + u'/' + anyName());
    default:
        return rename(thing, anyFolder() + u'/' + anyName());
    }
}

// The nodes, changed by what the plan says and nothing else.
class Tree
{
public:
    explicit Tree(const Disk& disk)
        : m_disk(disk)
    {
        add(*disk.at("Space"));
    }

    Outcome plan(const Scans& scans, Pass pass) const
    {
        return compare(scans, m_nodes, m_trashed, folderKeys(), pass, m_disk.nameCase());
    }

    void carryOut(const std::vector<Action>& actions)
    {
        for (const Action& action : actions)
            std::visit([this](const auto& one) { take(one); }, action);
    }

    const std::vector<Known>& nodes() const { return m_nodes; }

    QSet<QString> folderKeys() const
    {
        QSet<QString> keys;
        for (const Known& node : m_nodes)
            if (node.folder)
                keys.insert(m_disk.key(node.path));
        return keys;
    }

private:
    Known& node(const QString& id)
    {
        return *std::find_if(
            m_nodes.begin(), m_nodes.end(), [&](const Known& node) { return node.id == id; });
    }

    static void refresh(Known& node, const Entry& entry)
    {
        node.inode = entry.inode;
        node.size = entry.size;
        node.modified = entry.modified;
    }

    void add(const Entry& entry, QString id = {})
    {
        if (id.isEmpty())
            id = QString::number(++m_lastID);
        m_nodes.push_back({id, entry.path, entry.folder, entry.inode, entry.size, entry.modified});
    }

    // An arriving folder comes in whole.
    void addBelow(const Entry& top)
    {
        if (!top.folder)
            return;
        for (const auto& [key, thing] : m_disk.things())
            if (key != m_disk.key(top.path) && isAtOrBelow(key, m_disk.key(top.path)) &&
                !m_disk.isGenerated(thing.path))
                add(thing);
    }

    void take(const Changed& action) { refresh(node(action.id), action.entry); }
    void take(const Identity& action) { refresh(node(action.id), action.entry); }

    void take(const Moved& action)
    {
        // By id: while a file and a folder change places, both have the same path for a moment.
        Known& moved = node(action.id);
        const QString from = std::exchange(moved.path, action.to.path);
        refresh(moved, action.to);
        for (Known& one : m_nodes)
            if (moved.folder && one.path.startsWith(from + u'/'))
                one.path = action.to.path + one.path.mid(from.size());
    }

    void take(const Restored& action)
    {
        EXPECT_TRUE(m_trashed.remove(action.to.inode));
        add(action.to, action.id);
        addBelow(action.to);
    }

    void take(const Added& action)
    {
        add(action.entry);
        addBelow(action.entry);
    }

    void take(const Removed& action)
    {
        const Known gone = node(action.id);
        std::erase_if(m_nodes, [&](const Known& one) {
            const bool isGone =
                one.id == gone.id || (gone.folder && one.path.startsWith(gone.path + u'/'));
            if (isGone)
                m_trashed.insert(*one.inode, one.id);
            return isGone;
        });
    }

    const Disk& m_disk;
    std::vector<Known> m_nodes;
    QHash<quint64, QString> m_trashed;
    int m_lastID = 0;
};

// One line for each thing that should have a node, and one for each node; sorted.
QStringList expectedNodes(const Disk& disk)
{
    QStringList lines;
    for (const auto& [key, thing] : disk.things())
        if (!disk.isGenerated(thing.path))
            lines += QString("%1 %2 %3").arg(thing.path).arg(thing.folder).arg(thing.inode);
    lines.sort();
    return lines;
}

QStringList actualNodes(const Tree& tree)
{
    QStringList lines;
    for (const Known& node : tree.nodes())
        lines += QString("%1 %2 %3").arg(node.path).arg(node.folder).arg(*node.inode);
    lines.sort();
    return lines;
}

QString idAt(const Tree& tree, const QString& path)
{
    for (const Known& node : tree.nodes())
        if (node.path == path)
            return node.id;
    return {};
}

// The ids that must be found again, by the new path: of what has one link, left its old path free,
// left a folder that is still there, and went to a place without a node in a folder that had one.
std::map<QString, QString> idsToKeep(const Disk& disk, const Tree& tree)
{
    std::map<quint64, std::vector<const Entry*>> places;
    for (const auto& [key, thing] : disk.things())
        places[thing.inode].push_back(&thing);
    std::map<quint64, int> nodesOf;
    for (const Known& node : tree.nodes())
        ++nodesOf[*node.inode];
    const QSet<QString> folderKeys = tree.folderKeys();
    QSet<QString> taken;
    for (const Known& node : tree.nodes())
        taken.insert(disk.key(node.path));

    std::map<QString, QString> ids;
    for (const Known& node : tree.nodes()) {
        const auto& now = places[*node.inode];
        if (now.size() != 1 || nodesOf[*node.inode] != 1)
            continue;
        const QString& to = now[0]->path;
        const Entry* oldFolder = disk.at(parentPath(node.path));
        const bool isMove = !taken.contains(disk.key(to)) && !disk.at(node.path);
        const bool isInSight = oldFolder && oldFolder->folder &&
                               folderKeys.contains(disk.key(parentPath(to))) &&
                               !disk.isGenerated(to);
        if (isMove && isInSight)
            ids[to] = node.id;
    }
    return ids;
}

// Passes as the application makes them; returns how many did something.
int follow(Tree& tree, const Disk& disk, bool incrementalFirst)
{
    constexpr int mostPasses = 20;
    for (int pass = 0; pass < mostPasses; ++pass) {
        std::optional<QSet<QString>> folders;
        if (incrementalFirst) {
            const Outcome first = tree.plan(disk.scan(), Pass::Incremental);
            for (const Action& action : first.actions)
                EXPECT_TRUE(std::holds_alternative<Changed>(action) ||
                            std::holds_alternative<Identity>(action));
            tree.carryOut(first.actions);
            folders = first.again;
        }
        const Outcome outcome = tree.plan(disk.scan(folders), Pass::Structural);
        if (outcome.actions.empty())
            return pass;
        tree.carryOut(outcome.actions);
    }
    return mostPasses;
}

// Adds the number of moves that had to be recognised to `recognised`.
void play(unsigned seed, int actsPerRound, size_t& recognised)
{
    const bool incrementalFirst = seed / 2 % 2;
    Disk disk(seed, seed % 2 ? NameCase::Ignored : NameCase::Kept);
    Tree tree(disk);
    QStringList story;
    for (int round = 0; round < 24; round += actsPerRound) {
        for (int i = 0; i < actsPerRound; ++i)
            story += disk.actAtRandom();
        story.removeAll(QString());
        const std::map<QString, QString> ids = idsToKeep(disk, tree);
        recognised += ids.size();
        const int passes = follow(tree, disk, incrementalFirst);
        if (actsPerRound == 1)
            EXPECT_LE(passes, 1) << "one act needs one pass";
        else
            EXPECT_LT(passes, 20) << "it never comes to rest";
        EXPECT_EQ(actualNodes(tree), expectedNodes(disk));
        for (const auto& [path, id] : ids)
            EXPECT_EQ(idAt(tree, path), id) << "at " << path.toStdString();
        if (testing::Test::HasFailure()) {
            FAIL() << "seed " << seed << ", incremental first: " << incrementalFirst << "\n"
                   << story.join('\n').toStdString();
        }
    }
}

} // namespace

TEST(DiskPlanProperty, oneActIsFollowedByOnePass)
{
    size_t recognised = 0;
    for (unsigned seed = 0; seed < 1500 && !HasFailure(); ++seed)
        play(seed, 1, recognised);
    EXPECT_GT(recognised, 1000u);
}

TEST(DiskPlanProperty, manyActsAtOnceAreFollowedInAFewPasses)
{
    size_t recognised = 0;
    for (unsigned seed = 0; seed < 2500 && !HasFailure(); ++seed)
        play(seed, 6, recognised);
    EXPECT_GT(recognised, 500u);
}
