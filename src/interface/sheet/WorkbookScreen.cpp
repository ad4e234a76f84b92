#include "interface/sheet/WorkbookScreen.h"

#include "interface/sheet/CellBar.h"
#include "interface/sheet/SheetTabs.h"
#include "interface/theme/Fonts.h"
#include "interface/theme/Icons.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QKeyEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int noticeHeight = 28, footSide = 16, noteWidth = 460;

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
    : OpenedFrame(u"Find in all sheets"_s, parent)
    , m_view(new SheetView(this))
    , m_bar(new CellBar(this))
    , m_tabs(new SheetTabs(this))
    , m_search(new BarButton(Icon::Search, u"Find"_s, this))
{
    setFocusPolicy(Qt::StrongFocus);
    m_search->setName(u"Find"_s, QKeySequence(u"Ctrl+F"_s).toString(QKeySequence::NativeText));
    addButton(m_search);
    setHasApp(true);
    orderTabs({m_view, m_tabs});
    connect(m_search, &QAbstractButton::clicked, this, &WorkbookScreen::openFind);
    connect(m_view, &SheetView::closeWanted, this, &WorkbookScreen::escape);
    connect(m_view, &SheetView::pickChanged, this, &WorkbookScreen::showPick);
    connect(m_view, &SheetView::wholeTextWanted, this, [this] { m_bar->setOpen(true); });
    connect(m_bar, &CellBar::openChanged, this, &WorkbookScreen::showText);
    connect(m_view, &SheetView::sheetWanted, this, &WorkbookScreen::turn);
    connect(m_view, &SheetView::foundWanted, this, &WorkbookScreen::foundWanted);
    connect(m_tabs, &QTabBar::currentChanged, this, &WorkbookScreen::sheetWanted);
}

// ---- what is shown ----

void WorkbookScreen::setName(const QString& name)
{
    setAccessibleName(name);
}

void WorkbookScreen::setSheets(const QStringList& names, int current, int count)
{
    m_sheetCount = count;
    m_tabs->setSheets(names, current);
    field().setWhere(names.size() < count ? u"Find in the first %1 sheets"_s.arg(names.size())
                                          : u"Find in all sheets"_s);
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
    updateParts();
}

void WorkbookScreen::showNote(const QString& title, const QString& detail)
{
    m_note = title;
    m_noteDetail = detail;
    m_bar->setOpen(false);
    m_notice.clear();
    updateParts();
    setAccessibleDescription(detail.isEmpty() ? title : title + u' ' + detail);
}

void WorkbookScreen::showParts(bool shows)
{
    OpenedFrame::showParts(shows);
    const bool sheet = shows && m_note.isEmpty();
    m_view->setVisible(sheet);
    m_bar->setVisible(sheet);
    m_search->setVisible(shows && canFind());
    m_tabs->setVisible(shows && m_tabs->count() > 0);
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
    field().raise();
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
    field().fit(width() - 4);
    m_bar->setTaken(isFinding() ? findBar().width() + 8 : 0);
    m_bar->setGeometry(
        area.left(), area.top(), area.width(), m_bar->heightFor(area.width(), area.height() / 2));
    m_view->setGeometry(area.adjusted(0, CellBar::rowHeight, 0, 0));
    const int words =
        static_cast<int>(Lettering(TypeStyle::Small).width(countWords())) + 2 * footSide;
    m_tabs->setGeometry(8, height() - SheetTabs::barHeight, std::max(120, width() - 8 - words),
        SheetTabs::barHeight);
    layOutHead();
    // Beside the text of the cell it hides nothing of what it finds.
    field().move(width() - 2 - findBar().width(),
        headHeight + (CellBar::rowHeight - findBar().height()) / 2);
}

// ---- painting ----

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
    if (arrival().isComing()) {
        painter.setRenderHint(QPainter::Antialiasing);
        arrival().paint(painter, rect(), (1 - arrival().share()) * radius::sheet);
        return;
    }
    painter.fillRect(rect(), corvelle::palette(schemeOf(*this)).surface);
    paintHead(painter);
    if (!m_note.isEmpty())
        paintNote(painter);
    paintFoot(painter);
}

// ---- input ----

void WorkbookScreen::keyPressEvent(QKeyEvent* event)
{
    const bool control = event->modifiers() & Qt::ControlModifier;
    if (control && (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown))
        turn(event->key() == Qt::Key_PageDown ? 1 : -1);
    else if (event->key() == Qt::Key_F3)
        goToFound(event->modifiers() & Qt::ShiftModifier ? -1 : 1);
    else
        OpenedFrame::keyPressEvent(event);
}

void WorkbookScreen::turn(int step)
{
    const int wanted = m_tabs->currentIndex() + step;
    if (wanted >= 0 && wanted < m_tabs->count())
        m_tabs->setCurrentIndex(wanted);
}

bool WorkbookScreen::closeInside()
{
    const bool wasOpen = m_bar->isOpen();
    m_bar->setOpen(false);
    return wasOpen;
}

// ---- finding ----

bool WorkbookScreen::canFind() const
{
    return m_tabs->count() > 0;
}

void WorkbookScreen::showFound(
    std::vector<CellPlace> here, int current, int count, FindBar::Search search)
{
    m_view->setFound(std::move(here));
    field().setCount(current, count, search);
}

} // namespace corvelle
