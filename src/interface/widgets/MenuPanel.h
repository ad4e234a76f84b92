// A menu over its window: rows with a sign, words and a key, lines between groups, and one row of
// discs for the colours of folders.
//
// It fills its host without showing, so that a press beside the menu closes it and does nothing
// else. It has the keyboard while it is open and gives it back; it deletes itself when it closes.
#pragma once

#include "base/NodeKind.h"
#include "interface/theme/Icons.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <optional>
#include <vector>

namespace corvelle {

class GlassPanel;

struct MenuRow
{
    enum class Kind : unsigned char { Item, Line, Colors };

    QString id; // what chosen() tells
    std::optional<Icon> icon;
    QString words;
    QString key; // as the desktop writes it
    bool danger = false;
    bool enabled = true;
    Kind kind = Kind::Item;
    std::optional<NodeColor> color; // of a Colors row: the one that is set
};

MenuRow menuLine();

class MenuPanel : public QWidget
{
    Q_OBJECT

public:
    // At a point of the host, kept inside it.
    MenuPanel(std::vector<MenuRow> rows, QPoint at, QWidget& host);

    void closeMenu();

    // The rows for scripts and tests: their ids, and where each is in the host.
    std::vector<std::pair<QString, QRect>> places() const;
    const std::vector<MenuRow>& rows() const { return m_rows; }

signals:
    // The row's id; "color:" and the word for a disc. Once; the menu is on its way out then.
    void chosen(const QString& id);
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Item;

    void build();
    void go(int step);
    void goTo(QWidget* item);
    bool goToLetter(const QString& letter);
    void choose(const QString& id);

    const std::vector<MenuRow> m_rows;
    QWidget& m_host;
    GlassPanel* m_panel = nullptr;
    std::vector<Item*> m_items; // those that can be chosen, in order
    QPointer<QWidget> m_focusBefore;
    bool m_isClosing = false;
};

} // namespace corvelle
