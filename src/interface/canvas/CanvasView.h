// Paints the canvas and turns pointer, wheel and key events into calls of its model.
#pragma once

#include "canvas/CanvasModel.h"
#include "canvas/Gestures.h"
#include "interface/canvas/FaceStore.h"
#include "interface/canvas/FrameMeter.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <utility>

namespace corvelle {

class CanvasView : public QWidget
{
    Q_OBJECT

public:
    explicit CanvasView(CanvasModel& model, QWidget* parent = nullptr);
    ~CanvasView() override;

    CanvasModel& model() const { return m_model; }

    void setScheme(Scheme scheme);
    void setShowsDots(bool shows);

    // Moves the camera there over time, at once where motion is reduced. Any new gesture ends it.
    void glideTo(const Camera& camera);
    bool isGliding() const { return m_glide.has_value(); }

    // Whether every face in sight is drawn for the zoom that the camera rests at.
    bool isSettled() const;

    // The frames of the window that this view is in; its owner adds to it.
    FrameMeter& frames() { return m_frames; }
    // Milliseconds that events spent in the model since they were last asked for: they belong to
    // the frame that shows them.
    double takeEventMs() { return std::exchange(m_eventMs, 0); }

    // When cards were first painted, and when all cards in sight first had their faces; seconds
    // since 1970, 0 before.
    double firstCardsAt() const { return m_firstCardsAt; }
    double firstFacesAt() const { return m_firstFacesAt; }

    // The percent of the zoom label: a glide tells its target from its start.
    int shownZoomPercent() const;

signals:
    void zoomLabelChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    struct Glide
    {
        Camera from, to;
        QElapsedTimer time;
        int durationMs = 0;
    };

    void cameraChanged();
    void tickGlide();
    void stopGlide();
    void wantFaces();
    void noteFirstCards(bool allHaveFaces);
    bool paintCard(QPainter& painter, const PlacedCard& card);
    void paintRings(QPainter& painter);
    void paintFarHint(QPainter& painter);
    QRectF cardOnScreen(const PlacedCard& card) const;
    CardFace::Kind faceKind(const Node& node) const;
    FaceRequest describe(const QString& key) const;
    void setPointed(const QString& key);
    void updateCard(const QString& key);
    void callOffGestures();
    void announceFocus();
    bool zoomKey(QKeyEvent* event);
    bool selectionKey(QKeyEvent* event);
    const Palette& colors() const { return corvelle::palette(m_scheme); }

    CanvasModel& m_model;
    FaceStore m_faces;
    FrameMeter m_frames;
    Scheme m_scheme = Scheme::Light;
    bool m_showsDots = true;

    std::optional<Glide> m_glide;
    QTimer m_glideTick;
    QTimer m_rest; // runs out when the camera has stood still for a moment

    std::optional<PanGesture> m_pan;
    std::optional<MarqueeGesture> m_marquee;
    bool m_spaceHeld = false;
    QString m_pressed;           // the card whose plain press waits for its release
    bool m_ignoresPress = false; // the rest of a double click
    QString m_pointed;
    QString m_announced; // the card that screen readers heard of last
    double m_firstCardsAt = 0, m_firstFacesAt = 0;
    double m_eventMs = 0; // since the last frame
};

} // namespace corvelle
