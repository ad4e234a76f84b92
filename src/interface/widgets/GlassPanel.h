// A floating piece of chrome: a rounded surface with a bright line inside its upper edge, a dark
// one round it, and a shadow.
//
// The panel is exactly as large as its surface. Line and shadow belong to a companion below it, in
// the same parent, which takes no events: pointer, wheel and drops reach what lies there. Children
// lay themselves out in the panel as in any widget.
#pragma once

#include "interface/theme/Theme.h"

#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>

namespace corvelle {

class PanelShadow;

class GlassPanel : public QWidget
{
    Q_OBJECT

public:
    enum class Fill : unsigned char {
        Glass,   // bars, dock, zoom: all but opaque
        Panel,   // menus, palette, alerts
        Inverse, // toasts
        Hint,
    };

    GlassPanel(Fill fill, double radius, QWidget* parent);
    ~GlassPanel() override;

    // Without surface and shadow: only what is on it shows, on a surface of others.
    void setBare(bool bare);
    bool isBare() const { return m_isBare; }

    // Shows the panel: it fades in while it comes up by a few pixels to where it stands.
    void appear();

    // Fades the panel out, then hides it and sends left(). Nothing happens to one that is hidden
    // already.
    void leave();
    bool isLeaving() const { return m_isLeaving; }

signals:
    void left();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

    QColor fillColor() const;

private:
    void placeShadow();
    void animate(double from, double to, int durationMs, bool rising);
    void setShown(double share);

    const Fill m_fill;
    const double m_radius;
    QPointer<PanelShadow> m_shadow;
    QVariantAnimation m_motion;
    bool m_isBare = false;
    bool m_isLeaving = false;
    bool m_isRising = false;
    QPoint m_place;   // where it stands once it has risen
    int m_offset = 0; // how far below that it is
};

} // namespace corvelle
