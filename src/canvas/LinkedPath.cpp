#include "canvas/LinkedPath.h"

#include "base/Text.h"

#include <QDir>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

QString linkedPath(const QString& document, const QString& link)
{
    QString path = link.trimmed();
    const auto end =
        std::find_if(path.cbegin(), path.cend(), [](QChar c) { return c == u'#' || c == u'?'; });
    path.truncate(end - path.cbegin());
    // A colon in the first part would end a scheme.
    const qsizetype colon = path.indexOf(u':'), slash = path.indexOf(u'/');
    if (document.isEmpty() || path.isEmpty() || slash == 0 ||
        (colon >= 0 && (slash < 0 || colon < slash)))
        return {};
    path = QUrl::fromPercentEncoding(path.toUtf8());
    if (path.contains(QChar(0)))
        return {};
    path = QDir::cleanPath(parentPath(document) + u'/' + path);
    const bool isAbsolute = document.startsWith(u'/');
    if (!isAbsolute && path.startsWith(u'/'))
        path.remove(0, 1); // of a document that lies at the top
    const bool leadsOut = path == u".." || path.startsWith(u"../");
    return leadsOut || path == u"." ? QString() : path;
}

} // namespace corvelle
