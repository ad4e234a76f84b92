#include "interface/theme/Icons.h"
#include "interface/theme/Shadows.h"
#include "interface/theme/Theme.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <gtest/gtest.h>

#include <set>

using namespace corvelle;

namespace {

QImage blank(int width, int height, double ratio = 1)
{
    QImage image(QSize(width, height) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    return image;
}

QImage shadow(
    const QRectF& box, Elevation elevation, Scheme scheme = Scheme::Light, double ratio = 1)
{
    QImage image = blank(300, 300, ratio);
    QPainter painter(&image);
    drawShadow(painter, box, 10, elevation, scheme);
    return image;
}

int alphaAt(const QImage& image, int x, int y)
{
    return qAlpha(image.pixel(x, y));
}

double contrast(const QColor& a, const QColor& b)
{
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double c) {
            return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const double first = luminance(a), second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

} // namespace

TEST(Theme, textHoldsItsContrastOnEverySurface)
{
    for (const Scheme scheme : {Scheme::Light, Scheme::Dark}) {
        SCOPED_TRACE(scheme == Scheme::Light ? "light" : "dark");
        const Palette& p = palette(scheme);
        for (const QColor& surface : {p.ground, p.surface, p.sunken, p.raised}) {
            for (const QColor& ink : {p.ink, p.ink2, p.ink3})
                EXPECT_GE(contrast(ink, surface), 4.5)
                    << qPrintable(ink.name() + " on " + surface.name());
        }
        for (const NodeColor color : allNodeColors) {
            EXPECT_GE(contrast(p.tones(color).ink, p.tones(color).fill), 4.5)
                << qPrintable(word(color));
            EXPECT_GE(contrast(p.tones(color).inkSoft, p.tones(color).fill), 4.5)
                << qPrintable(word(color));
        }
    }
}

TEST(Icons, everySignIsDrawnInsideItsSquareAndUnlikeTheOthers)
{
    constexpr int size = 20, margin = 2;
    std::set<QByteArray> pictures;
    for (int i = 0; i < iconCount; ++i) {
        SCOPED_TRACE(i);
        QImage image = blank(size + 2 * margin, size + 2 * margin);
        {
            QPainter painter(&image);
            drawIcon(painter, static_cast<Icon>(i), QRectF(margin, margin, size, size), Qt::black);
        }
        int outside = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (!QRect(margin, margin, size, size).contains(x, y))
                    outside += alphaAt(image, x, y);
            }
        }
        EXPECT_EQ(outside, 0);
        pictures.insert(
            QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
    }
    EXPECT_EQ(pictures.size(), static_cast<std::size_t>(iconCount));
    EXPECT_FALSE(
        pictures.contains(QByteArray(static_cast<qsizetype>((size + 4) * (size + 4) * 4), '\0')));
}

TEST(Icons, aPictureHasTheWantedSizeAndColor)
{
    const QImage image = iconImage(Icon::Stop, 16, QColor(200, 10, 30), 2);
    EXPECT_EQ(image.size(), QSize(32, 32));
    EXPECT_EQ(image.pixelColor(16, 16), QColor(200, 10, 30));
    EXPECT_EQ(
        iconImage(Icon::Stop, 16, QColor(0, 10, 30), 2).pixelColor(16, 16), QColor(0, 10, 30));
}

TEST(Shadows, fallDownwardAndEndWithinTheirReach)
{
    const QRectF box(100, 100, 100, 100);
    const QImage image = shadow(box, Elevation::Hover);
    EXPECT_GT(alphaAt(image, 150, 205), alphaAt(image, 150, 95)) << "more below than above";
    EXPECT_EQ(alphaAt(image, 95, 150), alphaAt(image, 204, 150)) << "the same at both sides";

    const QRect reached =
        box.toRect().adjusted(-shadowReach(Elevation::Hover), -shadowReach(Elevation::Hover),
            shadowReach(Elevation::Hover), shadowReach(Elevation::Hover));
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(alphaAt(image, i, reached.top() - 1), 0);
        EXPECT_LE(alphaAt(image, i, reached.bottom()), 1) << "nothing is cut off";
    }
}

TEST(Shadows, aStretchedPictureIsTheSameAsOneMadeInFull)
{
    // A silhouette is never stretched, so it shows what the nine parts have to give.
    const QRectF box(60, 70, 180, 150);
    const QImage parts = shadow(box, Elevation::Rest);
    QImage whole = blank(300, 300);
    {
        QPainter painter(&whole);
        QPainterPath path;
        path.addRoundedRect(box, 10, 10);
        drawShadow(painter, path, Elevation::Rest, Scheme::Light);
    }
    int worst = 0;
    for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < 300; ++x)
            worst = std::max(worst, std::abs(alphaAt(parts, x, y) - alphaAt(whole, x, y)));
    }
    EXPECT_LE(worst, 1);
}

TEST(Shadows, aSmallBoxThrowsAFainterWideShadow)
{
    const int below = 24; // where only the wide layer is left
    const QImage large = shadow({50, 20, 200, 200}, Elevation::Panel);
    const QImage small = shadow({130, 190, 30, 30}, Elevation::Panel);
    EXPECT_LT(alphaAt(small, 145, 220 + below), alphaAt(large, 145, 220 + below));
}

TEST(Shadows, keepTheirSizeOnAScreenWithMorePixels)
{
    const QRectF box(100, 100, 100, 100);
    const QImage once = shadow(box, Elevation::Hover),
                 twice = shadow(box, Elevation::Hover, Scheme::Light, 2);
    for (const int y : {205, 212, 220, 230})
        EXPECT_NEAR(alphaAt(once, 150, y), alphaAt(twice, 300, 2 * y), 2) << y;
}
