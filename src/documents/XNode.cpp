#include "documents/XNode.h"

#include "documents/XmlEvents.h"

#include <algorithm>

namespace corvelle {

// Puts the events of one subtree into a tree.
struct XNode::Builder
{
    XTree& tree;
    // The texts of each open element, as places in the tree's text: other elements' stand between.
    struct Piece
    {
        quint32 at, size;
    };
    struct Open
    {
        quint32 node = 0;
        std::vector<Piece> pieces;
    };
    std::vector<Open> stack = std::vector<Open>(XNode::mostLevels);
    size_t depth = 0;

    bool start(quint32 name, const std::vector<XmlSink::Attribute>& attributes)
    {
        if (tree.m_nodes.size() >= XNode::mostElements)
            return false;
        Open& open = stack[depth++];
        open.node = quint32(tree.m_nodes.size());
        open.pieces.clear();
        tree.m_nodes.append({name, 0, 0, 0, quint32(tree.m_attrs.size())});
        for (const auto& attribute : attributes) {
            const QByteArrayView value(attribute.value);
            tree.m_attrs.append(
                {attribute.name, quint32(tree.m_text.size()), quint32(value.size())});
            tree.m_text += value;
        }
        return isWithinLimits();
    }

    bool text(QByteArrayView utf8)
    {
        auto& pieces = stack[depth - 1].pieces;
        const auto at = quint32(tree.m_text.size());
        if (!pieces.empty() && pieces.back().at + pieces.back().size == at)
            pieces.back().size += quint32(utf8.size());
        else
            pieces.push_back({at, quint32(utf8.size())});
        tree.m_text += utf8;
        return isWithinLimits();
    }

    // An element with several pieces gets them in one, at the end of all text.
    bool end()
    {
        const Open& open = stack[--depth];
        XTree::Node& node = tree.m_nodes[open.node];
        node.end = quint32(tree.m_nodes.size());
        if (open.pieces.size() == 1) {
            node.text = open.pieces[0].at;
            node.textSize = open.pieces[0].size;
        } else if (!open.pieces.empty()) {
            node.text = quint32(tree.m_text.size());
            for (const Piece& piece : open.pieces)
                node.textSize += piece.size;
            tree.m_text.resize(tree.m_text.size() + node.textSize);
            char* to = tree.m_text.data() + node.text;
            for (const Piece& piece : open.pieces)
                to = std::copy_n(tree.m_text.constData() + piece.at, piece.size, to);
        }
        return isWithinLimits();
    }

    bool isWithinLimits() const { return tree.m_text.size() <= 2 * XNode::mostBytes; }
};

namespace {

// Ends a source that gives more than a tree may be made of.
ByteSource limited(const ByteSource& source)
{
    if (!source)
        return {};
    return [source, left = XNode::mostBytes](char* into, qsizetype most) mutable -> qsizetype {
        const qsizetype count = source(into, most);
        left -= std::max<qsizetype>(0, count);
        return left >= 0 ? count : -1;
    };
}

} // namespace

std::optional<XTree> XNode::parse(QByteArrayView data)
{
    return parse(sourceOf(data));
}

std::optional<XTree> XNode::parse(const ByteSource& source)
{
    struct Sink final : XmlSink
    {
        Builder builder;
        explicit Sink(XTree& tree)
            : builder{tree}
        {}
        bool startElement(quint32 name, const std::vector<Attribute>& attributes) override
        {
            return builder.start(name, attributes);
        }
        bool text(QByteArrayView utf8) override { return builder.text(utf8); }
        bool endElement() override { return builder.end(); }
    };

    XTree tree;
    const auto names = std::make_shared<XmlNames>();
    tree.m_names = names;
    Sink sink(tree);
    const XmlEnd end = readXml(limited(source), *names, sink);
    if (end != XmlEnd::Whole && end != XmlEnd::AfterRoot)
        return std::nullopt;
    return tree;
}

struct XNode::Streamer final : XmlSink
{
    const Each& each;
    size_t wanted; // names with lower numbers
    XTree tree;
    Builder builder{tree};
    bool stopped = false;

    Streamer(const Each& callback, const std::shared_ptr<XmlNames>& names, size_t wantedNames)
        : each(callback)
        , wanted(wantedNames)
    {
        tree.m_names = names;
    }

