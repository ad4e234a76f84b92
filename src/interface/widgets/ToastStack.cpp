#include "interface/widgets/ToastStack.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/ButtonBase.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"

#include <QAccessible>
#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace corvelle {
namespace {

constexpr int leftPad = 13, rightPad = 16, toastGap = 10, iconSize = 20, toastBetween = 8;
constexpr int plainHeight = 44, detailTop = 9, detailBottom = 10;
constexpr int toastLeastWidth = 240, toastMostWidth = 440, leastSide = 16;
constexpr double toastLine = 18, detailLine = 16;

// The words at the right end of a toast.
class ToastAction : public ButtonBase
{
public:
    ToastAction(const QString& words, QWidget* parent)
        : ButtonBase({28, 28, 8, 0, 0, radius::control}, parent)
    {
        setText(words);
        setAccessibleName(words);
    }

protected:
    Lettering lettering() const override { return Lettering(TypeStyle::LabelStrong); }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor ink = colors().inverseAction;
        if (underMouse() || isDown()) {
            QColor fill = ink;
            fill.setAlphaF(isDown() ? 0.2F : 0.12F);
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawRoundedRect(rect(), radius::control, radius::control);
        }
        drawContent(painter, ink, ink);
    }
};

class ToastPanel : public GlassPanel
{
public:
    ToastPanel(const Toast& toast, QWidget* host)
        : GlassPanel(Fill::Inverse, radius::toast, host)
        , m_toast(toast)
    {
        setAccessibleName(toast.detail.isEmpty() ? toast.text : toast.text + u' ' + toast.detail);
        if (!toast.action.isEmpty()) {
            m_action = new ToastAction(toast.action, this);
            m_action->resize(m_action->sizeHint());
        }
        layOut(std::min(toastMostWidth, host->width() - 2 * leastSide));
    }

    ButtonBase* action() const { return m_action; }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        GlassPanel::paintEvent(event);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        QPainter painter(this);
        const bool plain = m_details.empty() && m_lines.size() == 1;
        double y = plain ? (height() - toastLine) / 2 : detailTop;
        if (m_toast.icon)
            drawIcon(painter, *m_toast.icon,
                QRectF(leftPad, plain ? (height() - iconSize) / 2 : y + 1, iconSize, iconSize),
                colors.onInverse);
        const double x = textLeft();
        painter.setPen(colors.onInverse);
        for (const QString& line : m_lines) {
            m_text.draw(painter, QRectF(x, y, width() - x, toastLine), Qt::AlignLeft, line);
            y += toastLine;
        }
        painter.setPen(colors.inverseInk2);
        for (const QString& line : m_details) {
            m_detail.draw(painter, QRectF(x, y + 1, width() - x, detailLine), Qt::AlignLeft, line);
            y += detailLine;
        }
    }

private:
    int textLeft() const { return m_toast.icon ? leftPad + iconSize + toastGap : rightPad; }

    void layOut(int most)
    {
        const int actionWidth = m_action != nullptr ? toastGap + m_action->width() : 0;
        // The action's own padding stands in the panel's.
        const int end = m_action != nullptr ? rightPad - 8 : rightPad;
        const int room = std::max(40, most - textLeft() - actionWidth - end);
        m_lines = m_text.lines(m_toast.text, room, 2);
        m_details = m_detail.lines(m_toast.detail, room, 3);
        double words = 0;
        for (const QString& line : m_lines)
            words = std::max(words, m_text.width(line));
        for (const QString& line : m_details)
            words = std::max(words, m_detail.width(line));

        const int wanted = textLeft() + static_cast<int>(std::ceil(words)) + actionWidth + end;
        const int width = std::clamp(wanted, std::min(toastLeastWidth, most), most);
        const bool plain = m_details.empty() && m_lines.size() <= 1;
        const double high = static_cast<double>(m_lines.size()) * toastLine +
                            static_cast<double>(m_details.size()) * detailLine +
                            (m_details.empty() ? 0 : 1);
        resize(width,
            plain ? plainHeight : detailTop + detailBottom + static_cast<int>(std::ceil(high)));
        if (m_action != nullptr)
            m_action->move(width - end - m_action->width(), (height() - m_action->height()) / 2);
    }

    const Toast m_toast;
    Lettering m_text{TypeStyle::Label};
    Lettering m_detail{TypeStyle::Small};
    std::vector<QString> m_lines, m_details;
    ToastAction* m_action = nullptr;
};

} // namespace

