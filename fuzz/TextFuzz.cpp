// File names and words of any disk: UTF-8 with its faults, and UTF-16 with half surrogate pairs.

#include "base/Text.h"
#include "store/SQLite.h"

#include "Check.h"

#include <cstring>

using namespace corvelle;

namespace {

int sign(int number)
{
    return (number > 0) - (number < 0);
}

QString fromUnits(const uint8_t* data, size_t size)
{
    QString text(static_cast<qsizetype>(size / 2), Qt::Uninitialized);
    std::memcpy(text.data(), data, size / 2 * 2);
    return text;
}

QString lowerInDatabase(const QString& text)
{
    static auto connection = SQLite::open(QStringLiteral(":memory:"));
    static auto statement = connection->prepare("SELECT ulower(?)");
    statement->bind({text});
    const auto row = statement->step();
    check(row && *row, "the database answers");
    return statement->row().text(0);
}

void checkKeys(const QString& text)
{
    check(composed(composed(text)) == composed(text), "a composed text stays");
    check(lowerCased(lowerCased(text)) == lowerCased(text), "a lower-case text stays");
    const QString key = pathKey(text, NameCase::Ignored);
    check(pathKey(key, NameCase::Ignored) == key, "a key is its own key");
    check(pathKey(lowerCased(text), NameCase::Ignored) == key, "case makes no other key");
    check(key.count(u'/') == text.count(u'/'), "a key has the components of its path");
    check(pathKey(text, NameCase::Kept) == text, "a volume that keeps case tells all names apart");
    check(parentPath(text).isEmpty() || parentPath(text) + u'/' + lastComponent(text) == text,
        "a path is its parent and its name");
    check(shortened(text, 20).size() <= 21, "a shortened text is short");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(bytesOf(data, size));
    checkKeys(text);
    checkKeys(fromUnits(data, size));

    // The database cuts a bound text at no NUL, but compares and shows up to it.
    if (!text.contains(QChar(0)))
        check(lowerInDatabase(text) == lowerCased(composed(text)), "the database lowers as we do");

    const QString left = text.left(text.size() / 2), right = text.mid(text.size() / 2);
    if (left.isValidUtf16() && right.isValidUtf16())
        check(sign(compareByCodePoints(left, right)) == sign(left.toUtf8().compare(right.toUtf8())),
            "code points come in the order of their bytes");
    return 0;
}
