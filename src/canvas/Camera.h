// Where the canvas is looked at from, and the arithmetic of moving there. Pure.
//
// Canvas points, y downward; a viewport's size is in screen points. The scale on the screen is
// `zoom` × 1.1.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <span>

namespace corvelle {

inline constexpr double screenScale = 1.1; // screen points per canvas point at 100 %
inline constexpr double leastZoom = 0.2;
inline constexpr double greatestZoom = 2.5;

struct Camera
{
    double x = 0, y = 0; // the canvas point at the centre of the viewport
    double zoom = 1.0;

    double scale() const { return zoom * screenScale; }
    bool operator==(const Camera&) const = default;
};

double clampedZoom(double zoom);

// The first of the 17 steps at which card faces are drawn that is at least `zoom`; the last one
// above them all.
double cardZoom(double zoom);

QPointF toScreen(QPointF canvas, const Camera& camera, QSizeF viewport);
QPointF toCanvas(QPointF screen, const Camera& camera, QSizeF viewport);
QRectF toScreen(const QRectF& canvas, const Camera& camera, QSizeF viewport);
QRectF visibleRect(const Camera& camera, QSizeF viewport); // in canvas points

// Another zoom, with the canvas point under `anchor` (a point of the screen) staying where it is.
Camera zoomedAt(const Camera& camera, double zoom, QPointF anchor, QSizeF viewport);

// Moved by screen points.
Camera panned(const Camera& camera, double dx, double dy);

// All the cards in sight, never enlarged. No card gives (0, 0) at zoom 1.
Camera fitted(std::span<const QRectF> cards, QSizeF viewport);

// The camera of a folder that is seen for the first time: all of up to 20 cards, the first 12 of up
// to 80, the first card in the upper left of more.
Camera firstCamera(std::span<const QRectF> cards, QSizeF viewport);

// Shifts a camera that would show no card to the first one, at its own zoom.
Camera showingSomeCard(const Camera& camera, std::span<const QRectF> cards, QSizeF viewport);

// The place between two cameras on the curve of an animated move, at `progress` 0 … 1 of its time.
Camera glided(const Camera& from, const Camera& to, double progress);

// The rectangle within which cards are mounted, kept while it serves: it must hold the visible
// rectangle grown by 15 %, and not be over three times as large; a new one is grown by 35 %.
QRectF culledRect(const QRectF& current, const QRectF& visible);

} // namespace corvelle
