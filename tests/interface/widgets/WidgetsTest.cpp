#include "interface/widgets/AlertPanel.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/PushButton.h"
#include "interface/widgets/ToastStack.h"

#include "support/Printing.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

void press(QWidget* widget, int key)
{
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
}

class Window : public QWidget
{
public:
    Window()
    {
        resize(800, 600);
        show();
        activateWindow();
        QApplication::setActiveWindow(this); // no window manager does it without a display
    }
};

Alert question()
{
    return {"Delete “Old quotes” for good?", "You can’t undo this.",
        {{"Cancel", Alert::Role::WayOut}, {"Keep a Copy", Alert::Role::Other},
            {"Delete", Alert::Role::LikelyDanger}}};
}

struct Asked
{
    explicit Asked(const Alert& alert = question())
        : panel(new AlertPanel(alert, window))
    {
        QObject::connect(
            panel, &AlertPanel::chosen, &window, [this](int answer) { answers.push_back(answer); });
    }

    PushButton* focused() const { return qobject_cast<PushButton*>(QApplication::focusWidget()); }

    Window window;
    QPointer<AlertPanel> panel;
    std::vector<int> answers;
};

} // namespace

TEST(GlassPanel, itsShadowLetsThePointerThrough)
{
    Window window;
    QWidget below(&window);
    below.setGeometry(window.rect());
    below.show();
    GlassPanel panel(GlassPanel::Fill::Glass, 14, &window);
    panel.setGeometry(100, 100, 200, 44);
    panel.show();
    EXPECT_EQ(window.childAt(200, 120), &panel);
    EXPECT_EQ(window.childAt(200, 150), &below) << "in the shadow";

    const QColor lit = window.grab().toImage().pixelColor(700, 500);
    const QColor shaded = window.grab().toImage().pixelColor(200, 147);
    EXPECT_LT(shaded.lightness(), lit.lightness()) << "there is a shadow";
    panel.hide();
    EXPECT_EQ(window.grab().toImage().pixelColor(200, 147), lit) << "it goes with the panel";
}

TEST(GlassPanel, itsShadowMovesAndRisesWithIt)
{
    Window window;
    auto* first = new GlassPanel(GlassPanel::Fill::Panel, 16, &window);
    first->setGeometry(100, 100, 200, 44);
    first->show();
    first->move(400, 400);
    QWidget cover(&window);
    cover.setGeometry(window.rect());
    cover.setAutoFillBackground(true);
    cover.show();
    const QPoint under(500, 452);
    const QColor covered = window.grab().toImage().pixelColor(under);
    first->raise();
    EXPECT_LT(window.grab().toImage().pixelColor(under).lightness(), covered.lightness());
    delete first;
    EXPECT_EQ(window.grab().toImage().pixelColor(under), covered);
}

TEST(BarButton, worksByKeysAndTellsItsName)
{
    Window window;
    BarButton button(Icon::Cleanup, "Clean up", &window);
    button.show();
    int clicks = 0;
    QObject::connect(&button, &QAbstractButton::clicked, &window, [&clicks] { ++clicks; });
    button.setFocus(Qt::TabFocusReason);
    press(&button, Qt::Key_Return);
    press(&button, Qt::Key_Space);
    EXPECT_EQ(clicks, 2);
    button.setEnabled(false);
    press(&button, Qt::Key_Return);
    EXPECT_EQ(clicks, 2);

    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&button);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Clean up");
    EXPECT_EQ(button.sizeHint(), QSize(32, 32));
}

TEST(BarButton, aFocusedOneHasARingRoundIt)
{
    Window window;
    window.setPalette(toolkitPalette(Scheme::Light));
    BarButton button(Icon::Trash, "Trash", &window);
    button.setGeometry(100, 100, 32, 32);
    button.show();
    const QColor accent = palette(Scheme::Light).accent;
    EXPECT_NE(window.grab().toImage().pixelColor(97, 116), accent);
    button.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(window.grab().toImage().pixelColor(97, 116), accent);
    EXPECT_NE(window.grab().toImage().pixelColor(99, 116), accent) << "a gap";
}

