#include "interface/widgets/Tip.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace corvelle {
namespace {

constexpr int hintHeight = 28, padding = 11, tipKeyGap = 9, distance = 12, windowEdge = 8;

class Hint : public GlassPanel
{
public:
    Hint(const QString& name, const QString& key, QWidget* window)
        : GlassPanel(Fill::Hint, radius::hint, window)
        , m_name(name)
        , m_key(key)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        const double words =
            m_lettering.width(name) + (key.isEmpty() ? 0 : tipKeyGap + m_lettering.width(key));
        resize(static_cast<int>(std::ceil(words)) + 2 * padding, hintHeight);
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        GlassPanel::paintEvent(event);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        QPainter painter(this);
        const QRectF line = rect().adjusted(padding, 0, -padding, 0);
        painter.setPen(colors.onInverse);
        m_lettering.draw(painter, line, Qt::AlignLeft, m_name);
        painter.setPen(colors.inverseInk2);
        m_lettering.draw(painter, line, Qt::AlignRight, m_key);
    }

private:
    static TypeSpec spec()
    {
        TypeSpec small = typeSpec(TypeStyle::Hint);
        small.size = 12;
        return small;
    }

    QString m_name, m_key;
    Lettering m_lettering{spec()};
};

} // namespace

Tip::Tip(QWidget& control, const QString& name, const QString& key)
    : QObject(&control)
    , m_control(control)
    , m_name(name)
    , m_key(key)
{
    m_rest.setSingleShot(true);
    m_rest.setInterval(motion::hintDelayMs);
    connect(&m_rest, &QTimer::timeout, this, &Tip::show);
    control.installEventFilter(this);
}

Tip::~Tip()
{
    delete m_hint;
}

void Tip::setWords(const QString& name, const QString& key)
{
    m_name = name;
    m_key = key;
    hide();
}

bool Tip::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
        m_rest.start();
        break;
    case QEvent::Leave:
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::Hide:
        hide();
        break;
    default:
        break;
    }
    return false;
}

void Tip::show()
{
    QWidget* window = m_control.window();
    if (m_name.isEmpty() || !m_control.isVisible() || m_hint)
        return;
    auto* hint = new Hint(m_name, m_key, window);
    connect(hint, &GlassPanel::left, hint, &QObject::deleteLater);
    const QPoint corner = m_control.mapTo(window, QPoint(0, 0));
    int y = corner.y() + m_control.height() + distance;
    if (y + hint->height() > window->height() - windowEdge)
        y = corner.y() - distance - hint->height();
    const int most = std::max(windowEdge, window->width() - windowEdge - hint->width());
    const int x =
        std::clamp(corner.x() + (m_control.width() - hint->width()) / 2, windowEdge, most);
    hint->move(x, y);
    hint->raise();
    hint->appear();
    m_hint = hint;
}

void Tip::hide()
{
    m_rest.stop();
    if (m_hint)
        static_cast<GlassPanel*>(m_hint.data())->leave();
    m_hint = nullptr;
}

} // namespace corvelle
