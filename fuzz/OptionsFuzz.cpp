// Command lines and addresses that other programs start us with. The first line is the
// environment's number, the others are arguments.

#include "app/LaunchOptions.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QStringList arguments = QString::fromUtf8(bytesOf(data, size)).split(u'\n');
    const QString value = arguments.takeFirst();
    const LaunchOptions options = readLaunchOptions(arguments, [&](const char*) { return value; });
    if (options.size)
        check(options.size->width() >= 200 && options.size->width() <= 16384 &&
                  options.size->height() >= 200 && options.size->height() <= 16384,
            "a window has a size that a screen may have");
    check(!options.probeMs || *options.probeMs > 0, "a limit is a time");
    check(!options.itemID.contains(u'/'), "an id is one component of an address");
    check(options.folder.isEmpty() || arguments.contains(options.folder),
        "a folder is one of the arguments");
    for (const QString& argument : arguments)
        check(itemOfAddress(argument).isEmpty() ||
                  argument.startsWith(u"corvelle:", Qt::CaseInsensitive) ||
                  argument.trimmed().startsWith(u"corvelle:", Qt::CaseInsensitive),
            "only our own addresses name an item");
    return 0;
}
