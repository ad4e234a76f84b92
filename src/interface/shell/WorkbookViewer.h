// Shows workbooks.
#pragma once

#include "canvas/OpenWorkbook.h"
#include "interface/sheet/WorkbookScreen.h"
#include "interface/shell/OpenedViewer.h"

#include <QTimer>

namespace corvelle {

class WorkbookViewer : public OpenedViewer
{
    Q_OBJECT

public:
    WorkbookViewer(Library& library, QWidget* window);

    WorkbookScreen& surface() override { return *m_screen; }
    bool holdsCrumbs() const override { return true; }
    void open(const Node& node) override;
    void close() override;
    void present() override;
    void setNode(const Node& node) override { m_screen->setName(node.title); }
    bool isReading() const override { return m_workbook->isReading(); }
    bool isSettled() const override { return !isReading() && !m_workbook->isSearching(); }
    QJsonObject told() const override;

private:
    void took();
    void showState();
    void turnTo(int sheet);
    void find(const QString& words);
    void goToFound(int step);
    void showFound();
    void showHit();

    OpenWorkbook* m_workbook;
    WorkbookScreen* m_screen;
    bool m_isPresented = false;
    int m_shownSheet = -1; // whose rows are on the screen
    BookPlace m_findFrom;  // where the person was before finding moved them
    bool m_goesToHit = false;
    QTimer m_patience; // before it is told that something is being read
};

} // namespace corvelle
