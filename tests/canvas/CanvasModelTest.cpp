#include "canvas/CanvasModel.h"

#include "canvas/Gestures.h"
#include "library/Position.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

class CanvasModelTest : public testing::Test
{
protected:
    CanvasModelTest()
        : m_library({m_folder.path(), true}, OpenMode::Application)
        , m_model(m_library)
    {
        EXPECT_TRUE(m_library.open(openLibrary({m_folder.path(), true}, OpenMode::Application)));
        m_model.setViewport(QSizeF(1440, 900));
    }

    Node node(const QString& id, double x, double y, const QString& parent = {},
        NodeKind kind = NodeKind::Folder)
    {
        Node result;
        result.id = id;
        result.parentID = parent;
        result.kind = kind;
        result.title = id;
        result.x = x;
        result.y = y;
        result.position = m_last[parent] = positionAfter(m_last[parent]);
        return result;
    }

    void given(std::vector<Node> nodes)
    {
        std::vector<std::pair<Node, SeenFile>> taken;
        for (Node& value : nodes)
            taken.emplace_back(std::move(value), SeenFile{});
        m_library.took(std::move(taken));
    }

    QStringList cards() const
    {
        QStringList keys;
        for (const PlacedCard& card : m_model.cards())
            keys.append(card.key);
        return keys;
    }

    TempFolder m_folder;
    Library m_library;
    CanvasModel m_model;
    QHash<QString, QString> m_last;
};

} // namespace

TEST_F(CanvasModelTest, cardsComeMoveAndGoWithTheTree)
{
    given({node("a", 0, 0), node("b", 300, 0)});
    EXPECT_EQ(cards(), (QStringList{"a", "b"}));
    EXPECT_EQ(
        m_model.camera(), fitted(std::vector{m_model.card("a")->rect(), m_model.card("b")->rect()},
                              m_model.viewport()))
        << "a canvas that was empty shows what came";

    Node moved = *m_library.node("a");
    moved.x = 5000;
    given({node("c", 600, 0), moved});
    EXPECT_EQ(cards(), (QStringList{"a", "b", "c"}));
    EXPECT_EQ(m_model.card("a")->centre, QPointF(5000, 0));
    EXPECT_TRUE(m_model.cardsMeeting(QRectF(-50, -50, 100, 100)).empty())
        << "it is found at its new place only";

    m_model.select({"a", "b"});
    Node trashed = *m_library.node("a");
    trashed.deletedAt = 1;
    given({trashed});
    EXPECT_EQ(cards(), (QStringList{"b", "c"}));
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"b"}));
}

TEST_F(CanvasModelTest, leavesAFolderThatIsGone)
{
    given({node("a", 0, 0), node("inside", 0, 0, "a", NodeKind::File)});
    m_model.open("a");
    EXPECT_EQ(cards(), (QStringList{"inside"}));
    Node trashed = *m_library.node("a");
    trashed.deletedAt = 1;
    given({trashed});
    EXPECT_EQ(m_model.folderID(), "");
    m_model.open("a");
    EXPECT_EQ(m_model.folderID(), "") << "what lies in the Trash doesn't open";
    m_model.open("inside");
    m_model.open("unknown");
    EXPECT_EQ(m_model.folderID(), "");
}

TEST_F(CanvasModelTest, whatIsOpenLiesOverItsOwnFolder)
{
    given({node("a", 0, 0), node("b", 300, 0), node("page", 0, 0, "a", NodeKind::Page),
        node("other", 0, 300)});
    m_model.openOver("page");
    EXPECT_EQ(m_model.folderID(), "a");
    Node moved = *m_library.node("page");
    moved.parentID = "b";
    given({moved});
    EXPECT_EQ(m_model.openedID(), "page");
    EXPECT_EQ(m_model.folderID(), "b") << "it was moved";
    EXPECT_EQ(cards(), QStringList{"page"});
    m_model.closeOver();
    EXPECT_EQ(m_model.folderID(), "b");
    m_model.goBack();
    EXPECT_EQ(m_model.openedID(), "page");
}

