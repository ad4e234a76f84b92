// The visible words of stored pages, and of single nodes of them.

#include "pages/PageNode.h"

#include "Check.h"

#include <QString>

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = plainText(nodeFromJson(bytesOf(data, size)));
    // A word is told once, and what parts two children is shorter than a child.
    check(static_cast<size_t>(text.size()) <= size, "a page has no more text than bytes");
    return 0;
}
