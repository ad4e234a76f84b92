#include "e2e/Program.h"
#include "support/Printing.h"

#include <cmath>

namespace {

constexpr double near = 1e-6;

// A folder with a folder and four files, in a window of 1000 × 800.
class Window : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const char* name : {"Alpha/one.txt", "Alpha/two.txt", "Alpha/Inner/deep.txt", "b.txt",
                 "c.txt", "d.txt", "e.txt"})
            home.givenFile(name);
        home.givenFolder("Apple");
        program = std::make_unique<Program>(home, Program::Options{{"--size", "1000x800"}, {}});
        program->settle();
        tree.emplace(program->tree());
    }
    void TearDown() override { EXPECT_EQ(program->quit(), 0); }

    QJsonObject at(const QString& path) const { return tree->at("My Space/" + path); }
    QString id(const QString& path) const { return tree->idAt("My Space/" + path); }
    QPointF place(const QString& path) { return program->onScreen(at(path)); }
    QStringList ids(const QStringList& paths) const
    {
        QStringList list;
        for (const QString& path : paths)
            list.append(id(path));
        list.sort();
        return list;
    }
    QJsonObject camera() { return program->state()["camera"].toObject(); }
    double zoom() { return camera()["zoom"].toDouble(); }
    QPointF middle() { return {camera()["x"].toDouble(), camera()["y"].toDouble()}; }

    static void expectNear(QPointF actual, QPointF expected)
    {
        EXPECT_NEAR(actual.x(), expected.x(), near);
        EXPECT_NEAR(actual.y(), expected.y(), near);
    }

    void drag(
        QPointF from, QPointF to, const QString& button = "left", const QString& modifiers = {})
    {
        program->mouse("press", from, button, modifiers);
        program->mouse("move", from + (to - from) / 3, button, modifiers);
        program->mouse("move", to, button, modifiers);
        program->mouse("release", to, button, modifiers);
        program->settle();
    }

    Home home;
    std::unique_ptr<Program> program;
    std::optional<Tree> tree;
};

// ---- going somewhere ----

TEST_F(Window, aDoubleClickOpensAFolder)
{
    program->mouse("double", place("Alpha"));
    EXPECT_EQ(program->folder(), id("Alpha"));
    EXPECT_EQ(program->selection(), QStringList());
}

TEST_F(Window, aDoubleClickOnTheGroundOpensNothing)
{
    program->mouse("double", QPointF(500, 780));
    EXPECT_EQ(program->folder(), QString());
}

TEST_F(Window, returnOpensTheSelectedFolderAndLeadsBackIntoTheOneLeft)
{
    program->mouse("click", place("Alpha"));
    program->key("Return");
    EXPECT_EQ(program->folder(), id("Alpha"));
    program->key("Ctrl+Up");
    EXPECT_EQ(program->folder(), QString());
    program->key("Return");
    EXPECT_EQ(program->folder(), id("Alpha"));
}

TEST_F(Window, keysGoBackForwardAndUp)
{
    program->tell("open", {{"id", id("Alpha")}});
    program->tell("open", {{"id", id("Alpha/Inner")}});
    program->key("Alt+Left");
    EXPECT_EQ(program->folder(), id("Alpha"));
    program->key("Alt+Left");
    EXPECT_EQ(program->folder(), QString());
    program->key("Alt+Left"); // there is nothing before
    EXPECT_EQ(program->folder(), QString());
    program->key("Alt+Right", 2);
    EXPECT_EQ(program->folder(), id("Alpha/Inner"));
    program->key("Ctrl+Up");
    EXPECT_EQ(program->folder(), id("Alpha"));
    program->key("Alt+Right"); // going up is a move of its own: nothing lies ahead
    EXPECT_EQ(program->folder(), id("Alpha"));
    program->key("Alt+Left");
    EXPECT_EQ(program->folder(), id("Alpha/Inner"));
    program->key("Alt+Home");
    EXPECT_EQ(program->folder(), QString());
}

TEST_F(Window, theMousesOwnButtonsGoBackAndForward)
{
    program->tell("open", {{"id", id("Alpha")}});
    program->mouse("click", QPointF(500, 700), "back");
    EXPECT_EQ(program->folder(), QString());
    program->mouse("click", QPointF(500, 700), "forward");
    EXPECT_EQ(program->folder(), id("Alpha"));
}