TEST(AlertPanel, returnGivesTheLikelyAnswerAndEscapeTheWayOut)
{
    for (const auto& [key, answer] : {std::pair(Qt::Key_Return, 2), std::pair(Qt::Key_Escape, 0)}) {
        Asked asked;
        ASSERT_NE(asked.focused(), nullptr);
        EXPECT_EQ(asked.focused()->text(), "Delete");
        press(asked.focused(), key);
        EXPECT_EQ(asked.answers, std::vector{answer});
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(asked.panel.isNull());
    }
}

TEST(AlertPanel, tabGoesRoundAmongItsAnswers)
{
    Asked asked;
    QLatin1StringView expected[] = {QLatin1StringView("Cancel"), QLatin1StringView("Keep a Copy"),
        QLatin1StringView("Delete"), QLatin1StringView("Cancel")};
    for (const QLatin1StringView words : expected) {
        press(asked.focused(), Qt::Key_Tab);
        ASSERT_NE(asked.focused(), nullptr);
        EXPECT_EQ(asked.focused()->text(), words);
    }
    press(asked.focused(), Qt::Key_Return);
    EXPECT_EQ(asked.answers, std::vector{0});
}

TEST(AlertPanel, oneAnswerIsBothAndIsGivenOnce)
{
    Asked asked({"Couldn’t open the library", "It is in use.", {{"OK", Alert::Role::Likely}}});
    asked.panel->choose(0);
    asked.panel->choose(0);
    EXPECT_EQ(asked.answers, std::vector{0});
    Asked again({"Couldn’t open the library", {}, {{"OK", Alert::Role::Other}}});
    press(again.panel, Qt::Key_Escape);
    EXPECT_EQ(again.answers, std::vector{0});
}

TEST(AlertPanel, givesTheFocusBack)
{
    Window window;
    BarButton button(Icon::Trash, "Trash", &window);
    button.show();
    button.setFocus();
    auto* panel = new AlertPanel(question(), window);
    EXPECT_NE(QApplication::focusWidget(), &button);
    panel->choose(0);
    EXPECT_EQ(QApplication::focusWidget(), &button);
}

TEST(AlertPanel, answersStayInsideThePanelHoweverLongTheyAre)
{
    const QString lengthy = QStringLiteral("Move all of it to another disk");
    const std::vector<std::vector<Alert::Answer>> rows = {
        {{"Cancel", Alert::Role::WayOut}, {"OK", Alert::Role::Likely}},
        {{"Back to Corvelle Library", Alert::Role::WayOut}, {"Try Again", Alert::Role::Other},
            {"Choose Library…", Alert::Role::Likely}},
        {{lengthy, Alert::Role::WayOut}, {lengthy, Alert::Role::Other},
            {lengthy, Alert::Role::Likely}},
    };
    for (const auto& answers : rows) {
        Window window;
        auto* alert = new AlertPanel({"Title", "Text", answers}, window);
        const auto buttons = alert->findChildren<PushButton*>();
        ASSERT_EQ(buttons.size(), static_cast<qsizetype>(answers.size()));
        for (const PushButton* button : buttons) {
            EXPECT_TRUE(button->parentWidget()
                            ->rect()
                            .adjusted(20, 20, -20, -16)
                            .contains(button->geometry()));
            for (const PushButton* other : buttons)
                EXPECT_TRUE(other == button || !other->geometry().intersects(button->geometry()));
        }
    }
}

TEST(ToastStack, runsTheActionOnceAndLetsTheToastGo)
{
    Window window;
    ToastStack stack(window);
    int undone = 0;
    stack.show({"moved", Icon::CheckCircle, "Moved 2 items", {}, "Undo"}, [&undone] { ++undone; });
    stack.show(
        {"moved", Icon::CheckCircle, "Moved 3 items", {}, "Undo"}, [&undone] { undone += 10; });
    ASSERT_EQ(stack.model().toasts().size(), 1U);

    QAbstractButton* action = nullptr;
    for (QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
        if (button->parentWidget()->accessibleName() == "Moved 3 items")
            action = button;
    }
    ASSERT_NE(action, nullptr);
    action->click();
    EXPECT_EQ(undone, 10);
    EXPECT_TRUE(stack.model().toasts().empty());
}

TEST(Look, aWindowsPaletteTellsTheScheme)
{
    for (const Scheme scheme : {Scheme::Light, Scheme::Dark}) {
        QWidget window;
        window.setPalette(toolkitPalette(scheme));
        QWidget child(&window);
        EXPECT_EQ(schemeOf(child), scheme);
    }
}
