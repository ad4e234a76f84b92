// Titles that become names on disk.

#include "base/SkippedNames.h"
#include "library/FileNames.h"

#include "Check.h"

#include <QString>

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString title = QString::fromUtf8(bytesOf(data, size));
    const QString name = safeFileName(title);
    check(!name.trimmed().isEmpty() && name.toUtf8().size() < 250, "a name has a length that fits");
    check(!name.contains(u'/') && !name.contains(QChar(u'\0')) && !name.startsWith(u'.'),
        "a name leads nowhere and is seen");
    check(!isSkippedName(name), "a look at the disk finds it");
    check(QString::fromUtf8(name.toUtf8()) == name, "a name is Unicode");
    return 0;
}
