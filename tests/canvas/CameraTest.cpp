#include "canvas/Camera.h"
#include "canvas/CardGrid.h"
#include "canvas/FileWords.h"
#include "canvas/NavHistory.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

#include <random>

using namespace corvelle;

namespace {

constexpr QSizeF view(1440, 900);

std::vector<QRectF> row(int cards)
{
    std::vector<QRectF> rects;
    for (int i = 0; i < cards; ++i)
        rects.emplace_back(i * 256.0, 0, 224, 176);
    return rects;
}

} // namespace

TEST(Camera, pointsComeBackFromTheScreenAndTheScaleIsElevenTenths)
{
    const Camera camera{10, -20, 0.5};
    EXPECT_EQ(toScreen(QPointF(10, -20), camera, view), QPointF(720, 450));
    EXPECT_DOUBLE_EQ(toScreen(QPointF(11, -20), camera, view).x(), 720.55);
    const QPointF back = toCanvas(toScreen(QPointF(300, 77), camera, view), camera, view);
    EXPECT_NEAR(back.x(), 300, 1e-9);
    EXPECT_NEAR(back.y(), 77, 1e-9);
}

TEST(Camera, theAnchorStaysUnderThePointerAlsoAtTheLimits)
{
    const QPointF anchor(100, 800);
    for (const double from : {0.2, 0.84, 2.5})
        for (const double to : {0.01, 0.5, 2.5, 40.0}) {
            const Camera before{33, 44, from};
            const Camera after = zoomedAt(before, to, anchor, view);
            EXPECT_GE(after.zoom, leastZoom);
            EXPECT_LE(after.zoom, greatestZoom);
            const QPointF d = toCanvas(anchor, before, view) - toCanvas(anchor, after, view);
            EXPECT_NEAR(d.manhattanLength(), 0, 1e-9);
        }
}

TEST(Camera, facesAreDrawnAtTheNextStepUp)
{
    EXPECT_EQ(cardZoom(0.2), 0.2);
    EXPECT_EQ(cardZoom(0.21), 0.25);
    EXPECT_EQ(cardZoom(1.0), 1.0);
    EXPECT_EQ(cardZoom(1.01), 1.25);
    EXPECT_EQ(cardZoom(9), 2.5);
}

TEST(Camera, aFolderFirstShowsAllOrTheFirstTwelveOrItsBeginning)
{
    EXPECT_EQ(firstCamera({}, view), (Camera{0, 0, 1}));
    const auto sees = [](const Camera& camera, const QRectF& card) {
        return visibleRect(camera, view).contains(card);
    };
    const auto twenty = row(20), some = row(21), many = row(81);
    EXPECT_TRUE(sees(firstCamera(std::span(twenty).first(10), view), twenty[9]));
    EXPECT_EQ(firstCamera(some, view), fitted(std::span(some).first(12), view));
    const Camera beginning = firstCamera(many, view);
    EXPECT_EQ(beginning.zoom, 1.0);
    const QPointF first = toScreen(many[0].center(), beginning, view);
    EXPECT_NEAR(first.x(), 160 * 1.1, 1e-9);
    EXPECT_NEAR(first.y(), 180 * 1.1, 1e-9);
}

TEST(Camera, cullingKeepsItsRectangleForSmallMovesAndGivesUpAFarTooLargeOne)
{
    const QRectF visible(0, 0, 1000, 600);
    const QRectF first = culledRect({}, visible);
    EXPECT_EQ(first, QRectF(-350, -210, 1700, 1020));
    EXPECT_EQ(culledRect(first, visible.translated(140, 80)), first);
    EXPECT_NE(culledRect(first, visible.translated(250, 0)), first);
    EXPECT_NE(culledRect(first, QRectF(400, 200, 300, 180)), first)
        << "zoomed in: much too large by now";
}

TEST(Camera, aGlideStartsAndEndsExactlyAndSlowsDown)
{
    const Camera from{0, 0, 1}, to{100, 50, 2};
    EXPECT_EQ(glided(from, to, 0), from);
    EXPECT_EQ(glided(from, to, 1), to);
    EXPECT_GT(glided(from, to, 0.3).x, 70);
}

TEST(CardGrid, findsWhatALookAtEveryCardFinds)
{
    std::mt19937 random(7);
    const auto within = [&](double most) {
        return std::uniform_real_distribution(-most, most)(random);
    };
    CardGrid grid;
    std::vector<QRectF> rects;
    for (int i = 0; i < 500; ++i) {
        rects.emplace_back(within(9000), within(9000), 176, 224);
        grid.put(i, rects.back());
    }
    for (int i = 0; i < 200; ++i) {
        rects[static_cast<size_t>(i)].moveTo(within(9000), within(9000));
        grid.put(i, rects[static_cast<size_t>(i)]);
    }
    grid.remove(499);
    rects.pop_back();
    for (int turn = 0; turn < 200; ++turn) {
        const double side = turn % 10 ? 900 : 1e8;
        const QRectF look(within(9000), within(9000), side, side);
        std::vector<int> expected;
        for (size_t i = 0; i < rects.size(); ++i)
            if (rects[i].intersects(look))
                expected.push_back(static_cast<int>(i));
        ASSERT_EQ(grid.meeting(look), expected);
    }
}

TEST(NavHistory, goesBackAndForwardPastWhatIsGone)
{
    const auto folder = [](const char* id) { return NavPlace{NavPlace::Kind::Folder, id}; };
    const auto all = [](const NavPlace&) { return true; };
    NavHistory history;
    EXPECT_EQ(history.back(all), std::nullopt);
    for (const char* id : {"a", "b", "b", "c"})
        history.record(folder(id));
    EXPECT_EQ(history.back([](const NavPlace& place) { return place.id != "b"; }), folder("a"));
    EXPECT_EQ(history.forward(all), folder("c"));
    EXPECT_EQ(history.back(all), folder("a"));
    history.record({NavPlace::Kind::Page, "a"});
    EXPECT_EQ(history.back(all), folder("a")) << "a page is another place than a folder";
    history.record(folder("d"));
    EXPECT_FALSE(history.canGoForward()) << "a new move forgets what lay ahead";
}

TEST(FileWords, badgesAndSizesAreThoseOfTheCards)
{
    const struct
    {
        QString mime, name, badge;
    } badges[] = {
        {"application/pdf", "a.pdf", "PDF"},
        {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", "a.docx",
            "DOC"},
        {"application/vnd.oasis.opendocument.spreadsheet", "a.ods", "XLS"},
        {"application/vnd.openxmlformats-officedocument.presentationml.presentation", "a.pptx",
            "PPT"},
        {"text/markdown", "a.md", "MD"},
        {"application/zip", "a.zip", "ZIP"},
        {"audio/mp4", "a.m4a", "AUD"},
        {"application/json", "a.json", "TXT"},
        {"application/octet-stream", "a", "FILE"},
    };
    for (const auto& c : badges)
        EXPECT_EQ(fileBadge(c.mime, c.name), c.badge) << c.mime.toStdString();
    const struct
    {
        qint64 bytes;
        QString words;
    } sizes[] = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1000, "1 KB"},
        {999'499, "999 KB"},
        {999'500, "1 MB"},
        {3'440'000, "3.4 MB"},
        {38'000'000, "38 MB"},
        {9'940'000'000, "9.9 GB"},
        {9'990'000'000, "10 GB"},
    };
    for (const auto& c : sizes)
        EXPECT_EQ(sizeWords(c.bytes), c.words);
}
