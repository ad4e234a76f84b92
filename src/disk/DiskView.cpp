#include "disk/DiskView.h"

#include <algorithm>

namespace corvelle {

DiskView::DiskView(QString base, QString prefix, QString leftOut, std::stop_token stop)
    : m_base(std::move(base))
    , m_prefix(std::move(prefix))
    , m_leftOut(std::move(leftOut))
    , m_stop(std::move(stop))
{}

DiskView DiskView::ofLibrary(const QString& root, std::stop_token stop)
{
    return DiskView(root, {}, {}, std::move(stop));
}

DiskView DiskView::ofLinked(const QString& folder, const QString& leftOut, std::stop_token stop)
{
    const bool isInside = leftOut.startsWith(folder + u'/');
    return DiskView(
        folder, folder, isInside ? leftOut.mid(folder.size() + 1) : QString(), std::move(stop));
}

QString DiskView::absolute(const QString& path) const
{
    return m_prefix.isEmpty() ? m_base + u'/' + path : path;
}

bool DiskView::covers(const QString& path) const
{
    if (m_prefix.isEmpty())
        return !path.isEmpty() && !path.startsWith(u'/') && !path.startsWith(u'.');
    return path.startsWith(m_prefix + u'/');
}

DiskPlan::Scans DiskView::folders(const QSet<QString>& paths) const
{
    return named(DiskPlan::scanFolders(m_base, relative(paths), m_stop, m_leftOut));
}

DiskPlan::Scans DiskView::trees(const QSet<QString>& paths) const
{
    return named(DiskPlan::scanTree(m_base, relative(paths), m_stop, m_leftOut));
}

std::vector<QString> DiskView::relative(const QSet<QString>& paths) const
{
    std::vector<QString> list;
    for (const QString& path : paths) {
        if (m_prefix.isEmpty())
            list.push_back(path);
        else if (path == m_prefix)
            list.push_back({});
        else if (path.startsWith(m_prefix + u'/'))
            list.push_back(path.mid(m_prefix.size() + 1));
    }
    std::sort(list.begin(), list.end());
    return list;
}

DiskPlan::Scans DiskView::named(DiskPlan::Scans scans) const
{
    if (m_prefix.isEmpty())
        return scans;
    DiskPlan::Scans named;
    while (!scans.empty()) {
        auto scan = scans.extract(scans.begin());
        scan.key() = scan.key().isEmpty() ? m_prefix : m_prefix + u'/' + scan.key();
        for (DiskPlan::Entry& entry : scan.mapped())
            entry.path = m_prefix + u'/' + entry.path;
        named.insert(named.end(), std::move(scan));
    }
    return named;
}

} // namespace corvelle
