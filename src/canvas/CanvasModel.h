// What the canvas of the main window shows: the open folder, its cards, the camera and the
// selection.
//
// Lives as long as the window, on the main thread. Views paint it and turn events into its calls;
// it decides and never draws. Card keys are node ids. Positions are canvas points, sizes of the
// viewport screen points.
#pragma once

#include "base/CardPlacement.h"
#include "canvas/Camera.h"
#include "canvas/CardGrid.h"
#include "canvas/NavHistory.h"
#include "library/Library.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <vector>

namespace corvelle {

struct PlacedCard
{
    QString key;
    QPointF centre;
    QSizeF size;

    QRectF rect() const
    {
        return QRectF(centre - QPointF(size.width() / 2, size.height() / 2), size);
    }
};

// One preview on a folder's card.
struct FolderPeek
{
    QString id;
    NodeKind kind = NodeKind::File;
    NodeColor color = NodeColor::Gray;
    QString mime;
    QString title;
    QString path;

    bool operator==(const FolderPeek&) const = default;
};

enum class Direction { Left, Right, Up, Down };

class CanvasModel : public QObject
{
    Q_OBJECT

public:
    explicit CanvasModel(Library& library, QObject* parent = nullptr);

    Library& library() const { return m_library; }

    // ---- where we are ----
    const QString& folderID() const { return m_folderID; } // empty at the top of the space
    // Enters a folder; nothing when it is open already, unknown, in the Trash or no folder.
    void open(const QString& folderID);
    void goBack();
    void goForward();
    // Closes what is open over the canvas, else leaves the folder.
    void goUp();
    void goHome() { open({}); }
    // The item that one of our viewers shows over the canvas; empty for none.
    const QString& openedID() const { return m_openedID; }
    // Opens one, in its own folder; nothing for what no viewer shows, or what is in the Trash.
    void openOver(const QString& id);
    void closeOver();
    bool canGoBack() const { return m_history.canGoBack(); }
    bool canGoForward() const { return m_history.canGoForward(); }
    // The folders from the top down to the open one.
    std::vector<QString> crumbs() const { return m_library.tree().ancestors(m_folderID); }

    // ---- camera ----
    const Camera& camera() const { return m_camera; }
    QSizeF viewport() const { return m_viewport; }
    void setViewport(QSizeF size);
    int zoomPercent() const { return static_cast<int>(m_camera.zoom * 100 + 1e-9); }
    // A finished move: what is drawn at rest follows at once.
    void setCamera(const Camera& camera);
    // One step of a gesture; rest() or a finished move ends it.
    void moveCamera(const Camera& camera);
    void pan(double dx, double dy) { moveCamera(panned(m_camera, dx, dy)); }
    void zoomAt(double zoom, QPointF anchor)
    {
        moveCamera(zoomedAt(m_camera, zoom, anchor, m_viewport));
    }
    // The camera has come to rest: faces are drawn for its own zoom now.
    void rest();

    // The zoom that cards' faces are drawn for while the camera moves: one of the steps, changed
    // when the camera has moved by more than a factor of 1.1 up or 0.8 down.
    double drawnCardZoom() const { return cardZoom(m_drawnZoom); }
    bool isAtRest() const { return m_drawnZoom == m_camera.zoom; }

    // ---- cards ----
    // In folder order, which is the order of drawing.
    const std::vector<PlacedCard>& cards() const { return m_cards; }
    const PlacedCard* card(const QString& key) const;
    // The cards that meet the culling rectangle, in drawing order.
    const std::vector<int>& mounted() const { return m_mounted; }
    // Indexes of the cards that meet a rectangle of the canvas, in drawing order.
    std::vector<int> cardsMeeting(const QRectF& rect) const { return m_grid.meeting(rect); }
    // The card at a point of the screen: selected cards first, later cards over earlier ones.
    QString cardAt(QPointF screen) const { return cardAt(screen, {}); }
    // The same, as if the excepted cards weren't there.
    QString cardAt(QPointF screen, const QSet<QString>& except) const;
    int childCount(const QString& folder) const;
    std::vector<FolderPeek> peeks(const QString& folder) const; // of its first three children

    // ---- selection ----
    const QSet<QString>& selection() const { return m_selection; }
    // The card that the keyboard stands on; empty when none.
    const QString& focus() const { return m_focus; }
    void select(const QSet<QString>& keys);
    void click(const QString& key, bool toggle);
    void selectAll();
    // From the selected card to its neighbour, brought into view; the first card when none is
    // selected.
    void moveSelection(Direction direction, bool extend);
    // The camera that shows the cards, or none when they are in view.
    std::optional<Camera> bringIntoView(const QSet<QString>& keys) const;

    // ---- renaming ----
    // The card whose title is being edited; empty when none.
    const QString& renaming() const { return m_renaming; }
    void startRenaming(const QString& key);
    void endRenaming();

    // Opens what the card stands for: a folder here, what we have a viewer for over the canvas,
    // anything else by openItem().
    void openCard(const QString& key);

signals:
    void folderChanged();
    void openedChanged();
    void cameraChanged();
    // The selected or focused cards are others.
    void selectionChanged();
    // The list of cards, their places or sizes.
    void cardsChanged();
    // What these cards show is out of date.
    void facesChanged(const QSet<QString>& keys);
    // A card wants to be in view.
    void glideWanted(const corvelle::Camera& camera);
    // The person opened something that is shown elsewhere.
    void openItem(const QString& id);
    // The person wants to open an item that can't be found.
    void missingOpened(const QString& id);
    void renamingChanged();

private:
    // A copy: the caller's text may be one that changes here, such as the focus.
    void enter(QString folderID);
    void goTo(const NavPlace& place);
    void setOpened(const QString& id);
    bool exists(const NavPlace& place) const;
    void takeTreeChange(const TreeChange& change);
    bool patchCards(const TreeChange& change);
    void placeCards();
    void putCard(int index);
    void placeFirstCamera();
    void cull(bool always = false);
    PlacedCard placed(const Node& node) const;

    Library& m_library;
    QString m_folderID;
    QString m_openedID;
    NavHistory m_history;

    Camera m_camera;
    QSizeF m_viewport;
    double m_drawnZoom = 1.0;
    bool m_needsCamera = true;
    QHash<QString, Camera> m_cameras; // by folder, for this run

    std::vector<PlacedCard> m_cards;
    QHash<QString, int> m_indexes; // by key
    CardGrid m_grid;
    QRectF m_cull;
    std::vector<int> m_mounted;

    QSet<QString> m_selection;
    QString m_focus;
    QString m_renaming;
};

} // namespace corvelle
