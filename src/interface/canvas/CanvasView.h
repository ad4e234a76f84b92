// Paints the canvas and turns pointer, wheel and key events into calls of its model.
#pragma once

#include "canvas/CanvasModel.h"
#include "canvas/Gestures.h"
#include "interface/canvas/FaceStore.h"
#include "interface/canvas/FrameMeter.h"
#include "interface/widgets/TitleField.h"
#include "library/PageExcerpts.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <optional>
#include <utility>

namespace corvelle {

class CanvasCommands;

// A place in the chrome that takes dragged cards to a folder above.
struct UpTarget
{
    QString folder; // empty at the top of the space
    QString name;

    bool operator==(const UpTarget&) const = default;
};

class CanvasView : public QWidget
{
    Q_OBJECT

public:
    explicit CanvasView(CanvasModel& model, QWidget* parent = nullptr);
    ~CanvasView() override;

    CanvasModel& model() const { return m_model; }

    // Without them the canvas shows and changes nothing.
    void setCommands(CanvasCommands* commands) { m_commands = commands; }
    // Tells which place of the chrome lies under a point of this view; none elsewhere. Asked with
    // no value when a drag has ended.
    using FindUpTarget = std::function<std::optional<UpTarget>(std::optional<QPointF> at)>;
    void setUpTargets(FindUpTarget find) { m_findUpTarget = std::move(find); }

    // A card that is being dragged out of the dock, at a point of this view; none: no more.
    void showPlacing(std::optional<NodeKind> kind, QPointF at = {});

    bool isEditing() const { return m_field; }

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
    // A menu is wanted, at a point of this view; of a card when the key isn't empty.
    void menuWanted(const QString& key, QPoint at);
    // A drag from outside that can't be taken.
    void dropRefused();

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
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

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
    bool paintFace(QPainter& painter, const PlacedCard& card, const QRectF& rect);
    void paintRings(QPainter& painter);
    void paintFarHint(QPainter& painter);
    QRectF cardOnScreen(const PlacedCard& card) const;
    CardFace::Kind faceKind(const Node& node) const;
    FaceRequest describe(const QString& key);
    void setPointed(const QString& key);
    void updateCard(const QString& key);
    void callOffGestures();
    void announceFocus();
    // ---- carrying, dropping, renaming: CanvasDrag.cpp ----
    void startDrag(QPointF at);
    void moveDrag(QPointF at);
    void findTargets();
    void endDrag();
    void callOffDrag();
    void tickEdgeScroll();
    void dragOut();
    QRectF carriedOnScreen(const PlacedCard& card) const;
    void paintCarried(QPainter& painter);
    void paintTarget(QPainter& painter);
    void paintPlacing(QPainter& painter);
    void paintHint(QPainter& painter, const QString& words, QPointF at);
    void takeRenaming();
    void placeField();
    bool editKey(QKeyEvent* event);
    QString folderCardAt(QPointF at) const;

    bool zoomKey(QKeyEvent* event);
    bool selectionKey(QKeyEvent* event);
    const Palette& colors() const { return corvelle::palette(m_scheme); }

    CanvasModel& m_model;
    FaceStore m_faces;
    PageExcerpts m_excerpts;
    FrameMeter m_frames;
    Scheme m_scheme = Scheme::Light;
    bool m_showsDots = true;

    std::optional<Glide> m_glide;
    QTimer m_glideTick;
    QTimer m_rest; // runs out when the camera has stood still for a moment

    std::optional<PanGesture> m_pan;
    std::optional<MarqueeGesture> m_marquee;
    bool m_spaceHeld = false;
    CanvasCommands* m_commands = nullptr;
    FindUpTarget m_findUpTarget;
    std::optional<DragGesture> m_drag;
    std::optional<UpTarget> m_upTarget;
    QString m_dropTarget;         // the folder card that takes what is dragged
    bool m_dragCalledOff = false; // the rest of this press does nothing
    bool m_outsideDrag = false;   // one from another program is over the canvas
    QPointF m_outsideAt;
    QTimer m_edgeScroll;
    std::optional<std::pair<NodeKind, QPointF>> m_placing;
    QPointer<TitleField> m_field;
    QString m_pressedCard; // under the held button
    QPointF m_pressedAt;
    QString m_pressed;           // the card whose plain press waits for its release
    bool m_ignoresPress = false; // the rest of a double click
    QString m_pointed;
    QString m_announced; // the card that screen readers heard of last
    double m_firstCardsAt = 0, m_firstFacesAt = 0;
    double m_eventMs = 0; // since the last frame
};

} // namespace corvelle
