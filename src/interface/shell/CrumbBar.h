// The bar at the top left: back, forward, home, and the folders down to the open one.
#pragma once

#include "canvas/CanvasModel.h"
#include "interface/widgets/GlassPanel.h"

#include <optional>
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

    // A place over the canvas, such as the Trash; empty: the folders again.
    void setOverlay(const QString& name);
    // An item that is open over its folder, behind the folders; empty: none. The letters of its
    // kind stand before its title, where nothing else of it shows what it is.
    void setOpened(const QString& title, const QString& badge = {});
    // The letters that stand there; empty: none.
    QString badge() const;

    // The folder that a button under the point (in this bar) stands for, with its name; while it is
    // asked that button shows itself as the target. None: no more.
    struct Target
    {
        QString folder, name;
    };
    std::optional<Target> targetAt(std::optional<QPoint> at);

signals:
    void resized();
    void overlayLeft();

private:
    void rebuild();
    void addCrumb(const QString& id, const QString& title, bool isHere);
    void addChild(QWidget* child);
    void addEllipsis(const QString& target, const QString& name);
    void goBack();

    CanvasModel& m_model;
    QString m_overlay, m_opened, m_openedBadge;
    BarButton* m_back;
    BarButton* m_forward;
    QHBoxLayout* m_row;
    std::vector<QWidget*> m_crumbs; // home, and all behind it
    int m_mostWidth = 800;
};

} // namespace corvelle
