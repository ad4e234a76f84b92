// The few words a file's card says about it. Pure.
#pragma once

#include <QString>

namespace corvelle {

// The letters of the file's badge: PDF, DOC, XLS, PPT, TXT, MD, ZIP, AUD, VID, EML, or FILE.
QString fileBadge(const QString& mime, const QString& name);

// "0 bytes", "1 byte", "980 bytes", "2 KB", "3.4 MB", "12 GB": thousands, as disks are sold.
QString sizeWords(qint64 bytes);

} // namespace corvelle
