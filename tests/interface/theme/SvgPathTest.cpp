#include "interface/theme/SvgPath.h"

#include <QRectF>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

struct Case
{
    const char* what;
    const char* path;
    QRectF bounds; // of the outline itself, not of its control points
    QPointF end;
};

void expectNear(const QRectF& found, const QRectF& expected)
{
    EXPECT_NEAR(found.left(), expected.left(), 0.01);
    EXPECT_NEAR(found.top(), expected.top(), 0.01);
    EXPECT_NEAR(found.right(), expected.right(), 0.01);
    EXPECT_NEAR(found.bottom(), expected.bottom(), 0.01);
}

} // namespace

TEST(SvgPath, readsTheNotation)
{
    const Case cases[] = {
        {"lines, both cases", "M1 2L4 6l-2 1", {1, 2, 3, 5}, {2, 7}},
        {"points after a move are lines", "M0 0 3 0 3 4", {0, 0, 3, 4}, {3, 4}},
        {"across and down", "M1 1H5v3h-2V2", {1, 1, 4, 3}, {3, 2}},
        {"numbers that touch", "M.5.5l1-.25.5.75", {0.5, 0.25, 1.5, 0.75}, {2, 1}},
        {"a closed path goes on from its start", "M2 2h4v4zl1 1", {2, 2, 4, 4}, {3, 3}},
        {"a half circle over the top", "M0 5a5 5 0 0 1 10 0", {0, 0, 10, 5}, {10, 5}},
        {"the other way round", "M0 5a5 5 0 0 0 10 0", {0, 5, 10, 5}, {10, 5}},
        {"the long way", "M5 0A5 5 0 1 1 0 5", {0, 0, 10, 10}, {0, 5}},
        {"a radius too small is enlarged", "M0 5a1 1 0 0 1 10 0", {0, 0, 10, 5}, {10, 5}},
        {"a smooth curve mirrors the last control", "M0 0c0 4 4 4 4 0s4-4 4 0", {0, -3, 8, 6},
            {8, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QPainterPath path = svgPath(c.path);
        expectNear(path.boundingRect(), c.bounds);
        EXPECT_NEAR(path.currentPosition().x(), c.end.x(), 0.01);
        EXPECT_NEAR(path.currentPosition().y(), c.end.y(), 0.01);
    }
}
