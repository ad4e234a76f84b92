#include "base/CardPlacement.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

QSizeF pictureCard(int width, int height)
{
    return cardSize({NodeKind::File, true, width, height});
}

} // namespace

TEST(CardPlacement, aPictureKeepsItsShapeAtTheAreaOfAPage)
{
    EXPECT_EQ(pictureCard(100, 100), QSizeF(199, 199));
    EXPECT_EQ(pictureCard(1000, 100), QSizeF(300, 96)) << "held to 3.125, then to the longest side";
    EXPECT_EQ(pictureCard(100, 1000), QSizeF(96, 300));
    EXPECT_EQ(pictureCard(0, 100), QSizeF(176, 224)) << "unknown until it is measured";
    EXPECT_EQ(cardSize({NodeKind::Folder, false, 0, 0}), QSizeF(224, 176));
    EXPECT_EQ(cardSize({NodeKind::Link, false, 0, 0}), QSizeF(240, 150));
}

TEST(CardPlacement, newCardsFormRowsOfFourBelowWhatIsThere)
{
    NextFreePlace empty;
    EXPECT_EQ(empty.next(), QPointF(0, 160));
    for (int i = 1; i < 4; ++i)
        EXPECT_EQ(empty.next(), QPointF(i * 256, 160));
    EXPECT_EQ(empty.next(), QPointF(0, 160 + 264));

    NextFreePlace filled;
    filled.include(QPointF(100, 50), QSizeF(224, 176));
    filled.include(QPointF(-30, 10), QSizeF(176, 224));
    EXPECT_EQ(filled.next(), QPointF(-30, 138 + 160));
}
