// The bar at the top right: what concerns the whole canvas.
#pragma once

#include "interface/widgets/GlassPanel.h"

namespace corvelle {

class ToolBar : public GlassPanel
{
    Q_OBJECT

public:
    explicit ToolBar(QWidget* parent);

signals:
    void trashWanted();
};

} // namespace corvelle
