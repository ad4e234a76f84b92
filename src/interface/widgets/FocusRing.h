// The ring round the control that has the keyboard: two pixels of accent, two pixels off.
//
// It lies in the control's parent, so the parent must leave four pixels round the control.
#pragma once

#include <QWidget>

namespace corvelle {

class FocusRing : public QWidget
{
    Q_OBJECT

public:
    static constexpr int reach = 4;

    // Follows the control while this has the focus. The ring belongs to the control's parent and
    // goes with the control.
    FocusRing(QWidget& control, double radius);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();

    QWidget& m_control;
    const double m_radius;
};

} // namespace corvelle
