#include "interface/page/PageSheet.h"

#include "interface/theme/Fonts.h"
#include "interface/theme/Shadows.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/FindBar.h"
#include "interface/widgets/Look.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int widestSheet = 920, sideRoom = 24, sheetTop = 76, headRow = 48;
constexpr int headSide = 18, buttonEdge = 8;

} // namespace

PageSheet::PageSheet(ItemLooks items, MentionSource mentions, QWidget* parent)
    : QWidget(parent)
    , m_view(new PageView(std::move(items), std::move(mentions), this))
    , m_app(new BarButton(Icon::Open, u"Open in its app"_s, this))
    , m_more(new BarButton(Icon::More, u"More"_s, this))
    , m_close(new BarButton(Icon::Close, u"Close"_s, this))
    , m_find(new FindBar(u"Find in the page"_s, this))
    , m_arrival(*this)
{
    m_close->setName(u"Close"_s, QKeySequence(Qt::Key_Escape).toString(QKeySequence::NativeText));
    setTabOrder(m_view, m_app);
    setTabOrder(m_app, m_more);
    setTabOrder(m_more, m_close);
    m_app->hide();
    connect(m_app, &QAbstractButton::clicked, this, &PageSheet::appWanted);
    connect(m_more, &QAbstractButton::clicked, this, &PageSheet::moreWanted);
    connect(m_close, &QAbstractButton::clicked, this, &PageSheet::closeWanted);
    connect(m_view, &PageView::closeWanted, this, &PageSheet::escape);
    connect(m_view, &PageView::foundChanged, this,
        [this] { m_find->setCount(m_view->currentFound(), m_view->foundCount()); });
    connect(m_find, &FindBar::wordsChanged, m_view, &PageView::find);
    connect(m_find, &FindBar::stepWanted, m_view, &PageView::goToFound);
    connect(m_find, &FindBar::closeWanted, this, &PageSheet::closeFind);
    connect(&m_arrival, &Arrival::ended, this, &PageSheet::stand);
}

PageSheet::~PageSheet() = default;

void PageSheet::setName(Icon sign, const QString& name, Apps apps)
{
    m_hasApp = apps == Apps::Another;
    m_app->setVisible(m_hasApp && !m_arrival.isComing());
    m_sign = sign;
    m_name = name;
    m_view->setAccessibleName(name);
    layOut();
    update();
}

// ---- layout ----

QRect PageSheet::sheet() const
{
    const int wide = std::min(widestSheet, width() - 2 * sideRoom);
    return QRect((width() - wide) / 2, sheetTop, wide, std::max(headRow, height() - sheetTop));
}

void PageSheet::layOut()
{
    const QRect place = sheet();
    m_view->setGeometry(place.adjusted(0, headRow, 0, 0));
    const int middle = place.top() + headRow / 2;
    int right = place.right() + 1 - buttonEdge;
    for (BarButton* button : {m_close, m_more, m_app}) {
        if (button == m_app && !m_hasApp)
            break;
        button->resize(button->sizeHint());
        right -= button->width();
        button->move(right, middle - button->height() / 2);
        right -= button == m_close ? 9 : 2;
    }
    // In the head row it hides nothing of what it finds.
    m_find->move(right - 4 - m_find->width(), middle - m_find->height() / 2);
}

void PageSheet::resizeEvent(QResizeEvent*)
{
    m_arrival.end();
    layOut();
}

QRect PageSheet::moreButton() const
{
    return m_more->geometry();
}

QRect PageSheet::appButton() const
{
    return m_app->isVisibleTo(this) ? m_app->geometry() : QRect();
}

void PageSheet::showParts(bool shows)
{
    m_view->setVisible(shows);
    m_app->setVisible(shows && m_hasApp);
    m_more->setVisible(shows);
    m_close->setVisible(shows);
}

void PageSheet::stand()
{
    const bool hadFocus = hasFocus();
    showParts(true);
    if (hadFocus)
        m_view->setFocus();
    update();
}

