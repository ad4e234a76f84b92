#include "interface/trash/TrashView.h"

#include "support/Printing.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

const QDateTime today(QDate(2026, 3, 10), QTime(14, 30), QTimeZone("Europe/Berlin"));

Node trashed(const QString& id, const QDateTime& at)
{
    Node node;
    node.id = id;
    node.title = id;
    node.position = "a0";
    node.deletedAt = static_cast<double>(at.toMSecsSinceEpoch()) / 1000;
    return node;
}

std::vector<TrashRow> manyRows(int count)
{
    std::vector<TrashRow> rows;
    for (int i = 0; i < count; ++i) {
        TrashRow row;
        row.id = QString::number(i);
        row.title = "Row " + row.id;
        rows.push_back(row);
    }
    return rows;
}

void press(TrashView& view, int key, Qt::KeyboardModifiers modifiers = {})
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(&view, &event);
}

} // namespace

TEST(TrashRows, tellKindFolderDayAndWhatIsLeft)
{
    NodeTree tree;
    Node folder = trashed("Old quotes", today.addDays(-3));
    folder.kind = NodeKind::Folder;
    Node inside = trashed("inside", today);
    inside.parentID = folder.id;
    Node alive = trashed("alive", today);
    alive.deletedAt.reset();
    alive.kind = NodeKind::Folder;
    Node picture = trashed("Harbour.jpg", QDateTime(today.date(), QTime(0, 0), today.timeZone()));
    picture.mime = "image/jpeg";
    picture.byteSize = 3'100'000;
    picture.parentID = "alive";
    Node link =
        trashed("Site", QDateTime(today.date().addDays(-1), QTime(23, 59), today.timeZone()));
    link.kind = NodeKind::Link;
    link.url = "https://www.hirehall.example/x";
    const Node old = trashed("old", today.addDays(-25).addSecs(-60));
    const Node over = trashed("over", today.addDays(-40));
    for (const Node& node : {folder, inside, alive, picture, link, old, over})
        tree.put(node, {});

    const auto rows = trashRows(tree, today);
    ASSERT_EQ(rows.size(), 5u) << "what lies in a trashed folder goes with it";
    EXPECT_EQ(rows[0].id, "Harbour.jpg");
    EXPECT_EQ(rows[0].about, QString::fromUtf8("Picture · 3.1 MB"));
    EXPECT_EQ(rows[0].wasIn, "alive");
    EXPECT_EQ(rows[0].movedAt, "Today, 00:00");
    EXPECT_EQ(rows[0].daysLeft, 30);
    EXPECT_EQ(rows[1].movedAt, "Yesterday, 23:59") << "by days, not by hours";
    EXPECT_EQ(rows[1].about, QString::fromUtf8("Website · hirehall.example"));
    EXPECT_EQ(rows[2].movedAt, "Sat 7 Mar");
    EXPECT_EQ(rows[2].about, QString::fromUtf8("Folder · Empty"));
    EXPECT_EQ(rows[2].wasIn, "Home");
    EXPECT_EQ(rows[3].daysLeft, 5);
    EXPECT_EQ(rows[4].daysLeft, 0);
}

TEST(TrashView, selectsByKeysAndAsksForWhatTheySay)
{
    TrashView view(nullptr);
    view.resize(1200, 800);
    view.setRows(manyRows(10'000));
    view.show();
    QSignalSpy wanted(&view, &TrashView::deleteWanted), closed(&view, &TrashView::closeWanted);
    press(view, Qt::Key_Delete);
    EXPECT_EQ(wanted.size(), 0) << "nothing is selected";
    press(view, Qt::Key_End);
    EXPECT_EQ(view.selected(), std::vector<QString>{"9999"});
    EXPECT_FALSE(view.rowPlace("9999").isEmpty()) << "it has come into view";
    EXPECT_TRUE(view.rowPlace("0").isEmpty());
    press(view, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.selected(), (std::vector<QString>{"9998", "9999"}));
    press(view, Qt::Key_Delete);
    ASSERT_EQ(wanted.size(), 1);
    view.setRows(manyRows(9'999));
    EXPECT_EQ(view.selected(), std::vector<QString>{"9998"})
        << "what is gone isn't selected any more";
    press(view, Qt::Key_Escape);
    EXPECT_TRUE(view.selected().empty());
    EXPECT_EQ(closed.size(), 0);
    press(view, Qt::Key_Escape);
    EXPECT_EQ(closed.size(), 1);
}
