#include "base/Text.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(Text, lowerCaseFollowsTheFullUnicodeRule)
{
    const struct { QString text, lower; } cases[] = {
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
    EXPECT_NE(pathKey("a", NameCase::Kept), pathKey("A", NameCase::Kept));
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
