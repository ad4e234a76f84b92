#include "interface/sheet/WorkbookScreen.h"

#include "interface/sheet/CellBar.h"
#include "interface/sheet/SheetTabs.h"
#include "interface/theme/Fonts.h"
#include "interface/theme/Icons.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int noticeHeight = 28, buttonEdge = 8, footSide = 16, noteWidth = 460;

const QString cutNotice =
    u"Preview limited to the first 1,000 rows, 40 columns, and 2,000 characters per cell."_s;
const QString emptyNote = u"This sheet is empty."_s;

QString counted(qsizetype count, const QString& one)
{
    const QString number = QLocale(QLocale::English).toString(count);
    return number + u' ' + one + (count == 1 ? QString() : u"s"_s);
}

} // namespace

WorkbookScreen::WorkbookScreen(QWidget* parent)
    : QWidget(parent)
    , m_view(new SheetView(this))
    , m_bar(new CellBar(this))
    , m_tabs(new SheetTabs(this))
    , m_search(new BarButton(Icon::Search, u"Find"_s, this))
    , m_app(new BarButton(Icon::Open, u"Open in its app"_s, this))
    , m_more(new BarButton(Icon::More, u"More"_s, this))
    , m_close(new BarButton(Icon::Close, u"Close"_s, this))
    , m_find(new FindBar(u"Find in all sheets"_s, this))
    , m_arrival(*this)
{
    setFocusPolicy(Qt::StrongFocus);
    const auto key = [](Qt::Key code, Qt::KeyboardModifiers modifiers = {}) {
        return QKeySequence(static_cast<int>(code) | static_cast<int>(modifiers))
            .toString(QKeySequence::NativeText);
    };
    m_search->setName(u"Find"_s, key(Qt::Key_F, Qt::ControlModifier));
    m_close->setName(u"Close"_s, key(Qt::Key_Escape));
    setTabOrder(m_view, m_tabs);
    setTabOrder(m_tabs, m_search);
    setTabOrder(m_search, m_app);
    setTabOrder(m_app, m_more);
    setTabOrder(m_more, m_close);
    connect(m_search, &QAbstractButton::clicked, this, &WorkbookScreen::openFind);
    connect(m_app, &QAbstractButton::clicked, this, &WorkbookScreen::appWanted);
    connect(m_more, &QAbstractButton::clicked, this, &WorkbookScreen::moreWanted);
    connect(m_close, &QAbstractButton::clicked, this, &WorkbookScreen::closeWanted);
    connect(m_view, &SheetView::closeWanted, this, &WorkbookScreen::escape);
    connect(m_view, &SheetView::pickChanged, this, &WorkbookScreen::showPick);
    connect(m_view, &SheetView::wholeTextWanted, this, [this] { m_bar->setOpen(true); });
    connect(m_bar, &CellBar::openChanged, this, &WorkbookScreen::showText);
    connect(m_view, &SheetView::sheetWanted, this, &WorkbookScreen::turn);
    connect(m_view, &SheetView::foundWanted, this, &WorkbookScreen::foundWanted);
    connect(m_tabs, &QTabBar::currentChanged, this, &WorkbookScreen::sheetWanted);
    connect(m_find, &FindBar::wordsChanged, this, &WorkbookScreen::findWanted);
    connect(m_find, &FindBar::stepWanted, this, &WorkbookScreen::foundWanted);
    connect(m_find, &FindBar::closeWanted, this, &WorkbookScreen::closeFind);
    connect(&m_arrival, &Arrival::ended, this, &WorkbookScreen::stand);
}

WorkbookScreen::~WorkbookScreen() = default;

// ---- what is shown ----

void WorkbookScreen::setName(const QString& name)
{
    m_name = name;
    setAccessibleName(name);
}

void WorkbookScreen::setSheets(const QStringList& names, int current, int count)
{
    m_sheetCount = count;
    m_tabs->setSheets(names, current);
    if (names.isEmpty())
        closeFind();
    layOut();
    update();
}

void WorkbookScreen::showRows(SheetView::Rows rows, Begin begin)
{
    m_notice = rows->isCut ? cutNotice : QString();
    if (rows->rows.empty() && !rows->isCut) {
        showNote(emptyNote);
        return;
    }
    m_note.clear();
    setAccessibleDescription(m_notice);
    if (begin == Begin::Anew)
        m_view->open(m_tabs->tabData(m_tabs->currentIndex()).toString(), std::move(rows));
    else
        m_view->refresh(std::move(rows));
    showParts();
}

