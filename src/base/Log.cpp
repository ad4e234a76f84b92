#include "base/Log.h"

#include <cstdio>

namespace corvelle {

void logLine(const QString& line)
{
    QString flat = line;
    flat.replace(u'\n', u' ');
    const QByteArray bytes = flat.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
}

} // namespace corvelle
