// A page to read: scrolled, selected, copied and searched, its mentions and links followed.
//
// Only what is in sight is laid out. The view shows a text and asks for what a press wants by
// signals.
#pragma once

#include "interface/page/PageLayout.h"
#include "interface/page/PageTargets.h"
#include "interface/widgets/ScrollThumb.h"

#include <QTimer>
#include <QWidget>

#include <optional>

class QMimeData;

namespace corvelle {

struct ShownPage
{
    FlatText text;
    PageSettings settings;
    QString title; // stands above the text; empty: nothing does
    QString icon;  // beside the title
    bool isDocument =
        false; // one that is only read: its links that begin with "#" lead nowhere else
};

class PageView : public QWidget
{
    Q_OBJECT

public:
    PageView(ItemLooks items, MentionSource mentions, QWidget* parent);

    // Begins at the top. `refresh` shows another state of the same page and stays where it is.
    void open(ShownPage page);
    void refresh(ShownPage page);
    // The items that it mentions may look otherwise now.
    void refreshItems();
    const ShownPage& page() const { return m_page; }
    int turn() const { return m_turn; } // counts the pages and states shown
    PagePictures& pictures() { return m_pictures; }

    // ---- finding ----
    // Marks what is found, and shows the first at or below the upper edge.
    void find(const QString& words);
    void goToFound(int step);
    // Nothing is looked for any more; by the keyboard one selects from where it led to.
    void endFind();
    int foundCount() const { return static_cast<int>(m_found.size()); }
    int currentFound() const { return m_currentFound; } // -1: none

    // ---- selecting ----
    bool hasSelection() const { return !m_selected.isNothing(); }
    const Selected& selected() const { return m_selected; }
    // The end of the selection that moves; in a cell of a table it may be.
    const PagePlace& head() const { return m_head; }
    void select(const PagePlace& anchor, const PagePlace& head);
    void select(Units from, Units to) { select(PagePlace{{}, from}, PagePlace{{}, to}); }
    void selectAll();
    void copy() const;
    // The words of a selection in one block; empty for any other.
    QString selectedWords() const;
    // What stands between two places, with the bytes of its pictures.
    PageNodes nodes(Units from, Units to) const;
    PageNodes nodes() const { return nodes(0, m_page.text.length()); }
    const MentionSource& mentions() const { return m_mentions; }

    // ---- zoom ----
    // Of letters, room and pictures; 1 is as designed. Kept within what can be read.
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);
    void zoomBy(double steps);

    // ---- scrolling ----
    // How far the upper edge is below the page's beginning, by what is known of its height.
    double scrollPlace() const;
    double scrollRange() const;
    void scrollBy(double pixels);
    void scrollTo(double place);

    // ---- places ----
    PagePlace placeAt(QPointF at);
    // Where the unit at a place is, by what is known of the page's height.
    QRectF rectOf(const PagePlace& place);
    QRectF rectOf(Units place) { return rectOf(PagePlace{{}, place}); }
    void showPlace(const PagePlace& place);
    // Brings it to the upper edge, as a link inside the page does.
    void showAtTop(Units place);
    // The mentions, links and cards that can be pressed now, with their places in the view.
    std::vector<std::pair<TargetInPage, QRectF>> targetsInSight();

signals:
    void itemWanted(const QString& id);
    void addressWanted(const QString& address);
    void menuWanted(QPoint at);
    void closeWanted();
    void foundChanged();
    void selectionChanged();
    // What open() gave is painted for the first time.
    void painted();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void take(ShownPage page);
    void layOut();
    void setStyle();
    double headHeight() const;
    QRectF column() const;
    void settle();
    void settleTop();
    int lastInSight() const;
    struct Spot
    {
        int piece = 0;
        QPointF in; // from the piece's top left
    };
    Spot spotAt(QPointF at) const;
    PageTarget targetAt(QPointF at);
    void follow(const PageTarget& target);
    void leaveTargets();
    QString nameOf(const TargetInPage& target) const;
    void showRange(const TextRange& range);
    void makeWhole(PageNodes& nodes) const;
    double topOf(int piece) const;
    void paintHead(QPainter& painter, double y) const;
    void paintPiece(QPainter& painter, int piece, double y, const QRectF& visible);
    // What a place stands for in the drag that goes on: itself, its word or its block.
    using Reach = std::pair<PagePlace, PagePlace>;
    Reach reachOf(const PagePlace& place) const;
    void extend(QPointF at);
    void autoScroll();
    bool selectByKey(QKeyEvent* event);
    bool isHeadReversed() const;
    QRectF caretAt(const PagePlace& place);
    PagePlace reachableAt(QPointF at, bool down);
    PagePlace movedByLine(bool down);
    PagePlace movedByScreen(bool down);
    PagePlace lineEdge(bool end);
    QRectF thumb() const;
    void dragThumb(double y);
    bool isOnTrack(QPointF at) const;
    void letGo();
    bool isThumbShown() const;
    void updateCursor(QPointF at);

    // ---- tables wider than the column ----
    std::optional<int> wideTableAt(QPointF at);
    std::optional<int> wideTableInSight();
    std::optional<int> wideTableOfDrag();
    QRect areaOfTable(int piece);
    bool scrollSideways(int piece, double pixels);
    ScrollThumb sidewaysThumb(int piece);
    bool grabSideways(QPointF at);
    void noticeSideways(QPointF at);
    void paintSidewaysThumb(QPainter& painter);

    const ItemLooks m_items;
    const MentionSource m_mentions;
    PagePictures m_pictures;
    ShownPage m_page;
    double m_zoom = 1;
    int m_turn = 0;
    bool m_isUnpainted = false; // since open()
    PageLayout m_layout;

    int m_topPiece = 0;     // the piece at the upper edge,
    double m_topOffset = 0; // and how far its top is above the edge
    bool m_isAtTop = true;  // nothing is above the edge

    PagePlace m_anchor, m_head;
    Selected m_selected;           // between these two
    bool m_isPlaced = false;       // a press or a selection said where the anchor is
    std::optional<double> m_goalX; // of the head, while it goes from line to line
    enum class Drag : unsigned char {
        None,
        Characters,
        Words,
        Blocks,
        Thumb,
        Sideways
    } m_drag = Drag::None;
    Reach m_dragStart; // what the press selected
    double m_thumbGrip = 0;
    QPointF m_pressedAt, m_dragAt;
    QElapsedTimer m_lastDouble;
    QTimer m_autoScroll;
    QTimer m_thumbLingers; // after scrolling
    bool m_isNearThumb = false;
    std::optional<qsizetype> m_wideTable;   // by its block: the one whose thumb is shown
    bool m_isOverWide = false;              // the pointer is on it
    ScrollThumb m_sideways{Qt::Horizontal}; // while it is dragged

    QString m_words; // looked for
    std::vector<TextRange> m_found;
    int m_currentFound = -1;

    std::vector<TargetInPage> m_targets; // once the keyboard has asked for one
    int m_focused = -1;                  // the one that it stands on
};

} // namespace corvelle
