// An opened workbook over the window: its head row, the picked cell, the sheet, and the names of
// all sheets. Or the sentence that says why there is none to see.
#pragma once

#include "interface/sheet/SheetView.h"
#include "interface/widgets/Arrival.h"
#include "interface/widgets/FindBar.h"

namespace corvelle {

class BarButton;
class CellBar;
class SheetTabs;

class WorkbookScreen : public QWidget
{
    Q_OBJECT

public:
    static constexpr int headHeight = 48;

    explicit WorkbookScreen(QWidget* parent);
    ~WorkbookScreen() override;

    SheetView& view() { return *m_view; }
    const SheetView& view() const { return *m_view; }
    const CellBar& cellBar() const { return *m_bar; }
    const FindBar& findBar() const { return *m_find; }

    void setName(const QString& name);
    // The names of the sheets that can be shown, and how many there are in all.
    void setSheets(const QStringList& names, int current, int count);
    // The rows of the current sheet, begun anew or in their newest state.
    enum class Begin : unsigned char { Anew, Where };
    void showRows(SheetView::Rows rows, Begin begin);
    // In the place of a sheet. The detail may be empty.
    void showNote(const QString& title, const QString& detail = {});
    // What the note says, or that the sheet is cut; empty when neither.
    const QString& note() const { return m_note; }
    const QString& notice() const { return m_notice; }
    // How much there is, in words, at the lower edge.
    QString countWords() const;

    void comeFrom(const QRectF& card);
    void takeFocus();
    bool canFind() const;
    void openFind();
    void closeFind();
    bool isFinding() const { return m_isFinding; }
    void setFindWords(const QString& words);
    // What was found: the cells of the sheet that is shown, and which of how many in all sheets the
    // picked one is. `current` counts from 0; -1: none.
    void showFound(std::vector<CellPlace> here, int current, int count, FindBar::Search search);
    int headEnd() const;      // where the buttons of the head row begin
    QRect moreButton() const; // in this widget
    QRect appButton() const;  // empty when it isn't there

signals:
    void closeWanted();
    void moreWanted();
    void appWanted();
    void sheetWanted(int number);
    // The words to be found in all sheets; empty: no more.
    void findWanted(const QString& words);
    void foundWanted(int step);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void layOut();
    void stand();
    void showParts();
    void showPick();
    void showText();
    void turn(int step);
    void escape();
    QRect body() const; // between the head row and the names of the sheets
    void paintHead(QPainter& painter) const;
    void paintNote(QPainter& painter) const;
    void paintFoot(QPainter& painter) const;

    QString m_name, m_note, m_noteDetail, m_notice;
    int m_sheetCount = 0;
    SheetView* m_view;
    CellBar* m_bar;
    SheetTabs* m_tabs;
    BarButton* m_search;
    BarButton* m_app;
    BarButton* m_more;
    BarButton* m_close;
    FindBar* m_find;
    bool m_isFinding = false;
    Arrival m_arrival;
};

} // namespace corvelle
