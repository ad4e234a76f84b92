// A small panel to choose an item's icon, an emoji: from a grid, by a search in English, or typed.
//
// Escape or a press beside it closes it without a choice. It deletes itself.
#pragma once

#include <QPointer>
#include <QWidget>

#include <vector>

class QLineEdit;

namespace corvelle {

class GlassPanel;

// The first character of a text, as a person counts them, when it is an emoji; null otherwise.
QString emojiIn(const QString& text);

// The emoji whose keywords have a word that begins with the query; all for an empty one.
std::vector<QString> emojiFor(const QString& query);

class IconPicker : public QWidget
{
    Q_OBJECT

public:
    IconPicker(const QString& current, QPoint at, QWidget& host);

signals:
    // Null for no icon.
    void picked(const QString& icon);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Grid;

    void pick(const QString& icon);
    void closePicker();

    QWidget& m_host;
    GlassPanel* m_panel;
    QLineEdit* m_search;
    Grid* m_grid;
    QPointer<QWidget> m_focusBefore;
};

} // namespace corvelle
