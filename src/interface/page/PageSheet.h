// A page over the dimmed canvas: a sheet with a head row, and the page's view in it.
#pragma once

#include "interface/page/PageView.h"
#include "interface/theme/Icons.h"
#include "interface/widgets/OpenedFrame.h"

namespace corvelle {

class PageSheet : public OpenedFrame
{
    Q_OBJECT

public:
    PageSheet(ItemLooks items, MentionSource mentions, QWidget* parent);

    PageView& view() { return *m_view; }

    // What the head row says, and whether another application can open it.
    enum class Apps : unsigned char { None, Another };
    void setName(Icon sign, const QString& name, Apps apps);

protected:
    void layOut() override;
    QRect place() const override;
    QWidget& content() override { return *m_view; }
    void showParts(bool shows) override;
    QString wordsToFind() const override;
    void find(const QString& words) override;
    void goToFound(int step) override { m_view->goToFound(step); }
    void paintEvent(QPaintEvent* event) override;

private:
    void paintSheet(QPainter& painter, const QRectF& box) const;

    PageView* m_view;
    Icon m_sign = Icon::Page;
    QString m_name;
};

} // namespace corvelle