TEST_F(Window, aFileThatNothingOpensIsToldOf)
{
    program->mouse("double", place("b.txt"));
    program->settle();
    EXPECT_EQ(program->folder(), QString());
    const QJsonArray toasts = program->state()["toasts"].toArray();
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts[0]["text"].toString(),
        QString::fromUtf8("Couldn’t open “b.txt”: no application on this computer opens it."));
}

// ---- the selection ----

TEST_F(Window, aClickSelectsAndControlAdds)
{
    program->mouse("click", place("b.txt"));
    EXPECT_EQ(program->selection(), ids({"b.txt"}));
    program->mouse("click", place("c.txt"), "left", "Ctrl");
    EXPECT_EQ(program->selection(), ids({"b.txt", "c.txt"}));
    program->mouse("click", place("b.txt"), "left", "Shift");
    EXPECT_EQ(program->selection(), ids({"c.txt"}));
    program->mouse("click", place("d.txt"));
    EXPECT_EQ(program->selection(), ids({"d.txt"}));
    program->mouse("click", QPointF(500, 780));
    EXPECT_EQ(program->selection(), QStringList());
}

TEST_F(Window, arrowsMoveTheSelection)
{
    // Alpha  Apple  b  c
    // d      e
    program->key("Right"); // the first card when none is selected
    EXPECT_EQ(program->selection(), ids({"Alpha"}));
    program->key("Right", 3);
    EXPECT_EQ(program->selection(), ids({"c.txt"}));
    program->key("Left", 2);
    EXPECT_EQ(program->selection(), ids({"Apple"}));
    program->key("Down");
    EXPECT_EQ(program->selection(), ids({"e.txt"}));
    program->key("Left");
    EXPECT_EQ(program->selection(), ids({"d.txt"}));
    program->key("Up");
    EXPECT_EQ(program->selection(), ids({"Alpha"}));
    program->key("Left"); // nothing lies there
    EXPECT_EQ(program->selection(), ids({"Alpha"}));
    program->key("Shift+Right");
    EXPECT_EQ(program->selection(), ids({"Alpha", "Apple"}));
}

TEST_F(Window, arrowsBringTheCardIntoView)
{
    program->tell("camera", {{"x", -3000}, {"y", 160}, {"zoom", 1}});
    program->key("Right");
    program->settle();
    const QPointF shown = place("Alpha");
    EXPECT_TRUE(QRectF(0, 0, 1000, 800).contains(shown)) << shown.x() << ' ' << shown.y();
}

TEST_F(Window, aMarqueeSelectsWhatItMeets)
{
    const double above = place("b.txt").y() - 140;
    drag(QPointF(place("Apple").x(), above), place("b.txt"));
    EXPECT_EQ(program->selection(), ids({"Apple", "b.txt"}));
    // With Ctrl it adds, and takes out again what was in.
    drag(QPointF(place("c.txt").x(), above), place("b.txt"), "left", "Ctrl");
    EXPECT_EQ(program->selection(), ids({"Apple", "c.txt"}));
}

TEST_F(Window, escapeCallsAMarqueeOffAndThenClears)
{
    program->tell("select", {{"ids", QJsonArray{id("d.txt")}}});
    const QPointF b = place("b.txt");
    program->mouse("press", b - QPointF(0, 140), "left", "Ctrl");
    program->mouse("move", b, "left", "Ctrl");
    EXPECT_EQ(program->selection(), ids({"b.txt", "d.txt"}));
    program->key("Escape");
    EXPECT_EQ(program->selection(), ids({"d.txt"}));
    program->mouse("move", b + QPointF(30, 30), "left", "Ctrl");
    program->mouse("release", b + QPointF(30, 30), "left", "Ctrl");
    EXPECT_EQ(program->selection(), ids({"d.txt"}));
    program->key("Escape");
    EXPECT_EQ(program->selection(), QStringList());
}

TEST_F(Window, controlASelectsAll)
{
    program->key("Ctrl+A");
    EXPECT_EQ(program->selection(), ids({"Alpha", "b.txt", "c.txt", "d.txt", "e.txt", "Apple"}));
}

// ---- the camera ----

TEST_F(Window, anEmptyFolderIsSeenFromTheOrigin)
{
    program->tell("camera", {{"x", 700}, {"y", 300}, {"zoom", 2}});
    program->tell("open", {{"id", id("Apple")}});
    program->settle();
    EXPECT_EQ(camera(), (QJsonObject{{"x", 0}, {"y", 0}, {"zoom", 1}}));
}

