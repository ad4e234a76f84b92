#include "interface/canvas/CardFace.h"

#include "interface/canvas/Ground.h"

#include "support/Printing.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

using namespace corvelle;

namespace {

using Kind = CardFace::Kind;

constexpr double scale = 0.924;

CardFace folder(const QString& title = QStringLiteral("Taxes"))
{
    CardFace face;
    face.kind = Kind::Folder;
    face.size = {224, 176};
    face.title = title;
    face.color = NodeColor::Blue;
    face.count = 12;
    face.peeks = {
        {CardFace::Peek::Kind::Page, {}, {}}, {CardFace::Peek::Kind::Folder, NodeColor::Red, {}}};
    return face;
}

CardFace page()
{
    CardFace face;
    face.kind = Kind::Page;
    face.size = {176, 224};
    face.title = QStringLiteral("Paint notes");
    using Line = CardFace::Line;
    for (const Line::Kind kind :
        {Line::Kind::Heading, Line::Kind::Text, Line::Kind::Bullet, Line::Kind::Number,
            Line::Kind::Todo, Line::Kind::Done, Line::Kind::Quote, Line::Kind::Code})
        face.lines.push_back({kind, QStringLiteral("Limewash, two coats"), 1});
    return face;
}

CardFace file(const QString& badge = QStringLiteral("PDF"))
{
    CardFace face;
    face.kind = Kind::File;
    face.size = {176, 224};
    face.title = QStringLiteral("Lease agreement.pdf");
    face.badge = badge;
    face.meta = QStringLiteral("12 pages");
    return face;
}

CardFace link()
{
    CardFace face;
    face.kind = Kind::Link;
    face.size = {240, 150};
    face.title = QStringLiteral("How to measure a room");
    face.host = QStringLiteral("plankguide.example");
    return face;
}

CardFace picture(const QColor& color)
{
    CardFace face;
    face.kind = Kind::Picture;
    face.size = {199, 199};
    face.picture = QImage(50, 50, QImage::Format_RGB32);
    face.picture.fill(color);
    return face;
}

std::vector<CardFace> allKinds()
{
    return {folder(), page(), file(), link(), picture(Qt::darkGreen)};
}

// The colour at a point of the card, in points.
QColor colorAt(const QImage& image, double at, double x, double y)
{
    const double ratio = image.devicePixelRatio();
    const double margin = faceMargin(at);
    return image.pixelColor(
        static_cast<int>((margin + x * at) * ratio), static_cast<int>((margin + y * at) * ratio));
}

// The face without what lies outside of the card.
QImage inside(const QImage& image, double at)
{
    const int margin = static_cast<int>(faceMargin(at) * image.devicePixelRatio());
    return image.copy(image.rect().adjusted(margin, margin, -margin, -margin));
}

bool hasColor(const QImage& image, const QColor& color)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).rgb() == color.rgb())
                return true;
        }
    }
    return false;
}

} // namespace

TEST(CardFace, hasWholeDevicePixelsInsideItsMargin)
{
    for (const CardFace& face : allKinds()) {
        for (const double at : {0.22, 0.33, 0.924, 1.1, 2.75}) {
            for (const double ratio : {1.0, 1.5, 2.0}) {
                const QImage image = drawCardFace(face, Scheme::Light, at, ratio);
                const int margin = static_cast<int>(std::ceil(faceMargin(at) * ratio));
                EXPECT_EQ(image.width(), std::lround(face.size.width() * at * ratio) + 2 * margin);
                EXPECT_EQ(
                    image.height(), std::lround(face.size.height() * at * ratio) + 2 * margin);
                EXPECT_EQ(image.devicePixelRatio(), ratio);
            }
        }
    }
}

TEST(CardFace, isTheSamePictureOnAnotherThread)
{
    std::vector<QImage> there;
    std::thread worker([&] {
        for (const CardFace& face : allKinds())
            there.push_back(drawCardFace(face, Scheme::Dark, scale, 1));
    });
    std::vector<QImage> here;
    for (const CardFace& face : allKinds())
        here.push_back(drawCardFace(face, Scheme::Dark, scale, 1));
    worker.join();
    EXPECT_EQ(here, there);
}

