#include "interface/widgets/ButtonBase.h"

#include "interface/widgets/FocusRing.h"
#include "interface/widgets/Look.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include <cmath>

namespace corvelle {

ButtonBase::ButtonBase(const Measures& measures, QWidget* parent)
    : QAbstractButton(parent)
    , m_measures(measures)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (parent != nullptr)
        new FocusRing(*this, measures.radius);
}

void ButtonBase::setSign(std::optional<Icon> sign)
{
    m_sign = sign;
    updateGeometry();
    update();
}

void ButtonBase::setMeasures(const Measures& measures)
{
    m_measures = measures;
    updateGeometry();
    update();
}

QSize ButtonBase::sizeHint() const
{
    int width = 2 * m_measures.padding;
    if (m_sign)
        width += m_measures.signSize;
    if (!text().isEmpty())
        width +=
            static_cast<int>(std::ceil(lettering().width(text()))) + (m_sign ? m_measures.gap : 0);
    return {std::max(width, m_measures.leastWidth), m_measures.height};
}

const Palette& ButtonBase::colors() const
{
    return corvelle::palette(schemeOf(*this));
}

void ButtonBase::drawContent(QPainter& painter, const QColor& ink, const QColor& signInk) const
{
    const Lettering type = lettering();
    const double words = text().isEmpty() ? 0 : type.width(text());
    const double signWidth = m_sign ? m_measures.signSize : 0;
    const double gap = m_sign && words > 0 ? m_measures.gap : 0;
    double x = (width() - signWidth - gap - words) / 2;
    if (m_sign) {
        const QRectF square(std::round(x), (height() - m_measures.signSize) / 2,
            m_measures.signSize, m_measures.signSize);
        drawIcon(painter, *m_sign, square, signInk);
        x = square.right() + gap;
    }
    painter.setPen(ink);
    type.draw(painter, QRectF(x, 0, words, height()), Qt::AlignLeft, text());
}

void ButtonBase::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat())
            click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

bool ButtonBase::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange)
        update();
    return QAbstractButton::event(event);
}

} // namespace corvelle