TEST_F(Window, aFolderIsSeenAgainAsItWasLeft)
{
    program->tell("camera", {{"x", 150}, {"y", 200}, {"zoom", 0.75}});
    const QJsonObject left = camera();
    program->tell("open", {{"id", id("Alpha")}});
    EXPECT_NE(camera(), left);
    program->tell("up");
    EXPECT_EQ(camera(), left);
}

TEST_F(Window, keysZoomAboutTheMiddle)
{
    program->tell("camera", {{"x", 320}, {"y", 240}, {"zoom", 0.5}});
    const QPointF before = middle();
    program->key("Ctrl++");
    program->settle();
    EXPECT_NEAR(zoom(), 0.6, near);
    program->key("Ctrl+=");
    program->settle();
    EXPECT_NEAR(zoom(), 0.72, near);
    program->key("Ctrl+-", 3);
    program->settle();
    EXPECT_NEAR(zoom(), 0.72 / 1.728, near);
    program->key("Ctrl+0");
    program->settle();
    EXPECT_EQ(zoom(), 1);
    expectNear(middle(), before);
}

TEST_F(Window, zoomStaysWithinItsBounds)
{
    program->key("Ctrl++", 20);
    program->settle();
    EXPECT_EQ(zoom(), 2.5);
    program->key("Ctrl+-", 40);
    program->settle();
    EXPECT_EQ(zoom(), 0.2);
}

TEST_F(Window, theWheelWithControlZoomsAboutThePointer)
{
    const QPointF pointer(200, 650);
    const QPointF under = program->onCanvas(pointer);
    const double before = zoom();
    program->wheel(pointer, QPoint(0, -3), "Ctrl");
    program->settle();
    EXPECT_NEAR(
        zoom(), before * std::exp(-3 * 16 * 0.006), near); // a line of 16 points for each notch
    expectNear(program->onCanvas(pointer), under);
    program->wheel(pointer, QPoint(0, 2), "Ctrl");
    program->settle();
    expectNear(program->onCanvas(pointer), under);
}

TEST_F(Window, theWheelPansByTheSamePointsOfTheScreen)
{
    program->tell("camera", {{"x", 300}, {"y", 200}, {"zoom", 0.5}});
    const double scale = 0.5 * 1.1, notch = 3 * 16; // three lines
    program->wheel(QPointF(500, 400), QPoint(0, -1));
    program->settle();
    expectNear(middle(), QPointF(300, 200 + notch / scale));
    program->wheel(QPointF(500, 400), QPoint(0, 1), "Shift"); // sideways
    program->settle();
    expectNear(middle(), QPointF(300 - notch / scale, 200 + notch / scale));
    program->tell("wheel", {{"x", 500}, {"y", 400}, {"dx", 11}, {"dy", -22}, {"pixel", true}});
    program->settle();
    expectNear(
        middle(), QPointF(300 - notch / scale - 11 / scale, 200 + notch / scale + 22 / scale));
    EXPECT_EQ(zoom(), 0.5);
}

TEST_F(Window, theMiddleButtonDragsThePlaneFromACardAsWell)
{
    const QPointF from = place("Alpha");
    const QPointF under = program->onCanvas(from);
    drag(from, from + QPointF(70, -40), "middle");
    expectNear(program->onCanvas(from + QPointF(70, -40)), under);
    EXPECT_EQ(program->selection(), QStringList());
}

TEST_F(Window, spaceDragsThePlane)
{
    const QPointF from = place("b.txt");
    const QPointF under = program->onCanvas(from);
    program->tell("key", {{"key", "Space"}, {"type", "press"}});
    drag(from, from + QPointF(-30, 90));
    expectNear(program->onCanvas(from + QPointF(-30, 90)), under);
    EXPECT_EQ(program->selection(), QStringList());
    program->tell("key", {{"key", "Space"}, {"type", "release"}});
    const QPointF before = middle();
    drag(QPointF(500, 780), QPointF(520, 790));
    expectNear(middle(), before);
}

TEST_F(Window, moreThanACameraCanShowIsHeldToWhatItCan)
{
    program->tell("camera", {{"zoom", 1e300}});
    EXPECT_EQ(zoom(), 2.5);
    program->tell("camera", {{"zoom", -1}});
    EXPECT_EQ(zoom(), 0.2);
    program->tell("camera", {{"x", 1e308}, {"y", -1e308}, {"zoom", 1}});
    program->wheel(QPointF(500, 400), QPoint(0, 1));
    program->key("Ctrl+0");
    program->settle();
    EXPECT_TRUE(program->isRunning());
}

} // namespace
