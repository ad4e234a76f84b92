#include "base/SkippedNames.h"

#include <algorithm>
#include <iterator>

namespace corvelle {

bool isSkippedName(QStringView name)
{
    if (name.startsWith(u'.') || name.startsWith(u"~$") || name.endsWith(u'~'))
        return true;
    if (name == u"Icon\r" || name == u"4913" || name.contains(u".sb-"))
        return true;
    if (name.size() > 2 && name.startsWith(u'#') && name.endsWith(u'#'))
        return true;
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot < 0)
        return false;
    const QStringView extension = name.mid(dot + 1);
    constexpr QStringView unfinished[] = {u"tmp", u"crdownload", u"download", u"part", u"partial"};
    return std::any_of(std::begin(unfinished), std::end(unfinished),
        [&](QStringView e) { return extension.compare(e, Qt::CaseInsensitive) == 0; });
}

Generated generatedByName(QStringView name)
{
    if (name == u"node_modules" || name == u"__pycache__" || name == u"Pods" ||
        name == u"DerivedData")
        return Generated::Yes;
    return name == u"venv" ? Generated::IfMarked : Generated::No;
}

} // namespace corvelle
