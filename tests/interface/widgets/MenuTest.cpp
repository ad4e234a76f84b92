#include "interface/widgets/IconPicker.h"
#include "interface/widgets/MenuPanel.h"
#include "interface/widgets/TitleField.h"

#include "support/EventLoop.h"
#include "support/Printing.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

void type(QWidget* widget, int key, const QString& text = {})
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
}

MenuRow item(const QString& id, bool enabled = true)
{
    MenuRow row;
    row.id = id;
    row.words = id;
    row.enabled = enabled;
    return row;
}

class MenuTest : public testing::Test
{
protected:
    MenuTest()
    {
        window.resize(800, 600);
        window.show();
        QApplication::setActiveWindow(&window);
    }
    QPointer<MenuPanel> menu(QPoint at = {100, 100})
    {
        MenuRow colors;
        colors.kind = MenuRow::Kind::Colors;
        colors.color = NodeColor::Red;
        QPointer<MenuPanel> made = new MenuPanel(
            {item("Open"), menuLine(), item("Off", false), colors, item("Trash")}, at, window);
        chosen = std::make_unique<QSignalSpy>(made.data(), &MenuPanel::chosen);
        return made;
    }
    QString answer() const { return chosen->isEmpty() ? QString() : chosen->front()[0].toString(); }

    QWidget window;
    std::unique_ptr<QSignalSpy> chosen;
};

} // namespace

TEST_F(MenuTest, keysGoOverRowsAndDiscsAndPassWhatIsOff)
{
    auto open = menu();
    type(open, Qt::Key_Down);
    type(open, Qt::Key_Down);
    type(open, Qt::Key_Right);
    type(open, Qt::Key_Right);
    type(open, Qt::Key_Return);
    EXPECT_EQ(answer(), "color:" + word(NodeColor::Orange)) << "two to the right of the first disc";
    EXPECT_TRUE(turnUntil([&] { return open.isNull(); }));
    open = menu();
    for (int i = 0; i < 3; ++i)
        type(open, Qt::Key_Down);
    type(open, Qt::Key_Space);
    EXPECT_EQ(answer(), "Trash") << "all discs are one step";
    open = menu();
    type(open, Qt::Key_Up);
    type(open, Qt::Key_Up);
    type(open, Qt::Key_Return);
    EXPECT_EQ(answer(), "color:" + word(NodeColor::Gray));
    open = menu();
    type(open, Qt::Key_T, "t");
    type(open, Qt::Key_Return);
    EXPECT_EQ(answer(), "Trash");
    open = menu();
    type(open, Qt::Key_Escape);
    EXPECT_EQ(chosen->size(), 0);
    EXPECT_TRUE(turnUntil([&] { return open.isNull(); }));
}

TEST_F(MenuTest, staysInsideTheWindow)
{
    for (const QPoint at : {QPoint(795, 595), QPoint(0, 0), QPoint(795, 0), QPoint(0, 595)}) {
        auto open = menu(at);
        for (const auto& [id, place] : open->places())
            EXPECT_TRUE(window.rect().contains(place)) << id.toStdString();
        open->closeMenu();
    }
}

TEST_F(MenuTest, aTitleFieldCommitsOnceAndEscapeKeepsTheOld)
{
    const auto field = [&](const QString& title) {
        QPointer<TitleField> made = new TitleField(title, true, &window);
        made->show();
        made->setFocus();
        return made;
    };
    QPointer<TitleField> open = field("report.pdf");
    EXPECT_EQ(open->selectedText(), "report");
    QSignalSpy committed(open.data(), &TitleField::committed),
        ended(open.data(), &TitleField::ended);
    open->setText("summary.pdf");
    type(open, Qt::Key_Return);
    EXPECT_EQ(committed.size(), 1);
    EXPECT_EQ(ended.size(), 1);
    EXPECT_TRUE(turnUntil([&] { return open.isNull(); }));
    EXPECT_EQ(committed.size(), 1) << "the loss of focus that follows says nothing more";

    open = field("a");
    QSignalSpy again(open.data(), &TitleField::committed);
    open->setText("b");
    type(open, Qt::Key_Escape);
    EXPECT_TRUE(turnUntil([&] { return open.isNull(); }));
    EXPECT_EQ(again.size(), 0);
}

TEST(IconPicker, findsByWordsAndTakesOneEmojiAlone)
{
    EXPECT_FALSE(emojiFor("kit").empty());
    EXPECT_TRUE(emojiFor("no such word").empty());
    EXPECT_GT(emojiFor({}).size(), 80u);
    const QString family = QString::fromUtf8("👨‍👩‍👧");
    EXPECT_EQ(emojiIn(" " + family + "tail"), family);
    EXPECT_TRUE(emojiIn("abc").isNull());
    EXPECT_TRUE(emojiIn(" ").isNull());
}
