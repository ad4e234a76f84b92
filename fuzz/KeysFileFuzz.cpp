// A file that a person writes by hand, and that is rewritten without its key.

#include "app/KeyMigration.h"

#include "Check.h"

#include <QList>

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray content = bytesOf(data, size);
    const KeysFile keys = readKeysFile(content);
    check(!keys.key.contains(u'\n'), "a key is one line");
    check(keys.rest.isEmpty() || keys.rest.endsWith('\n'), "the rest ends in a newline");

    // The rest takes the file's place, so nothing else in it may change.
    const QList<QByteArray> before = content.split('\n');
    qsizetype at = 0;
    if (!keys.rest.isEmpty())
        for (const QByteArray& line : keys.rest.chopped(1).split('\n')) {
            at = before.indexOf(line, at) + 1;
            check(at > 0, "each line of the rest is one of the file, in its order");
        }
    const KeysFile again = readKeysFile(keys.rest);
    check(again.key.isEmpty(), "the rest holds no key");
    check(again.rest == keys.rest, "a file without a key stays the same");
    return 0;
}
