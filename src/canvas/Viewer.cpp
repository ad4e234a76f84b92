#include "canvas/Viewer.h"

namespace corvelle {

Viewer viewerOf(const Node& node)
{
    if (node.kind == NodeKind::Page)
        return Viewer::Page;
    if (node.kind != NodeKind::File)
        return Viewer::None;
    if (node.mime == u"text/markdown" || node.mime == u"text/x-markdown")
        return Viewer::Markdown;
    const bool workbook = node.path.endsWith(u".xlsx", Qt::CaseInsensitive) ||
                          node.path.endsWith(u".xlsm", Qt::CaseInsensitive);
    return workbook ? Viewer::Workbook : Viewer::None;
}

} // namespace corvelle
