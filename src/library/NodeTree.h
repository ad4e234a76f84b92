// All nodes of a library in memory: a cache of the table, with the live children of every folder in
// order.
//
// A plain value for one thread; the Library owns the one that the program shows. References to
// nodes stay good until that node is removed.
#pragma once

#include "library/Node.h"
#include "library/RecordPool.h"

#include <QHash>
#include <QSet>

#include <span>
#include <unordered_map>
#include <vector>

namespace corvelle {

// What one read of the table gives.
struct Snapshot
{
    std::vector<Space> spaces; // by their creation
    RecordPool pool;           // of the nodes' records
    std::vector<NodeRecord*> nodes;
    QHash<QString, double> pageStamps;
};

// What applying a snapshot changed.
struct TreeChange
{
    bool everything = false; // the first snapshot: `nodes` and `parents` stay empty
    QSet<QString> nodes;     // came, went or differ in a field
    QSet<QString> parents;   // whose list of children may have changed; the empty text is the top
    QSet<QString> changedPages; // had a stamp and have another now
    bool spaces = false;
    bool linkedItems = false; // a linked node came, went or changed its Trash state

    bool isEmpty() const
    {
        return !everything && nodes.isEmpty() && changedPages.isEmpty() && !spaces;
    }
};

class NodeTree
{
public:
    const std::vector<Space>& spaces() const { return m_spaces; }
    qsizetype size() const { return m_nodes.size(); }

    // Null when there is none.
    const Node* node(const QString& id) const;
    SeenFile seen(const QString& id) const;

    // The live children in order; empty for a parent that has none. The empty text is the top of
    // the space.
    const std::vector<QString>& children(const QString& parent) const;

    // The chain from the top down to the node itself.
    std::vector<QString> ancestors(const QString& id) const;

    // Whether the node or a folder above it is in the Trash. A chain that breaks off, or is longer
    // than 512, is not.
    bool isInTrash(const QString& id) const;

    // Whether it was linked from outside by itself, and not as part of a linked folder.
    bool isLinkedItself(const Node& node) const;

    // The first space's folder owns what has no better place.
    QString spaceFolder() const;

    // The key for a new last child.
    QString nextPosition(const QString& parent) const;

    double pageStamp(const QString& id) const { return m_pageStamps.value(id); }

    template<class Visit>
    void eachNode(Visit visit) const
    {
        for (const NodeRecord* record : m_nodes)
            visit(record->node, record->seen);
    }

    // Takes the snapshot for the truth: equal nodes stay as they are, others are replaced, those it
    // doesn't hold go.
    TreeChange apply(Snapshot snapshot);

    // Puts a node in, or replaces the one of that id, and keeps the lists of children in order.
    // Costs one list, never the tree.
    void put(Node node, SeenFile seen);
    void setSeen(const QString& id, SeenFile seen);
    // Whether the path is another one now. Doesn't touch the lists of children.
    bool setPath(const QString& id, const QString& path);
    void setPageStamp(const QString& id, double stamp) { m_pageStamps.insert(id, stamp); }
    void remove(const QString& id);

private:
    struct TextHash
    {
        size_t operator()(const QString& text) const { return qHash(text); }
    };

    void takeAll(Snapshot& snapshot);
    NodeRecord* record(const QString& id) const { return m_nodes.value(id); }
    void link(const Node& node);
    void unlink(const Node& node);
    std::vector<QString>::iterator place(std::vector<QString>& siblings, const Node& node);

    std::vector<Space> m_spaces;
    RecordPool m_pool;
    QHash<QString, NodeRecord*> m_nodes; // in the pool
    std::unordered_map<QString, std::vector<QString>, TextHash> m_children;
    QHash<QString, double> m_pageStamps;
};

} // namespace corvelle
