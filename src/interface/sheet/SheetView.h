// One sheet of a workbook: its cells in a grid below their letters and beside their numbers,
// scrolled, picked, copied and searched.
//
// Only cells in sight are drawn. A place in the view is in logical pixels.
#pragma once

#include "interface/sheet/SheetLayout.h"
#include "interface/sheet/SheetPick.h"
#include "interface/widgets/ScrollThumb.h"

#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

namespace corvelle {

struct Palette;

class SheetView : public QWidget
{
    Q_OBJECT

public:
    using Rows = std::shared_ptr<const SheetRows>;

    explicit SheetView(QWidget* parent);

    // Begins at the first cell. `refresh` shows another state of the same sheet and stays where it
    // is.
    void open(const QString& name, Rows rows);
    void refresh(Rows rows);
    const SheetRows& sheet() const { return *m_rows; }
    const QString& name() const { return m_name; }

    // ---- picking ----
    const SheetPick& pick() const { return m_pick; }
    // Brings it into sight as well.
    void pickCell(CellPlace place, SheetPick::Reach reach = SheetPick::Reach::Alone);
    void pickAll();
    void copy() const;
    // Where the cell is in the view, in sight or not.
    QRect rectOf(CellPlace place) const;
    std::optional<CellPlace> placeAt(QPoint at) const;
    // The last cell that can be picked: of those with contents, and of empty ones that fill the
    // view.
    CellPlace last() const;

    // ---- finding ----
    // Marks these cells of the sheet, which stand by rows.
    void setFound(std::vector<CellPlace> found);
    // The row at the upper edge.
    int topRow() const { return SheetLayout::rowAt(m_scroll.y()); }

    // ---- scrolling ----
    QPoint scrollPlace() const { return m_scroll; }
    QPoint scrollRange() const;
    void scrollTo(QPoint place);

signals:
    void pickChanged();
    void closeWanted();
    // All that stands in the picked cell.
    void wholeTextWanted();
    void menuWanted(QPoint at);
    // To the next sheet, or the one before.
    void sheetWanted(int step);
    // To the next cell that was found, or the one before.
    void foundWanted(int step);
    // What open() gave is painted for the first time.
    void painted();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QRect cells() const; // the area below the letters and beside the numbers
    CellRange placesIn(const QRect& part) const;
    void bringIntoSight(CellPlace place);
    void setPick(const SheetPick& pick);
    void setThumbs();
    void updateThumbs();
    void takeRows(Rows rows);
    bool moveByKey(const QKeyEvent& event);
    void pickHeading(QPoint at, SheetPick::Reach reach);
    void dragTo(QPoint at);
    void setHovered(std::optional<CellPlace> place);
    void tellPick();

    void paintPart(QPainter& painter, const QRect& part);
    void paintGrid(QPainter& painter, const CellRange& seen) const;
    void paintTexts(QPainter& painter, const CellRange& seen) const;
    int firstReaching(int row, int column) const;
    bool isFound(CellPlace place) const;
    void paintPick(QPainter& painter) const;
    void paintLetters(QPainter& painter, const CellRange& seen) const;
    void paintNumbers(QPainter& painter, const CellRange& seen) const;
    void paintThumbs(QPainter& painter) const;
    QRectF roomFor(CellPlace place, const SheetCell& cell) const;
    const Palette& colors() const;

    QString m_name;
    Rows m_rows;
    SheetLayout m_layout;
    QPoint m_scroll;     // how far the first cell is above and left of the area
    QPoint m_lastScroll; // when the thumbs were told to be painted
    SheetPick m_pick;
    bool m_isUnpainted = false; // since open()

    std::vector<CellPlace> m_found; // by rows

    enum class Drag : unsigned char {
        None,
        Cells,
        Columns,
        Rows,
        Down,
        Across
    } m_drag = Drag::None;
    QPoint m_dragAt{-1, -1}; // the pointer
    QPoint m_pressedAt;
    bool m_isOnTrack = false;
    ScrollThumb m_down{Qt::Vertical}, m_across{Qt::Horizontal};
    QTimer m_thumbsLinger; // after scrolling
    QTimer m_autoScroll;
};

} // namespace corvelle
