// What a held pointer does to the canvas. Each gesture begins, moves and ends or is called off; it
// reads positions alone.
#pragma once

#include "canvas/CanvasModel.h"

namespace corvelle {

// Drags the plane: the point under the pointer stays under it.
class PanGesture
{
public:
    PanGesture(CanvasModel& model, QPointF start)
        : m_model(model)
        , m_start(start)
        , m_camera(model.camera())
    {}

    void move(QPointF to);

private:
    CanvasModel& m_model;
    QPointF m_start; // on the screen
    Camera m_camera; // when it began
};

// Draws a rectangle from the empty canvas; the cards that meet it toggle against the selection it
// began with.
class MarqueeGesture
{
public:
    enum class Base { Empty, Selection };

    MarqueeGesture(CanvasModel& model, QPointF start, Base base)
        : m_model(model)
        , m_start(start)
        , m_before(model.selection())
        , m_base(base == Base::Selection ? model.selection() : QSet<QString>())
    {}

    void move(QPointF to);
    void cancel() { m_model.select(m_before); }

    // On the screen; null while the pointer has moved less than three points both ways.
    const QRectF& rect() const { return m_rect; }

private:
    CanvasModel& m_model;
    QPointF m_start;
    QSet<QString> m_before, m_base;
    QRectF m_rect;
};

} // namespace corvelle
