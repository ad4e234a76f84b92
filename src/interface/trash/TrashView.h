// The Trash over the canvas: a list of what lies in it, and what can be done with it.
//
// It paints only the rows in sight. It asks and does nothing itself: signals say what is wanted.
#pragma once

#include "interface/trash/TrashModel.h"

#include <QSet>
#include <QWidget>

namespace corvelle {

class GlassPanel;
class PushButton;

class TrashView : public QWidget
{
    Q_OBJECT

public:
    explicit TrashView(QWidget* parent);

    void setRows(std::vector<TrashRow> rows);
    const std::vector<TrashRow>& rows() const { return m_rows; }
    // In the order of the rows.
    std::vector<QString> selected() const;
    void select(const QSet<QString>& ids);

    // Where a row is, in the view; null when it isn't in sight.
    QRect rowPlace(const QString& id) const;

signals:
    void putBackWanted(const std::vector<QString>& ids);
    void deleteWanted(const std::vector<QString>& ids);
    void emptyWanted();
    void closeWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QRect column() const; // the list's left and width, from its title down
    QRect list() const;   // the surface of the rows
    int rowAt(QPoint at) const;
    QRect rowRect(int row) const;
    void paintHead(QPainter& painter) const;
    void paintRow(QPainter& painter, int row) const;
    void scrollTo(int pixels);
    void goTo(int row, Qt::KeyboardModifiers modifiers);
    void click(int row, Qt::KeyboardModifiers modifiers);
    void selectionChanged();
    void layOut();

    std::vector<TrashRow> m_rows;
    QSet<QString> m_selection;
    int m_current = -1; // the row that the keyboard stands on
    int m_anchor = -1;  // where a range began
    int m_hovered = -1;
    int m_scroll = 0; // pixels
    PushButton* m_empty;
    GlassPanel* m_bar;
    QWidget* m_count;
};

} // namespace corvelle
