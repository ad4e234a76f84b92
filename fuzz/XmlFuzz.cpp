// XML: a tree holds what a stream of its root gives, and its walks agree.

#include "documents/XNode.h"

#include "Check.h"

using namespace corvelle;

namespace {

qsizetype countBelow(XNode node)
{
    qsizetype count = 0;
    for (const XNode child : node.children())
        count += 1 + countBelow(child); // a tree has at most 256 levels
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray xml = bytesOf(data, size);
    const auto tree = XNode::parse(xml);
    if (!tree)
        return 0;
    const XNode root = tree->root();
    check(bool(root), "a tree has a root");
    qsizetype matches = 0;
    for (const XNode node : root.descendants(root.name()))
        matches += node.name() == root.name();
    check(countBelow(root) >= matches, "descendants lie below");
    check(root.contains({root.name()}) == (matches > 0), "contains() sees descendants");

    QString streamedText;
    XNode::stream(xml, {root.name()}, [&](XNode node) {
        streamedText = node.allText();
        return true;
    });
    check(streamedText == root.allText(), "a stream of the root gives the tree's text");
    return 0;
}