TEST(CardFace, showsWhatItIs)
{
    const Palette& colors = palette(Scheme::Light);
    const QImage blue = drawCardFace(folder(), Scheme::Light, scale, 1);
    EXPECT_EQ(colorAt(blue, scale, 112, 140), colors.tones(NodeColor::Blue).fill) << "the pocket";
    EXPECT_EQ(colorAt(blue, scale, 8, 50), colors.tones(NodeColor::Blue).deep)
        << "the back beside the peeks";
    EXPECT_EQ(colorAt(blue, scale, 200, 2).alpha() < 40, true)
        << "beside the tab there is only shadow";

    const QImage green = drawCardFace(picture(Qt::darkGreen), Scheme::Light, scale, 1);
    EXPECT_EQ(colorAt(green, scale, 100, 100), QColor(Qt::darkGreen));

    EXPECT_EQ(colorAt(drawCardFace(file("AUD"), Scheme::Light, scale, 1), scale, 88, 10),
        colors.tones(NodeColor::Purple).tint);
    EXPECT_EQ(colorAt(drawCardFace(file("ZIP"), Scheme::Light, scale, 1), scale, 88, 10),
        colors.tones(NodeColor::Brown).tint);
    EXPECT_EQ(colorAt(drawCardFace(file("PDF"), Scheme::Light, scale, 1), scale, 88, 22),
        QColor(Qt::white))
        << "paper";
}

TEST(CardFace, aFilesFirstPageFillsThePaperFromTheTop)
{
    CardFace face = file();
    face.picture = QImage(100, 141, QImage::Format_RGB32);
    face.picture.fill(Qt::red);
    const QImage drawn = drawCardFace(face, Scheme::Light, scale, 1);
    EXPECT_EQ(colorAt(drawn, scale, 24, 20), QColor(Qt::red));
    EXPECT_EQ(colorAt(drawn, scale, 88, 150), QColor(Qt::red));
    EXPECT_NE(colorAt(drawn, scale, 10, 60), QColor(Qt::red))
        << "the paper doesn't reach the sides";
    EXPECT_NE(colorAt(drawn, scale, 88, 170), QColor(Qt::red)) << "it goes under the caption";
}

TEST(CardFace, wordsBecomeBarsAndThenMarks)
{
    const Palette& colors = palette(Scheme::Light);
    const CardFace face = file();
    const auto drawn = [&](double zoom) {
        return inside(drawCardFace(face, Scheme::Light, zoom * 1.1, 1), zoom * 1.1);
    };
    const QImage full = drawn(0.84), bars = drawn(0.5), far = drawn(0.3);
    EXPECT_TRUE(hasColor(full, colors.tones(NodeColor::Red).fill)) << "the badge";
    EXPECT_TRUE(hasColor(far, colors.tones(NodeColor::Red).solid)) << "the mark";
    EXPECT_FALSE(hasColor(full, colors.tones(NodeColor::Red).solid));

    CardFace other = face;
    other.meta = QStringLiteral("3 pages");
    EXPECT_NE(inside(drawCardFace(other, Scheme::Light, 0.84 * 1.1, 1), 0.84 * 1.1), full);
    EXPECT_EQ(inside(drawCardFace(other, Scheme::Light, 0.5 * 1.1, 1), 0.5 * 1.1), bars)
        << "the meta line is gone";
    other.title = QStringLiteral("Something else.pdf");
    EXPECT_NE(inside(drawCardFace(other, Scheme::Light, 0.5 * 1.1, 1), 0.5 * 1.1), bars);
    EXPECT_EQ(inside(drawCardFace(other, Scheme::Light, 0.3 * 1.1, 1), 0.3 * 1.1), far)
        << "so is the title";
}

TEST(CardFace, foldersAndPagesKeepTheirNamesWhenSeenFromFar)
{
    const double far = 0.3 * 1.1;
    CardFace renamedPage = page();
    renamedPage.title = QStringLiteral("Budget");
    EXPECT_NE(drawCardFace(folder(), Scheme::Light, far, 1),
        drawCardFace(folder("Kitchen"), Scheme::Light, far, 1));
    EXPECT_NE(drawCardFace(page(), Scheme::Light, far, 1),
        drawCardFace(renamedPage, Scheme::Light, far, 1));
}

