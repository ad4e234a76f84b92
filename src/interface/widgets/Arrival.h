// How a surface comes up out of a card's place: while it grows, it is one picture of itself.
//
// Owned by the surface, which paints it while isComing() and hides its parts meanwhile.
#pragma once

#include <QPixmap>
#include <QRectF>
#include <QVariantAnimation>

class QPainter;
class QWidget;

namespace corvelle {

class Arrival : public QObject
{
    Q_OBJECT

public:
    explicit Arrival(QWidget& surface);

    // The part of the surface at `place`, as it stands there now, grows out of the card. False when
    // nothing moves: without a card, or when the person wants no motion.
    bool begin(const QRect& place, const QRectF& card);
    // It stands there at once.
    void end();

    bool isComing() const { return !m_picture.isNull(); }
    double share() const; // of the way; 1 when it stands
    void paint(QPainter& painter, const QRectF& place, double radius) const;

signals:
    void ended();

private:
    QWidget& m_surface;
    QVariantAnimation m_motion;
    QRectF m_from;
    QPixmap m_picture;
};

} // namespace corvelle