    bool startElement(quint32 name, const std::vector<Attribute>& attributes) override
    {
        return (builder.depth == 0 && name >= wanted) || builder.start(name, attributes);
    }
    bool text(QByteArrayView utf8) override { return builder.depth == 0 || builder.text(utf8); }
    bool endElement() override
    {
        if (builder.depth == 0)
            return true;
        if (!builder.end())
            return false;
        if (builder.depth > 0)
            return true;
        stopped = !each(tree.root());
        tree.m_nodes.resize(0);
        tree.m_attrs.resize(0);
        tree.m_text.resize(0);
        return !stopped;
    }
};

bool XNode::stream(
    QByteArrayView data, std::initializer_list<QByteArrayView> names, const Each& each)
{
    return stream(sourceOf(data), names, each);
}

bool XNode::stream(
    const ByteSource& source, std::initializer_list<QByteArrayView> wanted, const Each& each)
{
    const auto names = std::make_shared<XmlNames>();
    for (const QByteArrayView name : wanted)
        names->number(name.toByteArray());
    Streamer streamer(each, names, wanted.size());
    const XmlEnd end = readXml(source, *names, streamer);
    return end == XmlEnd::Whole || streamer.stopped;
}

QByteArrayView XNode::name() const
{
    return m_tree ? m_tree->m_names->name(m_tree->m_nodes[m_at].name) : QByteArrayView();
}

QByteArrayView XNode::text() const
{
    if (!m_tree)
        return {};
    const XTree::Node& node = m_tree->m_nodes[m_at];
    return m_tree->text(node.text, node.textSize);
}

std::optional<QByteArrayView> XNode::attr(QByteArrayView name) const
{
    if (!m_tree)
        return std::nullopt;
    // Of two that have come to the same name the last one counts.
    const quint32 first = m_tree->m_nodes[m_at].attrs;
    for (quint32 at = m_tree->attrsEnd(m_at); at-- > first;)
        if (const auto& attr = m_tree->m_attrs[at]; m_tree->m_names->name(attr.name) == name)
            return m_tree->text(attr.value, attr.valueSize);
    return std::nullopt;
}

QString XNode::value(QByteArrayView name) const
{
    const auto found = attr(name);
    if (!found)
        return {};
    return found->isEmpty() ? QStringLiteral("") : QString::fromUtf8(*found);
}

std::vector<XNode::Attr> XNode::attrs() const
{
    std::vector<Attr> all;
    if (!m_tree)
        return all;
    for (quint32 at = m_tree->m_nodes[m_at].attrs; at < m_tree->attrsEnd(m_at); ++at) {
        const XTree::Attr& attr = m_tree->m_attrs[at];
        all.push_back({m_tree->m_names->name(attr.name), m_tree->text(attr.value, attr.valueSize)});
    }
    return all;
}

XNode::Children XNode::children() const
{
    return m_tree ? Children(m_tree, m_at + 1, m_tree->m_nodes[m_at].end) : Children(nullptr, 0, 0);
}

XNode XNode::child(QByteArrayView name) const
{
    for (const XNode child : children())
        if (child.name() == name)
            return child;
    return {};
}

std::vector<XNode> XNode::descendants(QByteArrayView name) const
{
    std::vector<XNode> found;
    if (!m_tree)
        return found;
    for (quint32 at = m_at + 1; at < m_tree->m_nodes[m_at].end; ++at)
        if (const XNode node(m_tree, at); node.name() == name)
            found.push_back(node);
    return found;
}

QString XNode::allText() const
{
    QByteArray all;
    if (m_tree)
        for (quint32 at = m_at; at < m_tree->m_nodes[m_at].end; ++at)
            all += XNode(m_tree, at).text();
    return QString::fromUtf8(all);
}

bool XNode::contains(std::initializer_list<QByteArrayView> names) const
{
    if (!m_tree)
        return false;
    for (quint32 at = m_at + 1; at < m_tree->m_nodes[m_at].end; ++at)
        if (std::find(names.begin(), names.end(), XNode(m_tree, at).name()) != names.end())
            return true;
    return false;
}

qint64 XTree::bytes() const
{
    return m_nodes.capacity() * qint64(sizeof(Node)) + m_attrs.capacity() * qint64(sizeof(Attr)) +
           m_text.capacity();
}

} // namespace corvelle
