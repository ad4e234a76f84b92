#include "platform/FileTypes.h"

#include <QMimeDatabase>

namespace corvelle {

namespace {

constexpr qsizetype longestEnding =
    12; // longer "endings" are rather parts of a name, and would only fill the table

} // namespace

QString FileTypes::mimeOf(const QString& fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    const QString ending = dot > 0 ? fileName.mid(dot + 1) : QString();
    // "a.tar.gz" and "a.gz" are of different types: what stands before such an ending counts.
    const bool compressed =
        ending == u"gz" || ending == u"bz2" || ending == u"xz" || ending == u"zst";
    const bool keeps = !ending.isEmpty() && ending.size() <= longestEnding && !compressed;
    if (keeps)
        if (const auto known = m_byEnding.constFind(ending); known != m_byEnding.cend())
            return *known;
    const QString name =
        QMimeDatabase().mimeTypeForFile(fileName, QMimeDatabase::MatchExtension).name();
    if (keeps)
        m_byEnding.insert(ending, name);
    return name;
}

} // namespace corvelle
