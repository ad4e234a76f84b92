// What an item that is open over the canvas stands in: the buttons of its head row, the field for
// finding, how it comes up out of its card, and what Escape and a press beside it do.
//
// Each kind of viewer derives its own from it, with its content, and paints it.
#pragma once

#include "interface/widgets/Arrival.h"
#include "interface/widgets/FindBar.h"

#include <QWidget>

#include <vector>

namespace corvelle {

class BarButton;

class OpenedFrame : public QWidget
{
    Q_OBJECT

public:
    static constexpr int headHeight = 48;

    // `where` it finds: "Find in the page".
    OpenedFrame(const QString& where, QWidget* parent);
    ~OpenedFrame() override;

    // Comes up out of a card's place in the parent; it is there at once when that is empty.
    void comeFrom(const QRectF& card);
    // Gives the content the keyboard.
    void takeFocus();

    // ---- finding ----
    virtual bool canFind() const { return true; }
    void openFind();
    void closeFind();
    bool isFinding() const { return m_isFinding; }
    void setFindWords(const QString& words) { m_find->setWords(words); }
    const FindBar& findBar() const { return *m_find; }

    // ---- the head row, in this widget ----
    int headEnd() const; // where its buttons begin
    QRect moreButton() const;
    QRect appButton() const; // empty when it isn't there

signals:
    void closeWanted();
    void moreWanted();
    // The item, in its own application.
    void appWanted();

protected:
    // ---- what a kind of frame says of itself ----
    // Called whenever parts come, go or have another size.
    virtual void layOut() = 0;
    // All but what lies around it; this comes up out of the card.
    virtual QRect place() const { return rect(); }
    virtual QWidget& content() = 0;
    // Nothing but a picture shows while it comes up.
    virtual void showParts(bool shows);
    // Something of its own that Escape closes first; false when there is none.
    virtual bool closeInside() { return false; }
    // What the field begins with; empty: with what stands there already.
    virtual QString wordsToFind() const { return {}; }
    virtual void find(const QString& words) = 0; // empty: no more
    virtual void goToFound(int step) = 0;

    // ---- what it gets ----
    // In the head row, before those that all have.
    void addButton(BarButton* button);
    void setHasApp(bool hasApp);
    // Tab leads through these, and then to the buttons.
    void orderTabs(const std::vector<QWidget*>& inside);
    void layOutHead();
    void paintHead(QPainter& painter) const;
    // After something that showParts() goes by has changed.
    void updateParts();
    void escape();
    FindBar& field() { return *m_find; }
    const Arrival& arrival() const { return m_arrival; }

    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    BarButton* m_app;
    BarButton* m_more;
    BarButton* m_close;
    std::vector<BarButton*> m_buttons; // from the left
    FindBar* m_find;
    bool m_hasApp = false;
    bool m_isFinding = false; // the field is there, and not on its way out
    Arrival m_arrival;
};

} // namespace corvelle
