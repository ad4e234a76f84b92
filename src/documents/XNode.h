// A tree of XML whose names have one prefix for each namespace, whatever the file calls it: "w:p"
// is a paragraph of ECMA-376's transitional family and of its strict one (ISO/IEC 29500). A name of
// a namespace that isn't known is "{uri}local", one without a namespace the local name alone.
//
// An XTree owns what was read; an XNode is a place in it, as cheap as a pointer, and lives no
// longer. A node that isn't there has no name, no text and no children, so that chains of child()
// need no tests between. Everything is read-only and for any thread. Nothing outside the bytes is
// ever opened.
#pragma once

#include "documents/XmlNames.h"
#include "documents/ZipArchive.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

namespace corvelle {

class XTree;

class XNode
{
public:
    XNode() = default;

    static constexpr qint64 mostBytes = 64LL << 20; // of a part that becomes a tree
    static constexpr int mostElements = 2'000'000;  // of a tree
    static constexpr int mostLevels = 256;

    // None for what isn't well-formed up to the end of its root, for general entities with a value
    // and beyond the limits.
    static std::optional<XTree> parse(QByteArrayView data);
    static std::optional<XTree> parse(const ByteSource& source);

    // Calls `each` with every element of these names that lies in no other of them, as soon as it
    // ends; the node lives until `each` returns. `each` returns false to stop. True when the parse
    // ended well or was stopped. Only one such element stands in memory, and the limits of a tree
    // are for it alone.
    using Each = std::function<bool(XNode)>;
    static bool stream(
        QByteArrayView data, std::initializer_list<QByteArrayView> names, const Each& each);
    static bool stream(
        const ByteSource& source, std::initializer_list<QByteArrayView> names, const Each& each);

    explicit operator bool() const { return m_tree != nullptr; }
    bool operator==(const XNode&) const = default;

    QByteArrayView name() const;
    // All character data right inside, as UTF-8, without the text of children.
    QByteArrayView text() const;
    std::optional<QByteArrayView> attr(QByteArrayView name) const;
    // The same as a QString; null when it isn't there, and only then.
    QString value(QByteArrayView name) const;
    struct Attr
    {
        QByteArrayView name, value;
    };
    std::vector<Attr> attrs() const;

    // for (const XNode child : node.children())
    class Children;
    Children children() const;
    XNode child(QByteArrayView name) const;
    // In document order; a match inside a match is one too.
    std::vector<XNode> descendants(QByteArrayView name) const;
    // Its own text, then that of its children in their order.
    QString allText() const;
    // Whether any element below has one of the names.
    bool contains(std::initializer_list<QByteArrayView> names) const;

private:
    friend class XTree;
    struct Builder;
    struct Streamer;

    XNode(const XTree* tree, quint32 at)
        : m_tree(tree)
        , m_at(at)
    {}

    const XTree* m_tree = nullptr;
    quint32 m_at = 0;
};

// Nodes stand in document order, so that the next sibling of a node is where it ends and nothing is
// walked by recursion. A node takes 20 bytes and an attribute 12, beside their texts.
class XTree
{
public:
    XNode root() const { return isEmpty() ? XNode() : XNode(this, 0); }
    bool isEmpty() const { return m_nodes.isEmpty(); }

    // What the tree keeps in memory, but for the names.
    qint64 bytes() const;

private:
    friend class XNode;
    friend struct XNode::Builder;
    friend struct XNode::Streamer;

    struct Node
    {
        quint32 name;
        quint32 end; // the first node behind its subtree
        quint32 text, textSize;
        quint32 attrs; // the first one; the next node's follow its own
    };
    struct Attr
    {
        quint32 name;
        quint32 value, valueSize;
    };

    quint32 attrsEnd(quint32 at) const
    {
        return at + 1 < quint32(m_nodes.size()) ? m_nodes[at + 1].attrs : quint32(m_attrs.size());
    }
    QByteArrayView text(quint32 at, quint32 size) const
    {
        return QByteArrayView(m_text.constData() + at, size);
    }

    std::shared_ptr<const XmlNames> m_names;
    QList<Node> m_nodes;
    QList<Attr> m_attrs;
    QByteArray m_text; // UTF-8; of texts and attributes
};

class XNode::Children
{
public:
    class Iterator
    {
    public:
        Iterator(const XTree* tree, quint32 at)
            : m_tree(tree)
            , m_at(at)
        {}
        XNode operator*() const { return {m_tree, m_at}; }
        Iterator& operator++()
        {
            m_at = m_tree->m_nodes[m_at].end;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

    private:
        const XTree* m_tree;
        quint32 m_at;
    };

    Iterator begin() const { return {m_tree, m_begin}; }
    Iterator end() const { return {m_tree, m_end}; }

private:
    friend class XNode;
    Children(const XTree* tree, quint32 begin, quint32 end)
        : m_tree(tree)
        , m_begin(begin)
        , m_end(end)
    {}

    const XTree* m_tree;
    quint32 m_begin, m_end;
};

} // namespace corvelle