void PageSheet::takeFocus()
{
    if (m_arrival.isComing())
        setFocus();
    else
        m_view->setFocus();
}

void PageSheet::comeFrom(const QRectF& card)
{
    m_arrival.end();
    layOut();
    if (m_arrival.begin(sheet(), card))
        showParts(false);
}

// ---- painting ----

void PageSheet::paintSheet(QPainter& painter, const QRectF& box) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    drawShadow(
        painter, box.adjusted(0, 0, 0, 40), radius::sheet, Elevation::Sheet, schemeOf(*this));
    QPainterPath surface;
    surface.addRoundedRect(box.adjusted(0, 0, 0, radius::sheet + 4), radius::sheet, radius::sheet);
    painter.fillPath(surface, colors.surface);
    painter.setPen(QPen(colors.glassEdge, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(surface);
    painter.fillRect(
        QRectF(box.left(), box.top() + headRow - 1, box.width(), 1), colors.hairlineFaint);

    const double middle = box.top() + headRow / 2.0;
    drawIcon(painter, m_sign, QRectF(box.left() + headSide, middle - 9, 18, 18), colors.ink3);
    const Lettering letters(TypeStyle::Label);
    const int end = m_isFinding ? m_find->x() : m_hasApp ? m_app->x() : m_more->x();
    const QRectF name(box.left() + headSide + 26, box.top(),
        std::max(0.0, end - box.left() - headSide - 26 - 12), headRow - 1);
    painter.setPen(colors.ink);
    letters.draw(
        painter, name, Qt::AlignLeft, letters.elided(m_name, name.width(), Qt::ElideMiddle));
    painter.fillRect(QRectF(m_close->x() - 5, middle - 10, 1, 20), colors.hairline);
}

void PageSheet::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QColor dim = corvelle::palette(schemeOf(*this)).dim;
    dim.setAlphaF(dim.alphaF() * static_cast<float>(m_arrival.share()));
    painter.fillRect(rect(), dim);
    if (m_arrival.isComing())
        m_arrival.paint(painter, sheet(), radius::sheet);
    else
        paintSheet(painter, sheet());
}

// ---- input ----

// Nobody waits for the sheet to come up: a key ends that, and is the page's.
bool PageSheet::event(QEvent* event)
{
    if (event->type() == QEvent::KeyPress && m_arrival.isComing()) {
        m_arrival.end();
        QCoreApplication::sendEvent(m_view, event);
        return true;
    }
    return QWidget::event(event);
}

void PageSheet::mousePressEvent(QMouseEvent* event)
{
    m_arrival.end();
    if (event->button() == Qt::BackButton || event->button() == Qt::ForwardButton)
        event->ignore(); // the window goes back and forward
    else if (!sheet().contains(event->position().toPoint()))
        emit closeWanted();
}

void PageSheet::wheelEvent(QWheelEvent* event)
{
    event->accept(); // the canvas below keeps still
}

void PageSheet::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        escape();
    else
        QWidget::keyPressEvent(event);
}

void PageSheet::escape()
{
    if (isFinding())
        closeFind();
    else
        emit closeWanted();
}

// ---- finding ----

void PageSheet::openFind()
{
    if (m_view->hasSelection() && !isFinding()) {
        const auto [from, to] = m_view->selection();
        const QString words = m_view->page().text.text(from, std::min(to, from + 200));
        if (!words.contains(u'\n') && !words.contains(lineBreak))
            m_find->setWords(words);
    }
    m_isFinding = true;
    m_find->raise();
    m_find->open();
    m_view->find(m_find->words());
    update();
}

void PageSheet::setFindWords(const QString& words)
{
    m_find->setWords(words);
}

void PageSheet::closeFind()
{
    if (!std::exchange(m_isFinding, false))
        return;
    m_find->leave();
    m_view->find({});
    takeFocus();
    update();
}

} // namespace corvelle