ToastStack::ToastStack(QWidget& host)
    : QObject(&host)
    , m_host(host)
{
    m_clock.start();
    m_end.setSingleShot(true);
    connect(&m_end, &QTimer::timeout, this, [this] {
        m_model.expire(now());
        synchronize();
    });
    host.installEventFilter(this);
}

void ToastStack::show(const Toast& toast, std::function<void()> act)
{
    const ToastModel::Id id = m_model.show(toast, now());
    auto* panel = new ToastPanel(toast, &m_host);
    panel->installEventFilter(this);
    connect(panel, &GlassPanel::left, panel, &QObject::deleteLater);
    if (ButtonBase* action = panel->action(); action != nullptr) {
        action->installEventFilter(this);
        connect(action, &QAbstractButton::clicked, this, [this, id, run = std::move(act)] {
            m_model.dismiss(id);
            synchronize();
            if (run)
                run();
        });
    }
    m_panels[id] = panel;
    synchronize();
    panel->raise();
    panel->appear();

    QAccessibleEvent announcement(panel, QAccessible::Alert);
    QAccessible::updateAccessibility(&announcement);
}

void ToastStack::dismiss(const QString& key)
{
    std::vector<ToastModel::Id> ids;
    for (const auto& standing : m_model.toasts())
        if (standing.toast.key == key)
            ids.push_back(standing.id);
    for (const ToastModel::Id id : ids)
        m_model.dismiss(id);
    synchronize();
}

void ToastStack::setBottom(int pixels)
{
    m_bottom = pixels;
    place();
}

bool ToastStack::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Resize:
        if (watched == &m_host)
            place();
        break;
    case QEvent::Enter:
    case QEvent::FocusIn:
        if (watched != &m_host) {
            m_model.hold(now());
            synchronize();
        }
        break;
    case QEvent::Leave:
    case QEvent::FocusOut:
        if (watched != &m_host)
            synchronize();
        break;
    default:
        break;
    }
    return false;
}

// The pointer or the keyboard is on a toast: it is being read.
bool ToastStack::isAttended() const
{
    return std::any_of(m_panels.begin(), m_panels.end(), [](const auto& entry) {
        const QWidget* focus = entry.second->window()->focusWidget();
        return entry.second->underMouse() ||
               (focus != nullptr && entry.second->isAncestorOf(focus) && focus->hasFocus());
    });
}

// Lets the panels go whose toasts are gone, and waits for the next end.
void ToastStack::synchronize()
{
    const auto stands = [this](ToastModel::Id id) {
        return std::any_of(m_model.toasts().begin(), m_model.toasts().end(),
            [id](const ToastModel::Standing& standing) { return standing.id == id; });
    };
    for (auto entry = m_panels.begin(); entry != m_panels.end();) {
        if (stands(entry->first)) {
            ++entry;
            continue;
        }
        GlassPanel* panel = entry->second;
        entry = m_panels.erase(entry);
        panel->removeEventFilter(this);
        panel->leave();
    }
    if (!isAttended())
        m_model.release(now());
    place();
    if (const auto end = m_model.nextEnd())
        m_end.start(static_cast<int>(std::max<std::int64_t>(0, *end - now())));
    else
        m_end.stop();
}

void ToastStack::place()
{
    int y = m_host.height() - m_bottom;
    for (auto entry = m_panels.rbegin(); entry != m_panels.rend(); ++entry) {
        GlassPanel* panel = entry->second;
        y -= panel->height();
        panel->move((m_host.width() - panel->width()) / 2, y);
        y -= toastBetween;
    }
}

} // namespace corvelle