TEST_F(CanvasModelTest, remembersTheCameraAndTheWayBack)
{
    given({node("a", 0, 0), node("b", 0, 0, "a")});
    m_model.setCamera({12, 34, 0.5});
    m_model.open("a");
    m_model.open("b");
    m_model.goUp();
    EXPECT_EQ(m_model.focus(), "b") << "Return goes back in";
    m_model.goHome();
    EXPECT_EQ(m_model.camera(), (Camera{12, 34, 0.5}));
    m_model.goBack();
    EXPECT_EQ(m_model.folderID(), "a");
    EXPECT_EQ(m_model.crumbs(), (std::vector<QString>{"a"}));
}

TEST_F(CanvasModelTest, aSelectedCardLiesOnTopAndLaterOnesOverEarlier)
{
    given({node("a", 0, 0), node("b", 20, 0)});
    m_model.setCamera({0, 0, 1});
    const QPointF middle(720, 450);
    EXPECT_EQ(m_model.cardAt(middle), "b");
    m_model.select({"a"});
    EXPECT_EQ(m_model.cardAt(middle), "a");
    EXPECT_EQ(m_model.cardAt(QPointF(0, 0)), "");
}

TEST_F(CanvasModelTest, arrowsGoToTheNearestCardThatWay)
{
    given({node("middle", 0, 0), node("right", 300, 10), node("far right", 600, 0),
        node("below", 0, 300), node("aslant", 200, 280)});
    m_model.select({"middle"});
    m_model.moveSelection(Direction::Right, false);
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"right"}));
    m_model.moveSelection(Direction::Left, false);
    m_model.moveSelection(Direction::Down, true);
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"middle", "below"}));
    m_model.moveSelection(Direction::Up, false);
    m_model.moveSelection(Direction::Up, false);
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"middle"})) << "nothing lies above";
}

TEST_F(CanvasModelTest, facesFollowTheZoomInStepsAndRestAtItself)
{
    m_model.setCamera({0, 0, 1.0});
    m_model.moveCamera({0, 0, 1.05});
    EXPECT_FALSE(m_model.isAtRest());
    EXPECT_EQ(m_model.drawnCardZoom(), 1.0);
    m_model.moveCamera({0, 0, 1.2});
    EXPECT_EQ(m_model.drawnCardZoom(), 1.25);
    m_model.moveCamera({0, 0, 1.19});
    m_model.rest();
    EXPECT_TRUE(m_model.isAtRest());
    m_model.moveCamera({std::nan(""), 0, std::nan("")});
    EXPECT_EQ(m_model.camera(), (Camera{0, 0, 1.0})) << "a camera is always a place";
}

TEST_F(CanvasModelTest, aFolderTellsItsCountAndItsFirstThree)
{
    given({node("a", 0, 0)});
    QSet<QString> stale;
    QObject::connect(&m_model, &CanvasModel::facesChanged, &m_model,
        [&](const QSet<QString>& keys) { stale += keys; });
    given({node("1", 0, 0, "a", NodeKind::File), node("2", 0, 0, "a"), node("3", 0, 0, "a"),
        node("4", 0, 0, "a")});
    EXPECT_EQ(stale, (QSet<QString>{"a"})) << "its face shows them";
    EXPECT_EQ(m_model.childCount("a"), 4);
    ASSERT_EQ(m_model.peeks("a").size(), 3u);
    EXPECT_EQ(m_model.peeks("a")[0].kind, NodeKind::File);
}

TEST_F(CanvasModelTest, aMarqueeTogglesAgainstWhatWasSelected)
{
    given({node("a", -300, 0), node("b", 0, 0), node("c", 300, 0)});
    m_model.setCamera({0, 0, 1});
    m_model.select({"a"});
    MarqueeGesture adding(m_model, QPointF(10, 440), MarqueeGesture::Base::Selection);
    adding.move(QPointF(11, 441));
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"a"})) << "too small to mean anything";
    adding.move(QPointF(800, 460));
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"b"}));
    adding.cancel();
    EXPECT_EQ(m_model.selection(), (QSet<QString>{"a"}));
}
