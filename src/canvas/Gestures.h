// What a held pointer does to the canvas. Each gesture begins, moves and ends or is called off; it
// reads positions alone.
#pragma once

#include "canvas/CanvasModel.h"

#include <map>

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

// Carries the selected cards. Nothing is written before the end, and then by its owner.
class DragGesture
{
public:
    DragGesture(CanvasModel& model, QString lead, QPointF start);

    // Whether the pointer has left the few points that still are a click.
    bool move(QPointF to);
    bool hasMoved() const { return m_moved; }

    const QString& lead() const { return m_lead; } // the card that was pressed
    const QSet<QString>& keys() const { return m_keys; }
    QPointF pointer() const { return m_at; }    // on the screen
    QPointF offset() const { return m_offset; } // in points of the canvas

    // The folder card under the pointer that takes what is carried; empty when none.
    QString dropTarget() const;
    // Whether a folder can take what is carried: not the open one, none of them, nothing below
    // them.
    bool accepts(const QString& folder) const;

    // Where the cards lie when they are let go on the canvas.
    std::map<QString, QPointF> places() const;
    // In the order of the folder.
    std::vector<QString> ids() const;

private:
    CanvasModel& m_model;
    QString m_lead;
    QSet<QString> m_keys;
    std::map<QString, QPointF> m_origins;
    QPointF m_start; // of the press, on the canvas
    QPointF m_startScreen, m_at;
    QPointF m_offset;
    bool m_moved = false;
};

} // namespace corvelle
