// The names of a workbook's sheets, at the lower edge.
#pragma once

#include <QTabBar>

namespace corvelle {

class SheetTabs : public QTabBar
{
    Q_OBJECT

public:
    static constexpr int barHeight = 40;

    explicit SheetTabs(QWidget* parent);

    // Tells nobody.
    void setSheets(const QStringList& names, int current);

protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override { return tabSizeHint(index); }
    void paintEvent(QPaintEvent* event) override;
};

} // namespace corvelle