void WorkbookScreen::showNote(const QString& title, const QString& detail)
{
    m_note = title;
    m_noteDetail = detail;
    m_bar->setOpen(false);
    m_notice.clear();
    showParts();
    setAccessibleDescription(detail.isEmpty() ? title : title + u' ' + detail);
}

void WorkbookScreen::showParts()
{
    const bool shows = !m_arrival.isComing(), sheet = shows && m_note.isEmpty();
    const bool hadFocus = m_view->hasFocus() || hasFocus();
    m_view->setVisible(sheet);
    m_bar->setVisible(sheet);
    m_search->setVisible(shows && canFind());
    m_tabs->setVisible(shows && m_tabs->count() > 0);
    m_app->setVisible(shows);
    m_more->setVisible(shows);
    m_close->setVisible(shows);
    layOut();
    if (hadFocus)
        takeFocus();
    update();
}

void WorkbookScreen::showPick()
{
    const CellPlace picked = m_view->pick().picked;
    m_bar->setCell(placeName(picked), textAt(m_view->sheet(), picked));
}

void WorkbookScreen::showText()
{
    const bool hadFocus = m_bar->hasFocus();
    m_bar->raise();
    m_find->raise();
    layOut();
    if (m_bar->isOpen())
        m_bar->setFocus();
    else if (hadFocus)
        takeFocus();
}

QString WorkbookScreen::countWords() const
{
    const QString all = counted(m_sheetCount, u"sheet"_s);
    const QString sheets =
        m_tabs->count() < m_sheetCount ? u"First %1 of %2"_s.arg(m_tabs->count()).arg(all) : all;
    return m_note.isEmpty()
               ? sheets + u" · "_s +
                     counted(static_cast<qsizetype>(m_view->sheet().rows.size()), u"row"_s)
               : sheets;
}

// ---- layout ----

QRect WorkbookScreen::body() const
{
    const int foot =
        (m_tabs->count() > 0 ? SheetTabs::barHeight : 0) + (m_notice.isEmpty() ? 0 : noticeHeight);
    return rect().adjusted(0, headHeight, 0, -foot);
}

void WorkbookScreen::layOut()
{
    const QRect area = body();
    m_bar->setTaken(m_isFinding ? m_find->width() + 8 : 0);
    m_bar->setGeometry(
        area.left(), area.top(), area.width(), m_bar->heightFor(area.width(), area.height() / 2));
    m_view->setGeometry(area.adjusted(0, CellBar::rowHeight, 0, 0));
    const int words =
        static_cast<int>(Lettering(TypeStyle::Small).width(countWords())) + 2 * footSide;
    m_tabs->setGeometry(8, height() - SheetTabs::barHeight, std::max(120, width() - 8 - words),
        SheetTabs::barHeight);
    int right = width() - buttonEdge;
    for (BarButton* button : {m_close, m_more, m_app, m_search}) {
        button->resize(button->sizeHint());
        right -= button->width();
        button->move(right, (headHeight - button->height()) / 2);
        right -= button == m_close ? 9 : 2;
    }
    // Beside the text of the cell it hides nothing of what it finds.
    m_find->move(
        width() - 2 - m_find->width(), headHeight + (CellBar::rowHeight - m_find->height()) / 2);
}

void WorkbookScreen::resizeEvent(QResizeEvent*)
{
    m_arrival.end();
    layOut();
}

int WorkbookScreen::headEnd() const
{
    return m_search->x();
}

QRect WorkbookScreen::moreButton() const
{
    return m_more->geometry();
}

QRect WorkbookScreen::appButton() const
{
    return m_app->isVisibleTo(this) ? m_app->geometry() : QRect();
}

// ---- coming ----

void WorkbookScreen::comeFrom(const QRectF& card)
{
    m_arrival.end();
    layOut();
    if (m_arrival.begin(rect(), card))
        showParts();
}

void WorkbookScreen::stand()
{
    showParts();
}

void WorkbookScreen::takeFocus()
{
    if (m_view->isVisibleTo(this))
        m_view->setFocus();
    else
        setFocus();
}

// ---- painting ----

void WorkbookScreen::paintHead(QPainter& painter) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.fillRect(QRect(0, headHeight - 1, width(), 1), colors.hairlineFaint);
    painter.fillRect(QRectF(m_close->x() - 5, headHeight / 2.0 - 10, 1, 20), colors.hairline);
}

