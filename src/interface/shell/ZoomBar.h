// The zoom at the bottom right: out, percent, in.
#pragma once

#include "interface/widgets/GlassPanel.h"

namespace corvelle {

class ZoomBar : public GlassPanel
{
    Q_OBJECT

public:
    explicit ZoomBar(QWidget* parent);

    void setPercent(int percent);

signals:
    void zoomInWanted();
    void zoomOutWanted();

private:
    class Label;
    Label* m_label;
};

} // namespace corvelle
