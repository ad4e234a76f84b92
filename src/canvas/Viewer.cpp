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
    const QString ending = node.path.section(u'.', -1).toLower();
    for (const char* document : {"docx", "docm", "dotx", "dotm", "rtf", "odt", "ods", "odp"})
        if (ending == QLatin1StringView(document))
            return Viewer::Document;
    return ending == u"xlsx" || ending == u"xlsm" ? Viewer::Workbook : Viewer::None;
}

} // namespace corvelle
