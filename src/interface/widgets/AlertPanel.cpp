#include "interface/widgets/AlertPanel.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/PushButton.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace corvelle {
namespace {

constexpr int panelWidth = 448, side = 24, top = 24, bottom = 20, textGap = 8, buttonGap = 22,
              between = 12, snugBetween = 8;
constexpr int leastHostEdge = 16;
constexpr double titleLine = 22, textLine = 20;

// The surface with title and text; the buttons are its children.
class Sheet : public GlassPanel
{
public:
    Sheet(const Alert& alert, QWidget* parent)
        : GlassPanel(Fill::Panel, radius::alert, parent)
    {
        constexpr double room = panelWidth - 2 * side;
        m_titleLines = m_title.lines(alert.title, room, 3);
        m_textLines = m_text.lines(alert.text, room, 12);
        setAccessibleName(alert.title);
        setAccessibleDescription(alert.text);
    }

    int buttonsTop() const
    {
        const double lines = static_cast<double>(m_titleLines.size()) * titleLine +
                             static_cast<double>(m_textLines.size()) * textLine +
                             (m_textLines.empty() ? 0 : textGap);
        return top + static_cast<int>(std::ceil(lines)) + buttonGap;
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        GlassPanel::paintEvent(event);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        QPainter painter(this);
        double y = top;
        painter.setPen(colors.ink);
        for (const QString& line : m_titleLines) {
            m_title.draw(painter, QRectF(side, y, panelWidth, titleLine), Qt::AlignLeft, line);
            y += titleLine;
        }
        y += textGap;
        painter.setPen(colors.ink2);
        for (const QString& line : m_textLines) {
            m_text.draw(painter, QRectF(side, y, panelWidth, textLine), Qt::AlignLeft, line);
            y += textLine;
        }
    }

private:
    Lettering m_title{TypeStyle::AlertTitle};
    Lettering m_text{TypeStyle::LabelText};
    std::vector<QString> m_titleLines, m_textLines;
};

PushButton::Role roleOf(Alert::Role role)
{
    if (role == Alert::Role::Likely)
        return PushButton::Role::Primary;
    return role == Alert::Role::LikelyDanger ? PushButton::Role::PrimaryDanger
                                             : PushButton::Role::Secondary;
}

bool isLikely(Alert::Role role)
{
    return role == Alert::Role::Likely || role == Alert::Role::LikelyDanger;
}

} // namespace

AlertPanel::AlertPanel(const Alert& alert, QWidget& host)
    : QWidget(&host)
    , m_host(host)
    , m_alert(alert)
    , m_focusBefore(QApplication::focusWidget())
{
    auto* sheet = new Sheet(alert, this);
    m_panel = sheet;
    const int y = sheet->buttonsTop();

    for (int i = 0; i < static_cast<int>(alert.answers.size()); ++i) {
        const Alert::Answer& answer = alert.answers[static_cast<std::size_t>(i)];
        auto* button = new PushButton(answer.words, roleOf(answer.role), sheet);
        button->resize(button->sizeHint());
        connect(button, &QAbstractButton::clicked, this, [this, i] { choose(i); });
        m_buttons.push_back(button);
    }
    sheet->resize(panelWidth, layOutButtons(y) + bottom);

    setFocusPolicy(Qt::StrongFocus);
    host.installEventFilter(this);
    place();
    show();
    raise();
    sheet->appear();
    if (const int likely = answerOf(false); likely >= 0)
        m_buttons[static_cast<std::size_t>(likely)]->setFocus(Qt::OtherFocusReason);
    else
        setFocus(Qt::OtherFocusReason);

    QAccessibleEvent announcement(sheet, QAccessible::Alert);
    QAccessible::updateAccessibility(&announcement);
}

int AlertPanel::layOutButtons(int y)
{
    constexpr int room = panelWidth - 2 * side;
    const auto rowWidth = [this](int gap) {
        int width = -gap;
        for (const PushButton* button : m_buttons)
            width += button->width() + gap;
        return width;
    };
    int gap = between;
    if (rowWidth(gap) > room) {
        gap = snugBetween;
        for (PushButton* button : m_buttons) {
            button->setSnug();
            button->resize(button->sizeHint());
        }
    }
    if (rowWidth(gap) > room) {
        // Long words stand one below the other, the likely answer first.
        for (auto button = m_buttons.rbegin(); button != m_buttons.rend(); ++button) {
            (*button)->setGeometry(side, y, room, (*button)->height());
            y += (*button)->height() + snugBetween;
        }
        return y - snugBetween;
    }
    int right = panelWidth - side;
    for (std::size_t i = m_buttons.size(); i-- > 0;) {
        PushButton* button = m_buttons[i];
        const bool out = m_alert.answers[i].role == Alert::Role::WayOut && m_buttons.size() > 1;
        button->move(out ? side : right - button->width(), y);
        right -= out ? 0 : button->width() + gap;
    }
    return m_buttons.empty() ? y : y + m_buttons.front()->height();
}

void AlertPanel::choose(int answer)
{
    if (m_isAnswered || answer < 0 || answer >= static_cast<int>(m_buttons.size()))
        return;
    m_isAnswered = true;
    hide();
    deleteLater();
    if (m_focusBefore)
        m_focusBefore->setFocus(Qt::OtherFocusReason);
    emit chosen(answer);
}

QRect AlertPanel::answerPlace(int answer) const
{
    const PushButton* button = m_buttons[static_cast<std::size_t>(answer)];
    return QRect(button->mapTo(&m_host, QPoint(0, 0)), button->size());
}

int AlertPanel::answerOf(bool wayOut) const
{
    for (std::size_t i = 0; i < m_alert.answers.size(); ++i) {
        const Alert::Role role = m_alert.answers[i].role;
        if (wayOut ? role == Alert::Role::WayOut : isLikely(role))
            return static_cast<int>(i);
    }
    // A single answer is both.
    return m_alert.answers.size() == 1 ? 0 : -1;
}

void AlertPanel::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), corvelle::palette(schemeOf(*this)).dim);
}

void AlertPanel::keyPressEvent(QKeyEvent* event)
{
    // A focused button answers Return itself.
    if (event->key() == Qt::Key_Escape)
        choose(answerOf(true));
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        choose(answerOf(false));
    // All other keys end here: what they mean to the window must not happen below a question.
}

void AlertPanel::mousePressEvent(QMouseEvent*) {}

bool AlertPanel::focusNextPrevChild(bool next)
{
    if (m_buttons.empty())
        return true;
    const auto at = std::find(m_buttons.begin(), m_buttons.end(), QApplication::focusWidget());
    const std::size_t count = m_buttons.size();
    const std::size_t index = at == m_buttons.end()
                                  ? (next ? count - 1 : 0)
                                  : static_cast<std::size_t>(at - m_buttons.begin());
    m_buttons[(index + (next ? 1 : count - 1)) % count]->setFocus(
        next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

bool AlertPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_host && event->type() == QEvent::Resize)
        place();
    return false;
}

void AlertPanel::place()
{
    setGeometry(m_host.rect());
    const int x = (width() - m_panel->width()) / 2;
    // A little above the middle, where the eye rests.
    const int y = std::max(leastHostEdge, (height() - m_panel->height()) * 2 / 5);
    m_panel->move(x, y);
}

} // namespace corvelle
