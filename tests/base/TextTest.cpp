#include "base/Text.h"

#include "support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>

using namespace corvelle;

TEST(Text, lowerCaseFollowsTheFullUnicodeRule)
{
    const struct
    {
        QString text, lower;
    } cases[] = {
        {"Report.DOCX", "report.docx"},
        {"ÄÖÜ", "äöü"},
        {"ΣΊΣΥΦΟΣ", "σίσυφος"},
        {"İ", "i̇"},
        {"ẞ", "ß"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lowerCased(c.text), c.lower);
}

TEST(Text, keysMeetInCaseAndCompositionOnlyWhereTheVolumeIgnoresCase)
{
    const QString decomposed = QString("u") + QChar(0x0308) + "ber.TXT";
    EXPECT_EQ(pathKey(decomposed, NameCase::Ignored), pathKey("Über.txt", NameCase::Ignored));
    EXPECT_NE(pathKey(decomposed, NameCase::Kept), pathKey("über.TXT", NameCase::Kept));
    const QString marked = QString("J") + QChar(0x030C);
    const QString key = pathKey(marked, NameCase::Ignored);
    EXPECT_EQ(pathKey(key, NameCase::Ignored), key) << "only its small form is one character";
    EXPECT_NE(pathKey("a", NameCase::Kept), pathKey("A", NameCase::Kept));
}

TEST(Text, namesSortAsPeopleCount)
{
    QStringList names = {"Page 10", "page 2", "Page 1", "Page 02", "Page", "Über", "b", "a10b",
        "a9b", "99999999999999999999999", "9"};
    std::sort(names.begin(), names.end(), [](const QString& left, const QString& right) {
        return compareNaturally(left, right) < 0;
    });
    EXPECT_EQ(names, (QStringList{"9", "99999999999999999999999", "a9b", "a10b", "b", "Page",
                         "Page 1", "Page 02", "page 2", "Page 10", "Über"}));
    EXPECT_EQ(compareNaturally(u"same 1", u"same 1"), 0);
    EXPECT_NE(compareNaturally(u"a", u"A"), 0) << "a strict order: two names are never equal";
}

TEST(Text, longDecomposedTextIsComposedInLinearTime)
{
    QString text;
    for (int i = 0; i < 200'000; ++i)
        text += QString("o") + QChar(0x0302);
    EXPECT_EQ(composed(text), QString(200'000, u'ô'));
}

TEST(Text, aPathSplitsAtItsLastSlash)
{
    EXPECT_EQ(lastComponent("My Space/a/b.txt"), "b.txt");
    EXPECT_EQ(parentPath("My Space/a/b.txt"), "My Space/a");
    EXPECT_EQ(lastComponent("b.txt"), "b.txt");
    EXPECT_EQ(parentPath("b.txt"), "");
}
