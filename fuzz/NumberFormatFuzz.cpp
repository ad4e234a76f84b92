// Number formats: any code shows any number, within a length that its own sets.

#include "documents/NumberFormat.h"

#include "Check.h"

#include <cstring>

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < sizeof(double))
        return 0;
    double value = 0;
    std::memcpy(&value, data, sizeof value);
    const QString code = QString::fromUtf8(bytesOf(data + sizeof value, size - sizeof value));
    const NumberFormat format(code);
    for (const DateSystem dates : {DateSystem::From1900, DateSystem::From1904}) {
        const QString shown = format.number(value, dates);
        check(shown.size() <= 450 + 12 * code.size(), "a number is as long as its format");
        check(shown == format.number(value, dates), "a format keeps nothing of a number");
    }
    check(format.text(QStringLiteral("x")).size() <= 11 + code.size(), "a text is shown once");
    const QString general = generalForm(value);
    check(general.size() <= 12, "the general form is short");
    (void)serialOfIsoDate(code, DateSystem::From1900);
    return 0;
}
