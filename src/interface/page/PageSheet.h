// A page over the dimmed canvas: a sheet with a head row, and the page's view in it.
#pragma once

#include "interface/page/PageView.h"
#include "interface/theme/Icons.h"
#include "interface/widgets/Arrival.h"

namespace corvelle {

class BarButton;
class FindBar;

class PageSheet : public QWidget
{
    Q_OBJECT

public:
    PageSheet(ItemLooks items, MentionSource mentions, QWidget* parent);
    ~PageSheet() override;

    PageView& view() { return *m_view; }
    const FindBar& findBar() const { return *m_find; }

    // What the head row says, and whether another application can open it.
    enum class Apps : unsigned char { None, Another };
    void setName(Icon sign, const QString& name, Apps apps);
    // Comes up out of a card's place in the parent, or only fades when that is empty.
    void comeFrom(const QRectF& card);
    // Gives the page the keyboard.
    void takeFocus();
    void openFind();
    void closeFind();
    bool isFinding() const { return m_isFinding; }
    void setFindWords(const QString& words);
    QRect moreButton() const; // in the parent
    QRect appButton() const;  // empty when it isn't there

signals:
    void closeWanted();
    void moreWanted();
    void appWanted();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRect sheet() const;
    void layOut();
    void showParts(bool shows);
    void stand();
    void escape();
    void paintSheet(QPainter& painter, const QRectF& box) const;

    PageView* m_view;
    BarButton* m_app;
    BarButton* m_more;
    BarButton* m_close;
    FindBar* m_find;
    bool m_isFinding = false; // the field is there, and not on its way out
    Icon m_sign = Icon::Page;
    QString m_name;
    bool m_hasApp = false;

    Arrival m_arrival;
};

} // namespace corvelle
