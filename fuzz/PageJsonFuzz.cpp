// Stored pages: JSON to flat text to JSON is the identity after the first pass.

#include "pages/Json.h"
#include "pages/PageDocument.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray json = bytesOf(data, size);
    const FlatText text = textFromJSON(json);
    const QByteArray once = docFromText(text, docAttrs(json));
    check(JsonTree::parse(once).has_value(), "what is saved can be read");
    check(
        docFromText(textFromJSON(once), docAttrs(once)) == once, "the second pass changes nothing");
    check(pageWords(json).size() <= 4 * json.size() + 64, "words come from the page");
    return 0;
}
