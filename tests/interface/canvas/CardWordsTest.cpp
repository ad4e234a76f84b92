#include "interface/canvas/CardWords.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(CardWords, countsInWords)
{
    const struct
    {
        int count;
        QString words;
    } cases[] = {{0, "Empty"}, {-1, "Empty"}, {1, "1 item"}, {2, "2 items"}, {999, "999 items"},
        {1204, "1,204 items"}, {1234567, "1,234,567 items"}};
    for (const auto& c : cases)
        EXPECT_EQ(countWords(c.count), c.words);
}

TEST(CardWords, titlesWithAnExtensionAreCutInTheMiddle)
{
    const struct
    {
        const char* title;
        bool middle;
    } cases[] = {
        {"Lease agreement.pdf", true},
        {"archive.tar.gz", true},
        {"Viewing, second.m4a", true},
        {"drawing.sketch", true},
        {"Lease agreement", false},
        {".gitignore", false},
        {"Version 1.2", false},
        {"Mr. Smith and his garden", false},
        {"The end.", false},
        {"a.verylongword", false},
        {"", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(titleElision(QString::fromUtf8(c.title)) == Qt::ElideMiddle, c.middle) << c.title;
}

TEST(CardWords, detailComesWithTheZoom)
{
    const struct
    {
        double zoom;
        Detail detail;
    } cases[] = {{0.2, Detail::Far}, {0.35, Detail::Far}, {0.42, Detail::Bars}, {0.6, Detail::Bars},
        {0.69, Detail::Bars}, {0.7, Detail::Full}, {2.5, Detail::Full}};
    for (const auto& c : cases)
        EXPECT_EQ(detailAt(c.zoom * pixelsPerPoint), c.detail) << c.zoom;
}