TEST(CardFace, whatIsMissingThrowsNoShadow)
{
    for (CardFace face : allKinds()) {
        face.missing = true;
        const QImage image = drawCardFace(face, Scheme::Light, scale, 1);
        const int margin = faceMargin(scale);
        int outside = 0;
        for (int x = 0; x < image.width(); ++x)
            outside += qAlpha(image.pixel(x, image.height() - margin + 1));
        EXPECT_EQ(outside, 0);
    }
}

TEST(CardFace, hostileTextsAndSizesDrawSomething)
{
    CardFace face = page();
    face.title = QString(5000, u'W');
    face.lines = {{CardFace::Line::Kind::Code, QString(100000, u'x'), 1},
        {CardFace::Line::Kind::Text, QString(), 1},
        {CardFace::Line::Kind::Text, QStringLiteral("\u200B\u202E\U0001F600\n\n"), 1}};
    EXPECT_FALSE(drawCardFace(face, Scheme::Light, scale, 1).isNull());
    CardFace tiny = picture(Qt::red);
    tiny.size = {0, 0};
    EXPECT_FALSE(drawCardFace(tiny, Scheme::Light, 0.22, 1).isNull());
}

TEST(CardMarks, aRingLiesRoundTheCardAndNotOnIt)
{
    const Palette& colors = palette(Scheme::Light);
    const QRectF card(50, 50, 207, 163);
    for (const Kind kind : {Kind::Folder, Kind::Page}) {
        QImage image(320, 270, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paintRing(painter, card, kind, scale, colors, Ring::Selected);
        painter.end();
        EXPECT_EQ(qAlpha(image.pixel(150, 130)), 0) << "nothing on the card";
        EXPECT_EQ(qAlpha(image.pixel(150, 213 + 1)), 0) << "a gap";
        EXPECT_EQ(image.pixelColor(150, 213 + 3), colors.accent);
        EXPECT_EQ(qAlpha(image.pixel(150, 213 + 6)), 0);
        const bool followsTheTab = qAlpha(image.pixel(220, 50 - 4)) == 0;
        EXPECT_EQ(followsTheTab, kind == Kind::Folder);
    }
}

TEST(Ground, dotsAreAnchoredToTheCanvasAndKeepApart)
{
    const Palette& colors = palette(Scheme::Light);
    const auto dots = [&](double zoom, QPointF origin) {
        QImage image(400, 100, QImage::Format_RGB32);
        QPainter painter(&image);
        paintGround(painter, image.size(), origin, zoom, colors, true);
        painter.end();
        std::vector<int> columns;
        const int row = static_cast<int>(origin.y());
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, row) != colors.ground &&
                (columns.empty() || x > columns.back() + 1))
                columns.push_back(x);
        }
        return columns;
    };
    const std::vector<int> found = dots(1, {100, 50});
    ASSERT_GT(found.size(), 8U);
    EXPECT_NE(std::find_if(found.begin(), found.end(), [](int x) { return x == 99 || x == 100; }),
        found.end())
        << "a dot at (0, 0)";
    EXPECT_NEAR(found[5] - found[4], 28 * 1.1, 1);

    for (const double zoom : {0.35, 0.42, 0.5, 0.7, 1.0, 2.5}) {
        const std::vector<int> columns = dots(zoom, {100, 50});
        ASSERT_GT(columns.size(), 2U) << zoom;
        EXPECT_GE(columns[1] - columns[0], 17) << zoom;
    }
    EXPECT_TRUE(dots(0.3, {100, 50}).empty());

    std::vector<int> moved = dots(1, {103.4, 50});
    for (int& x : moved)
        x -= 3;
    EXPECT_EQ(std::vector(moved.begin() + 1, moved.begin() + 8),
        std::vector(found.begin() + 1, found.begin() + 8))
        << "panning moves all dots by the same";
}
