// Steps of undo, as a damaged database gives them back.

#include "library/Change.h"
#include "library/VersionFiles.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto step = stepFromJson(bytesOf(data, size));
    if (!step)
        return 0;
    check(!step->changes.empty(), "a step changes something");
    const auto again = stepFromJson(stepToJson(*step));
    check(again.has_value(), "what was read can be stored and read again");
    check(stepToJson(*again) == stepToJson(*step), "and is the same");
    for (const Change& change : step->changes)
        (void)touchedIds(change);
    for (const QString& path : versionPaths(*step, {}))
        check(path.startsWith(u".corvelle/") && !path.contains(u"/../"),
            "no version lies outside the library's own folder");
    return 0;
}
