// Rich text, and the markup of other previews: never longer than what it is made from.

#include "documents/DocumentText.h"
#include "documents/MarkupScan.h"
#include "documents/RtfText.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    check(rtfText(bytes).size() <= bytes.size(), "text is shorter than its rich form");
    check(!DocumentText::preview(QStringLiteral("rtf"), bytes).empty(), "a preview says something");

    check(textOfMarkup(bytes).size() <= bytes.size(), "text is shorter than its markup");
    ElementScan scan(bytes, {"text:p", "a:p"});
    qsizetype total = 0;
    while (const auto inner = scan.next())
        total += inner->size();
    check(total <= bytes.size(), "elements don't overlap");
    return 0;
}
