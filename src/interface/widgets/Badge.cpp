#include "interface/widgets/Badge.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/Look.h"

#include <QPainter>

#include <cmath>

namespace corvelle {

namespace {

constexpr int badgeHeight = 13, badgeSide = 4;

} // namespace

Badge::Badge(const QString& letters, QWidget* parent)
    : QWidget(parent)
    , m_letters(letters)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Badge::sizeHint() const
{
    const double wide = Lettering(TypeStyle::Badge).width(m_letters);
    return QSize(static_cast<int>(std::ceil(wide)) + 2 * badgeSide, badgeHeight)
        .grownBy(contentsMargins());
}

void Badge::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const NodeTones& tones = corvelle::palette(schemeOf(*this)).tones(badgeColor(m_letters));
    painter.setPen(Qt::NoPen);
    painter.setBrush(tones.fill);
    painter.drawRoundedRect(contentsRect(), radius::badgePt, radius::badgePt);
    painter.setPen(tones.ink);
    Lettering(TypeStyle::Badge).draw(painter, QRectF(contentsRect()), Qt::AlignHCenter, m_letters);
}

} // namespace corvelle
