#include "interface/widgets/OpenedFrame.h"

#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int buttonEdge = 8, buttonGap = 2, closeGap = 9; // a line stands in the gap before Close

} // namespace

OpenedFrame::OpenedFrame(const QString& where, QWidget* parent)
    : QWidget(parent)
    , m_app(new BarButton(Icon::Open, u"Open in its app"_s, this))
    , m_more(new BarButton(Icon::More, u"More"_s, this))
    , m_close(new BarButton(Icon::Close, u"Close"_s, this))
    , m_buttons{m_app, m_more, m_close}
    , m_find(new FindBar(where, this))
    , m_arrival(*this)
{
    m_close->setName(u"Close"_s, QKeySequence(Qt::Key_Escape).toString(QKeySequence::NativeText));
    m_app->hide();
    connect(m_app, &QAbstractButton::clicked, this, &OpenedFrame::appWanted);
    connect(m_more, &QAbstractButton::clicked, this, &OpenedFrame::moreWanted);
    connect(m_close, &QAbstractButton::clicked, this, &OpenedFrame::closeWanted);
    connect(m_find, &FindBar::wordsChanged, this, &OpenedFrame::find);
    connect(m_find, &FindBar::stepWanted, this, &OpenedFrame::goToFound);
    connect(m_find, &FindBar::closeWanted, this, &OpenedFrame::closeFind);
    connect(&m_arrival, &Arrival::ended, this, &OpenedFrame::updateParts);
}

OpenedFrame::~OpenedFrame() = default;

// ---- coming ----

void OpenedFrame::comeFrom(const QRectF& card)
{
    m_arrival.end();
    layOut();
    if (m_arrival.begin(place(), card))
        updateParts();
}

void OpenedFrame::showParts(bool shows)
{
    m_app->setVisible(shows && m_hasApp);
    m_more->setVisible(shows);
    m_close->setVisible(shows);
}

void OpenedFrame::updateParts()
{
    const bool hadFocus = hasFocus() || content().hasFocus();
    showParts(!m_arrival.isComing());
    layOut();
    if (hadFocus)
        takeFocus();
    update();
}

void OpenedFrame::takeFocus()
{
    QWidget& inside = content();
    (inside.isVisibleTo(this) ? inside : *this).setFocus();
}

// ---- the head row ----

void OpenedFrame::addButton(BarButton* button)
{
    m_buttons.insert(m_buttons.begin(), button);
}

void OpenedFrame::setHasApp(bool hasApp)
{
    m_hasApp = hasApp;
    m_app->setVisible(hasApp && !m_arrival.isComing());
    layOut();
}

void OpenedFrame::orderTabs(const std::vector<QWidget*>& inside)
{
    QWidget* last = nullptr;
    const auto append = [&last](QWidget* next) {
        if (last)
            setTabOrder(last, next);
        last = next;
    };
    std::for_each(inside.begin(), inside.end(), append);
    std::for_each(m_buttons.begin(), m_buttons.end(), append);
}

void OpenedFrame::layOutHead()
{
    const QRect head = place();
    int right = head.right() + 1 - buttonEdge;
    for (auto at = m_buttons.rbegin(); at != m_buttons.rend(); ++at) {
        BarButton& button = **at;
        if (&button == m_app && !m_hasApp)
            continue;
        button.resize(button.sizeHint());
        right -= button.width();
        button.move(right, head.top() + (headHeight - button.height()) / 2);
        right -= &button == m_close ? closeGap : buttonGap;
    }
}

int OpenedFrame::headEnd() const
{
    const bool isThere = m_hasApp || m_buttons.front() != m_app;
    return (isThere ? m_buttons.front() : m_more)->x();
}

QRect OpenedFrame::moreButton() const
{
    return m_more->geometry();
}

QRect OpenedFrame::appButton() const
{
    return m_app->isVisibleTo(this) ? m_app->geometry() : QRect();
}

void OpenedFrame::paintHead(QPainter& painter) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    const QRectF head = place();
    painter.fillRect(
        QRectF(head.left(), head.top() + headHeight - 1, head.width(), 1), colors.hairlineFaint);
    painter.fillRect(
        QRectF(m_close->x() - 5, head.top() + headHeight / 2.0 - 10, 1, 20), colors.hairline);
}

// ---- input ----

void OpenedFrame::resizeEvent(QResizeEvent*)
{
    m_arrival.end();
    layOut();
}

// Nobody waits for it to come up: a key ends that, and is the content's.
bool OpenedFrame::event(QEvent* event)
{
    if (event->type() == QEvent::KeyPress && m_arrival.isComing()) {
        m_arrival.end();
        QCoreApplication::sendEvent(focusWidget() ? focusWidget() : this, event);
        return true;
    }
    return QWidget::event(event);
}

void OpenedFrame::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        escape();
    else
        QWidget::keyPressEvent(event);
}

void OpenedFrame::mousePressEvent(QMouseEvent* event)
{
    m_arrival.end();
    if (event->button() == Qt::BackButton || event->button() == Qt::ForwardButton)
        event->ignore(); // the window goes back and forward
    else if (!place().contains(event->position().toPoint()))
        emit closeWanted();
}

void OpenedFrame::wheelEvent(QWheelEvent* event)
{
    event->accept(); // the canvas below keeps still
}

void OpenedFrame::escape()
{
    if (closeInside())
        return;
    if (m_isFinding)
        closeFind();
    else
        emit closeWanted();
}

// ---- finding ----

void OpenedFrame::openFind()
{
    if (!canFind())
        return;
    const QString words = m_isFinding ? QString() : wordsToFind();
    if (!words.isEmpty())
        m_find->setWords(words);
    m_isFinding = true;
    closeInside(); // it may lie over what is found
    m_find->raise();
    layOut();
    m_find->open();
    find(m_find->words());
    update();
}

void OpenedFrame::closeFind()
{
    if (!std::exchange(m_isFinding, false))
        return;
    m_find->leave();
    layOut();
    find({});
    takeFocus();
    update();
}

} // namespace corvelle
