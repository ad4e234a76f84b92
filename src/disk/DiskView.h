// A folder on disk, and how the paths of nodes name what lies in it: in the library's own folder
// relative to it, in a folder that is linked from outside absolute.
//
// A value; its scans may take as long as a slow disk does. Any thread.
#pragma once

#include "disk/DiskScan.h"

namespace corvelle {

class DiskView
{
public:
    // The library's folder.
    static DiskView ofLibrary(const QString& root, std::stop_token stop);
    // A folder outside, which is absolute, without what lies in `leftOut`.
    static DiskView ofLinked(const QString& folder, const QString& leftOut, std::stop_token stop);

    QString absolute(const QString& path) const;
    bool isLinked() const { return !m_prefix.isEmpty(); }
    // Whether a node with that path lies in the folder.
    bool covers(const QString& path) const;

    // Paths of folders as nodes have them, and so are those that come back.
    DiskPlan::Scans folders(const QSet<QString>& paths) const;
    // With all folders below them.
    DiskPlan::Scans trees(const QSet<QString>& paths) const;

    bool isStopped() const { return m_stop.stop_requested(); }

private:
    DiskView(QString base, QString prefix, QString leftOut, std::stop_token stop);
    std::vector<QString> relative(const QSet<QString>& paths) const;
    DiskPlan::Scans named(DiskPlan::Scans scans) const;

    QString m_base;    // the folder that is scanned
    QString m_prefix;  // of the nodes' paths before what is relative to it; may be empty
    QString m_leftOut; // relative to the base; empty for nothing
    std::stop_token m_stop;
};

} // namespace corvelle
