#include "library/NodeTree.h"

#include "library/Position.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace corvelle;

namespace {

Node node(const QString& id, const QString& parent = {}, const QString& position = "a0")
{
    Node result;
    result.id = id;
    result.parentID = parent;
    result.kind = NodeKind::Folder;
    result.title = id;
    result.position = position;
    return result;
}

Snapshot snapshot(std::vector<Node> nodes)
{
    Snapshot result;
    for (Node& value : nodes) {
        result.nodes.push_back(result.pool.add());
        result.nodes.back()->node = std::move(value);
    }
    return result;
}

NodeTree tree(std::vector<Node> nodes)
{
    NodeTree result;
    result.apply(snapshot(std::move(nodes)));
    return result;
}

using Ids = std::vector<QString>;

} // namespace

TEST(Position, countsOnThroughHeadsOfGrowingLength)
{
    const struct
    {
        QString key, next;
    } cases[] = {
        {"", "a0"},
        {"a0", "a1"},
        {"a9", "aA"},
        {"aZ", "aa"},
        {"az", "b00"},
        {"bzz", "c000"},
        {"Zz", "a0"},
        {"Yzz", "Z0"},
        {"a1V", "a2"},
        {"b", "bV"},
        {"5", "5V"},
        {"z" + QString(26, 'z'), "z" + QString(26, 'z') + "V"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(positionAfter(c.key), c.next) << c.key.toStdString();
}

TEST(Position, keysKeepRisingByTheirBytes)
{
    QString key;
    for (int i = 0; i < 20'000; ++i) {
        const QString next = positionAfter(key);
        ASSERT_LT(key.toUtf8(), next.toUtf8());
        key = next;
    }
}

TEST(NodeTree, childrenStandByPositionThenId)
{
    const NodeTree t =
        tree({node("c", "", "a1"), node("b", "", "a0"), node("a", "", "a1"), node("x", "b", "a0")});
    EXPECT_EQ(t.children(""), (Ids{"b", "a", "c"}));
    EXPECT_EQ(t.children("b"), (Ids{"x"}));
    EXPECT_TRUE(t.children("x").empty());
    EXPECT_EQ(t.nextPosition(""), "a2");
    EXPECT_EQ(t.nextPosition("x"), "a0");
    EXPECT_EQ(t.ancestors("x"), (Ids{"b", "x"}));
}

TEST(NodeTree, theTrashReachesDownAndEndsAtBrokenOrEndlessChains)
{
    Node trashed = node("folder");
    trashed.deletedAt = 5;
    const NodeTree t = tree({trashed, node("inside", "folder"), node("orphan", "nobody"),
        node("p", "q"), node("q", "p")});
    EXPECT_TRUE(t.isInTrash("folder"));
    EXPECT_TRUE(t.isInTrash("inside"));
    EXPECT_FALSE(t.node("inside")->deletedAt.has_value());
    EXPECT_FALSE(t.isInTrash("orphan"));
    EXPECT_FALSE(t.isInTrash("p")) << "a circle ends";
    EXPECT_FALSE(t.isInTrash(""));
    EXPECT_EQ(t.children("folder"), (Ids{"inside"}));
}

TEST(NodeTree, aSecondSnapshotTellsJustWhatDiffers)
{
    NodeTree t = tree({node("a"), node("b"), node("c", "a")});
    Node renamed = node("b");
    renamed.title = "B";
    const TreeChange change = t.apply(snapshot({node("a"), renamed, node("d", "a")}));
    EXPECT_EQ(change.nodes, (QSet<QString>{"b", "c", "d"}));
    EXPECT_EQ(t.children("a"), (Ids{"d"}));
    EXPECT_EQ(t.node("c"), nullptr);
    EXPECT_TRUE(t.apply(snapshot({node("a"), renamed, node("d", "a")})).isEmpty());
}

TEST(NodeTree, aPageWhoseStampMovedIsTold)
{
    NodeTree t;
    Snapshot first = snapshot({node("page")});
    first.pageStamps = {{"page", 1.0}};
    EXPECT_TRUE(t.apply(std::move(first)).changedPages.isEmpty())
        << "a page that had no stamp is new, not changed";
    Snapshot second = snapshot({node("page")});
    second.pageStamps = {{"page", 2.0}};
    EXPECT_EQ(t.apply(std::move(second)).changedPages, (QSet<QString>{"page"}));
}

// Any sequence of changes leaves the lists that reading everything anew would give.
TEST(NodeTree, changesOneByOneGiveTheSameListsAsASnapshot)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
        NodeTree changed = tree({node("n0")});
        std::map<QString, Node> model = {{"n0", node("n0")}};
        for (int step = 0; step < 300; ++step) {
            const QString id = QString("n%1").arg(below(40));
            if (below(6) == 0) {
                changed.remove(id);
                model.erase(id);
                continue;
            }
            Node next = node(id, below(3) ? QString("n%1").arg(below(5)) : QString(),
                QString("a%1").arg(below(10)));
            if (below(5) == 0)
                next.deletedAt = 1;
            changed.put(next, {});
            model[id] = next;
        }
        std::vector<Node> all;
        for (const auto& [id, value] : model)
            all.push_back(value);
        const NodeTree fresh = tree(all);
        for (const QString& parent :
            {QString(), QString("n0"), QString("n1"), QString("n2"), QString("n3"), QString("n4")})
            ASSERT_EQ(changed.children(parent), fresh.children(parent)) << parent.toStdString();
    }
}
