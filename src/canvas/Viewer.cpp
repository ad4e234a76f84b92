#include "canvas/Viewer.h"

namespace corvelle {

Viewer viewerOf(const Node& node)
{
    if (node.kind == NodeKind::Page)
        return Viewer::Page;
    const bool markdown = node.mime == u"text/markdown" || node.mime == u"text/x-markdown";
    return node.kind == NodeKind::File && markdown ? Viewer::Markdown : Viewer::None;
}

} // namespace corvelle
