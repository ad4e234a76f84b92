// The bar at the bottom, from which new cards come: by a press in the middle of what is in view, or
// dragged out to where they shall lie.
#pragma once

#include "base/NodeKind.h"
#include "interface/widgets/GlassPanel.h"

#include <optional>

namespace corvelle {

class Dock : public GlassPanel
{
    Q_OBJECT

public:
    explicit Dock(QWidget* parent);

    // The kind that is being dragged out of the dock.
    std::optional<NodeKind> dragged() const { return m_dragged; }
    void cancelDrag();

signals:
    void wanted(corvelle::NodeKind kind);
    // In global points. Over the dock itself a drag has no place yet.
    void dragMoved(corvelle::NodeKind kind, QPointF global);
    void dropped(corvelle::NodeKind kind, QPointF global);
    void dragCancelled();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addItem(NodeKind kind, const QString& name);

    std::optional<NodeKind> m_dragged;
    std::optional<QPointF> m_pressedAt; // global
};

} // namespace corvelle
