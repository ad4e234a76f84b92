// How a surface goes: a picture of it stays for a moment and fades. Nothing can be done with the
// picture, and nothing waits for it: what is below takes the keyboard and the pointer at once.
#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

namespace corvelle {

class Departure : public QWidget
{
    Q_OBJECT

public:
    // In the place of the surface, as it looks now; right below it, so that hiding the surface
    // shows it. Deletes itself once it has faded.
    static void of(QWidget& surface);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit Departure(QWidget& surface);

    const QPixmap m_picture;
    QVariantAnimation m_motion;
};

} // namespace corvelle
