// An opened workbook over the window: its head row, the picked cell, the sheet, and the names of
// all sheets. Or the sentence that says why there is none to see.
#pragma once

#include "interface/sheet/SheetView.h"
#include "interface/widgets/OpenedFrame.h"

namespace corvelle {

class CellBar;
class SheetTabs;

class WorkbookScreen : public OpenedFrame
{
    Q_OBJECT

public:
    explicit WorkbookScreen(QWidget* parent);

    SheetView& view() { return *m_view; }
    const SheetView& view() const { return *m_view; }
    const CellBar& cellBar() const { return *m_bar; }

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

    bool canFind() const override;
    // What was found: the cells of the sheet that is shown, and which of how many in all sheets the
    // picked one is. `current` counts from 0; -1: none.
    void showFound(std::vector<CellPlace> here, int current, int count, FindBar::Search search);

signals:
    void sheetWanted(int number);
    // The words to be found in all sheets; empty: no more.
    void findWanted(const QString& words);
    void foundWanted(int step);

protected:
    void layOut() override;
    QWidget& content() override { return *m_view; }
    void showParts(bool shows) override;
    bool closeInside() override;
    void find(const QString& words) override { emit findWanted(words); }
    void goToFound(int step) override { emit foundWanted(step); }
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void showPick();
    void showText();
    void turn(int step);
    QRect body() const; // between the head row and the names of the sheets
    void paintNote(QPainter& painter) const;
    void paintFoot(QPainter& painter) const;

    QString m_note, m_noteDetail, m_notice;
    int m_sheetCount = 0;
    SheetView* m_view;
    CellBar* m_bar;
    SheetTabs* m_tabs;
    BarButton* m_search;
};

} // namespace corvelle
