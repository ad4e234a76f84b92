#include "interface/sheet/SheetTabs.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/Look.h"

#include <QPainter>
#include <QPainterPath>
#include <QSignalBlocker>
#include <QToolButton>

#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double mostName = 200;
constexpr int nameSide = 14;

} // namespace

SheetTabs::SheetTabs(QWidget* parent)
    : QTabBar(parent)
{
    setAccessibleName(u"Sheets"_s);
    setDrawBase(false);
    setExpanding(false);
    setFocusPolicy(Qt::TabFocus);
    setFixedHeight(barHeight);
    for (QToolButton* arrow : findChildren<QToolButton*>())
        arrow->setAutoRaise(true);
}

void SheetTabs::setSheets(const QStringList& names, int current)
{
    const QSignalBlocker quiet(this);
    QStringList standing;
    for (int i = 0; i < count(); ++i)
        standing.append(tabData(i).toString());
    if (standing != names) {
        while (count() > 0)
            removeTab(0);
        for (const QString& name : names) {
            // An "&" isn't a sign of the keyboard here.
            const int tab = addTab(QString(name).replace(u"&"_s, u"&&"_s));
            setTabData(tab, name);
            setAccessibleTabName(tab, name);
        }
    }
    setCurrentIndex(current);
}

QSize SheetTabs::tabSizeHint(int index) const
{
    const double name = Lettering(TypeStyle::Label).width(tabData(index).toString());
    return {static_cast<int>(std::ceil(std::min(name, mostName))) + 2 * nameSide + 2, barHeight};
}

void SheetTabs::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.fillRect(rect(), colors.sunken);
    painter.fillRect(QRect(0, 0, width(), 1), colors.hairline);
    const Lettering letters(TypeStyle::Label);
    for (int i = 0; i < count(); ++i) {
        const QRectF tab = QRectF(tabRect(i)).adjusted(1.5, 6.5, -1.5, -5.5);
        const bool here = i == currentIndex();
        if (here) {
            QPainterPath shape;
            shape.addRoundedRect(tab, radius::control, radius::control);
            painter.fillPath(shape, colors.surface);
            painter.setPen(QPen(hasFocus() ? colors.accent : colors.hairline, hasFocus() ? 2 : 1));
            painter.drawPath(shape);
        }
        painter.setPen(here ? colors.ink : colors.ink2);
        const QString name = letters.elided(tabData(i).toString(), mostName, Qt::ElideMiddle);
        letters.draw(painter, tab, Qt::AlignHCenter, name);
    }
    // Names go under the arrows, which have no ground of their own.
    for (const QToolButton* arrow : findChildren<QToolButton*>())
        if (arrow->isVisible())
            painter.fillRect(arrow->geometry().adjusted(0, 1, 0, 0), colors.sunken);
}

} // namespace corvelle
