#include "library/NodeTree.h"

#include "base/Text.h"
#include "library/Position.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int deepestChain = 512;

} // namespace

const Node* NodeTree::node(const QString& id) const
{
    const NodeRecord* found = record(id);
    return found ? &found->node : nullptr;
}

SeenFile NodeTree::seen(const QString& id) const
{
    const NodeRecord* found = record(id);
    return found ? found->seen : SeenFile{};
}

const std::vector<QString>& NodeTree::children(const QString& parent) const
{
    static const std::vector<QString> none;
    const auto found = m_children.find(parent);
    return found == m_children.end() ? none : found->second;
}

std::vector<QString> NodeTree::ancestors(const QString& id) const
{
    std::vector<QString> chain;
    for (const Node* at = node(id); at && chain.size() < deepestChain; at = node(at->parentID))
        chain.push_back(at->id);
    std::reverse(chain.begin(), chain.end());
    return chain;
}

bool NodeTree::isInTrash(const QString& id) const
{
    const Node* at = node(id);
    for (int step = 0; at && step < deepestChain; ++step) {
        if (at->deletedAt)
            return true;
        at = node(at->parentID);
    }
    return false;
}

bool NodeTree::isLinkedItself(const Node& item) const
{
    if (!item.isLinked())
        return false;
    const Node* folder = node(item.parentID);
    return !folder || !folder->isLinked() || !liesBelow(item.path, folder->path);
}

QString NodeTree::spaceFolder() const
{
    return m_spaces.empty() ? u"My Space"_s : m_spaces.front().folder;
}

QString NodeTree::nextPosition(const QString& parent) const
{
    const auto& siblings = children(parent);
    return siblings.empty() ? positionAfter({}) : positionAfter(node(siblings.back())->position);
}

TreeChange NodeTree::apply(Snapshot snapshot)
{
    TreeChange change;
    if (m_spaces != snapshot.spaces) {
        m_spaces = std::move(snapshot.spaces);
        change.spaces = true;
    }
    for (auto stamp = snapshot.pageStamps.cbegin(); stamp != snapshot.pageStamps.cend(); ++stamp) {
        const auto old = m_pageStamps.constFind(stamp.key());
        if (old != m_pageStamps.cend() && *old != *stamp)
            change.changedPages.insert(stamp.key());
    }
    m_pageStamps = std::move(snapshot.pageStamps);

    if (m_nodes.isEmpty()) {
        change.everything = !snapshot.nodes.empty();
        change.linkedItems = std::any_of(snapshot.nodes.begin(), snapshot.nodes.end(),
            [](const NodeRecord* record) { return record->node.isLinked(); });
        takeAll(snapshot);
        return change;
    }

    const auto note = [&change](const Node& node) {
        change.nodes.insert(node.id);
        change.parents.insert(node.parentID.isNull() ? QString(u""_s) : node.parentID);
    };
    QSet<QString> kept;
    kept.reserve(static_cast<qsizetype>(snapshot.nodes.size()));
    for (NodeRecord* read : snapshot.nodes) {
        Node& fresh = read->node;
        kept.insert(fresh.id);
        const Node* old = node(fresh.id);
        if (old && *old == fresh) {
            setSeen(fresh.id, read->seen);
            continue;
        }
        if (old)
            note(*old);
        note(fresh);
        change.linkedItems |=
            (fresh.isLinked() || (old && old->isLinked())) &&
            (!old || old->deletedAt != fresh.deletedAt || old->path != fresh.path);
        put(std::move(fresh), read->seen);
    }
    std::vector<QString> gone;
    for (const NodeRecord* record : std::as_const(m_nodes))
        if (!kept.contains(record->node.id)) {
            note(record->node);
            change.linkedItems |= record->node.isLinked();
            gone.push_back(record->node.id);
        }
    for (const QString& id : gone)
        remove(id);
    return change;
}

void NodeTree::put(Node node, SeenFile seen)
{
    NodeRecord* known = record(node.id);
    if (!known) {
        known = m_pool.add();
        m_nodes.insert(node.id, known);
        *known = {std::move(node), seen};
        link(known->node);
        return;
    }
    const Node& was = known->node;
    const bool sameList = was.isLive() == node.isLive() && was.parentID == node.parentID &&
                          was.position == node.position;
    if (!sameList)
        unlink(was);
    *known = {std::move(node), seen};
    if (!sameList)
        link(known->node);
}

void NodeTree::setSeen(const QString& id, SeenFile seen)
{
    if (NodeRecord* known = record(id))
        known->seen = seen;
}

bool NodeTree::setPath(const QString& id, const QString& path)
{
    NodeRecord* known = record(id);
    if (!known || known->node.path == path)
        return false;
    known->node.path = path;
    return true;
}

void NodeTree::remove(const QString& id)
{
    NodeRecord* known = record(id);
    if (!known)
        return;
    unlink(known->node);
    m_pageStamps.remove(id);
    m_nodes.remove(id);
    m_pool.release(known);
}

// Where the node stands, or would stand, among its siblings.
std::vector<QString>::iterator NodeTree::place(std::vector<QString>& siblings, const Node& node)
{
    const auto before = [this](const QString& sibling, const Node& other) {
        const int order = compareByCodePoints(this->node(sibling)->position, other.position);
        return order != 0 ? order < 0 : sibling < other.id;
    };
    // New things come last.
    if (!siblings.empty() && before(siblings.back(), node))
        return siblings.end();
    return std::lower_bound(siblings.begin(), siblings.end(), node, before);
}

void NodeTree::link(const Node& node)
{
    if (!node.isLive())
        return;
    auto& siblings = m_children[node.parentID];
    siblings.insert(place(siblings, node), node.id);
}

void NodeTree::unlink(const Node& node)
{
    if (!node.isLive())
        return;
    const auto list = m_children.find(node.parentID);
    if (list == m_children.end())
        return;
    const auto at = place(list->second, node);
    if (at != list->second.end() && *at == node.id)
        list->second.erase(at);
    if (list->second.empty())
        m_children.erase(list);
}

void NodeTree::takeAll(Snapshot& snapshot)
{
    m_pool = std::move(snapshot.pool);
    m_nodes.reserve(static_cast<qsizetype>(snapshot.nodes.size()));
    m_children.clear();
    std::unordered_map<QString, std::vector<const Node*>, TextHash> lists;
    std::vector<const Node*>* list = nullptr; // of the row before: siblings come together
    QString parent;
    for (NodeRecord* record : snapshot.nodes) {
        const Node& node = record->node;
        m_nodes.insert(node.id, record);
        if (!node.isLive())
            continue;
        if (!list || node.parentID != parent) {
            parent = node.parentID;
            list = &lists[parent];
        }
        list->push_back(&node);
    }
    const auto before = [](const Node* left, const Node* right) {
        const int order = compareByCodePoints(left->position, right->position);
        return order != 0 ? order < 0 : left->id < right->id;
    };
    m_children.reserve(lists.size());
    for (auto& [folder, nodes] : lists) {
        if (!std::is_sorted(nodes.begin(), nodes.end(), before))
            std::sort(nodes.begin(), nodes.end(), before);
        auto& ids = m_children[folder];
        ids.reserve(nodes.size());
        for (const Node* node : nodes)
            ids.push_back(node->id);
    }
}

} // namespace corvelle
