// The line above a sheet: which cell is picked, and its text. A text that is longer than the line
// opens over the sheet, which stays where it is.
#pragma once

#include <QWidget>

#include <vector>

namespace corvelle {

class BarButton;
class ScrollThumb;

class CellBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int rowHeight = 40;

    explicit CellBar(QWidget* parent);

    // Another text closes the one that is open.
    void setCell(const QString& place, const QString& text);
    // How much of the row's right end something else takes.
    void setTaken(int pixels);

    // Whether the line can't hold the whole text.
    bool hasMore() const;
    bool isOpen() const { return m_isOpen; }
    // Nothing happens where the line holds the whole text.
    void setOpen(bool opens);

    // As high as it wants to be in this width, up to a limit.
    int heightFor(int pixels, int most) const;
    int scrollPlace() const { return m_scroll; }
    int scrollRange() const;

signals:
    void openChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void layOut();
    std::vector<QString> linesIn(int pixels) const;
    double textWidth(int pixels) const;
    void scrollTo(int place);
    Qt::Alignment side() const;
    void paintLine(QPainter& painter) const;
    void paintLines(QPainter& painter) const;
    ScrollThumb thumb() const;

    QString m_place, m_text;
    int m_taken = 0;
    bool m_isOpen = false;
    std::vector<QString> m_lines; // while it is open
    int m_scroll = 0;             // how far the lines are moved up
    BarButton* m_more;
};

} // namespace corvelle