void WorkbookScreen::paintNote(QPainter& painter) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    const Lettering title(TypeStyle::AlertTitle), detail(TypeStyle::LabelText);
    const QRectF box(
        (width() - noteWidth) / 2.0, body().top() + body().height() * 0.36, noteWidth, 0);
    double top = box.top();
    const auto draw = [&](const Lettering& letters, const QString& words, const QColor& ink) {
        painter.setPen(ink);
        for (const QString& line : letters.lines(words, noteWidth, 8)) {
            letters.draw(painter, QRectF(box.left(), top, noteWidth, letters.lineHeight()),
                Qt::AlignHCenter, line);
            top += letters.lineHeight();
        }
    };
    draw(title, m_note, m_noteDetail.isEmpty() ? colors.ink2 : colors.ink);
    top += 6;
    draw(detail, m_noteDetail, colors.ink2);
}

void WorkbookScreen::paintFoot(QPainter& painter) const
{
    const Palette& colors = corvelle::palette(schemeOf(*this));
    const QRect foot(0, body().bottom() + 1, width(), height() - body().bottom() - 1);
    painter.fillRect(foot, colors.sunken);
    painter.fillRect(QRect(0, foot.top(), width(), 1), colors.hairline);
    const Lettering letters(TypeStyle::Small);
    painter.setPen(colors.ink3);
    if (!m_notice.isEmpty()) {
        const QRectF row(footSide, foot.top(), width() - 2 * footSide, noticeHeight);
        letters.draw(
            painter, row, Qt::AlignLeft, letters.elided(m_notice, row.width(), Qt::ElideRight));
        painter.fillRect(QRect(0, foot.top() + noticeHeight, width(), 1), colors.hairlineFaint);
    }
    if (m_tabs->count() > 0)
        letters.draw(painter,
            QRectF(footSide, height() - SheetTabs::barHeight, width() - 2 * footSide,
                SheetTabs::barHeight),
            Qt::AlignRight, countWords());
}

void WorkbookScreen::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (m_arrival.isComing()) {
        painter.setRenderHint(QPainter::Antialiasing);
        m_arrival.paint(painter, rect(), (1 - m_arrival.share()) * radius::sheet);
        return;
    }
    painter.fillRect(rect(), corvelle::palette(schemeOf(*this)).surface);
    paintHead(painter);
    if (!m_note.isEmpty())
        paintNote(painter);
    paintFoot(painter);
}

// ---- input ----

// Nobody waits for the screen to come up: a key ends that, and is the sheet's.
bool WorkbookScreen::event(QEvent* event)
{
    if (event->type() == QEvent::KeyPress && m_arrival.isComing()) {
        m_arrival.end();
        QCoreApplication::sendEvent(focusWidget() ? focusWidget() : this, event);
        return true;
    }
    return QWidget::event(event);
}

void WorkbookScreen::keyPressEvent(QKeyEvent* event)
{
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (event->key() == Qt::Key_Escape)
        escape();
    else if (control && (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown))
        turn(event->key() == Qt::Key_PageDown ? 1 : -1);
    else
        QWidget::keyPressEvent(event);
}

void WorkbookScreen::mousePressEvent(QMouseEvent* event)
{
    m_arrival.end();
    if (event->button() == Qt::BackButton || event->button() == Qt::ForwardButton)
        event->ignore(); // the window goes back and forward
}

void WorkbookScreen::wheelEvent(QWheelEvent* event)
{
    event->accept(); // the canvas below keeps still
}

void WorkbookScreen::turn(int step)
{
    const int wanted = m_tabs->currentIndex() + step;
    if (wanted >= 0 && wanted < m_tabs->count())
        m_tabs->setCurrentIndex(wanted);
}

void WorkbookScreen::escape()
{
    if (m_bar->isOpen())
        m_bar->setOpen(false);
    else if (isFinding())
        closeFind();
    else
        emit closeWanted();
}

// ---- finding ----

bool WorkbookScreen::canFind() const
{
    return m_tabs->count() > 0;
}

void WorkbookScreen::openFind()
{
    if (!canFind())
        return;
    m_isFinding = true;
    m_bar->setOpen(false); // it may lie over what is found
    m_find->raise();
    layOut();
    m_find->open();
    emit findWanted(m_find->words());
}

void WorkbookScreen::setFindWords(const QString& words)
{
    m_find->setWords(words);
}

void WorkbookScreen::showFound(
    std::vector<CellPlace> here, int current, int count, FindBar::Search search)
{
    m_view->setFound(std::move(here));
    m_find->setCount(current, count, search);
}

void WorkbookScreen::closeFind()
{
    if (!std::exchange(m_isFinding, false))
        return;
    m_find->leave();
    layOut();
    emit findWanted({});
    takeFocus();
}

} // namespace corvelle
