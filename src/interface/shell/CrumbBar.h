// The bar at the top left: back, forward, home, and the folders down to the open one.
#pragma once

#include "canvas/CanvasModel.h"
#include "interface/widgets/GlassPanel.h"

#include <vector>

class QHBoxLayout;

namespace corvelle {

class BarButton;

class CrumbBar : public GlassPanel
{
    Q_OBJECT

public:
    CrumbBar(CanvasModel& model, QWidget* parent);

    // Fits the crumbs into this width: the middle ones give way first.
    void setMostWidth(int pixels);

signals:
    void resized();

private:
    void rebuild();
    void addCrumb(const QString& id, const QString& title, bool isHere);
    void addEllipsis(const QString& target, const QString& name);

    CanvasModel& m_model;
    BarButton* m_back;
    BarButton* m_forward;
    QHBoxLayout* m_row;
    std::vector<QWidget*> m_crumbs; // home, and all behind it
    int m_mostWidth = 800;
};

} // namespace corvelle
