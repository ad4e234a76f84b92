#include "interface/shell/WorkbookViewer.h"

#include "interface/sheet/CellBar.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace corvelle {

WorkbookViewer::WorkbookViewer(Library& library, QWidget* window)
    : OpenedViewer(window)
    , m_workbook(new OpenWorkbook(library, this))
    , m_screen(new WorkbookScreen(window))
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(motion::spinnerDelayMs);
    connect(&m_patience, &QTimer::timeout, this, &WorkbookViewer::took);
    connect(m_workbook, &OpenWorkbook::changed, this, [this] {
        // A sheet that is there soon takes the place of the last one without a word.
        if (m_workbook->isReading())
            m_patience.start();
        else
            took();
    });
    connect(m_workbook, &OpenWorkbook::foundChanged, this, &WorkbookViewer::showFound);
    connect(m_workbook, &OpenWorkbook::hitReached, this, [this] {
        m_goesToHit = true;
        showHit();
    });
    connect(m_screen, &WorkbookScreen::sheetWanted, this, &WorkbookViewer::turnTo);
    connect(m_screen, &WorkbookScreen::findWanted, this, &WorkbookViewer::find);
    connect(m_screen, &WorkbookScreen::foundWanted, this, &WorkbookViewer::goToFound);
    connect(&m_screen->view(), &SheetView::painted, this, &OpenedViewer::painted);
}

void WorkbookViewer::open(const Node& node)
{
    m_isPresented = false;
    m_shownSheet = -1;
    m_patience.start();
    m_workbook->open(node.id);
}

void WorkbookViewer::close()
{
    m_patience.stop();
    m_workbook->close();
    m_screen->closeFind();
}

void WorkbookViewer::took()
{
    m_patience.stop();
    if (m_isPresented)
        showState();
    else
        emit ready();
}

void WorkbookViewer::present()
{
    m_isPresented = true;
    m_screen->closeFind();
    showState();
}

void WorkbookViewer::showState()
{
    m_screen->setSheets(m_workbook->names(), m_workbook->sheet(), m_workbook->sheetCount());
    switch (m_workbook->state()) {
    case OpenWorkbook::State::Reading:
        return m_screen->showNote(u"Reading sheet…"_s);
    case OpenWorkbook::State::TooLarge:
        return m_screen->showNote(u"This workbook is over 20 MB, too large to read here."_s,
            u"Workbooks up to 20 MB preview here. Open this one in its app; nothing about it changes."_s);
    case OpenWorkbook::State::Unreadable:
        return m_screen->showNote(u"Couldn’t preview this workbook"_s,
            u"It may be damaged, or saved in a way this preview can’t read. Open it in its app to see it."_s);
    case OpenWorkbook::State::Read:
        break;
    }
    if (m_workbook->rows()) {
        const bool another = m_workbook->sheet() != m_shownSheet;
        m_shownSheet = m_workbook->sheet();
        m_screen->showRows(m_workbook->rows(),
            another ? WorkbookScreen::Begin::Anew : WorkbookScreen::Begin::Where);
        showFound();
        showHit();
        return;
    }
    m_shownSheet = -1;
    m_screen->showNote(
        m_workbook->isReading()
            ? u"Reading sheet…"_s
            : u"This sheet couldn’t be read. Open the workbook in its app to see it."_s);
}

// ---- finding ----

// By the person's own hand: finding goes on from there.
void WorkbookViewer::turnTo(int sheet)
{
    m_goesToHit = false;
    m_findFrom = {sheet, {}};
    m_workbook->standForFinding(m_findFrom);
    m_workbook->turnTo(sheet);
}

// Each letter of the words leads on from the same place, so that a slip of the keys carries nobody
// away for good.
void WorkbookViewer::find(const QString& words)
{
    m_goesToHit = false;
    if (m_workbook->found().words().isEmpty())
        m_findFrom = {m_workbook->sheet(), {0, m_screen->view().topRow()}};
    m_workbook->find(words, m_findFrom);
}

void WorkbookViewer::goToFound(int step)
{
    m_workbook->goToFound(step);
    m_findFrom = m_workbook->found().hit().value_or(m_findFrom);
}

void WorkbookViewer::showFound()
{
    const WorkbookFind& found = m_workbook->found();
    m_screen->showFound(found.foundIn(m_shownSheet), found.number(), found.count(),
        found.isDone() ? FindBar::Search::Ended : FindBar::Search::GoesOn);
}

// Now, or as soon as its sheet is there.
void WorkbookViewer::showHit()
{
    const auto hit = m_workbook->found().hit();
    if (!hit || !m_goesToHit)
        return;
    if (hit->sheet != m_workbook->sheet())
        return m_workbook->turnTo(hit->sheet);
    if (m_shownSheet == hit->sheet) {
        m_goesToHit = false;
        m_screen->view().pickCell(hit->cell);
    }
}

QJsonObject WorkbookViewer::told() const
{
    const SheetView& view = m_screen->view();
    const SheetPick& pick = view.pick();
    const CellRange range = pick.range();
    QJsonObject told{{u"sheets"_s, QJsonArray::fromStringList(m_workbook->names())},
        {u"sheetCount"_s, m_workbook->sheetCount()}, {u"counts"_s, m_screen->countWords()},
        {u"sheet"_s, m_workbook->sheet()}, {u"note"_s, m_screen->note()},
        {u"notice"_s, m_screen->notice()},
        {u"scroll"_s, QJsonArray{view.scrollPlace().x(), view.scrollPlace().y()}},
        {u"scrollRange"_s, QJsonArray{view.scrollRange().x(), view.scrollRange().y()}}};
    if (m_screen->note().isEmpty() && m_isPresented) {
        const QRect place =
            view.rectOf(pick.picked).translated(view.mapTo(m_screen->parentWidget(), QPoint()));
        told[u"rows"] = static_cast<qint64>(view.sheet().rows.size());
        told[u"picked"] = QJsonObject{{u"place"_s, placeName(pick.picked)},
            {u"text"_s, textAt(view.sheet(), pick.picked)},
            {u"range"_s, placeName(range.from) + u':' + placeName(range.to)},
            {u"isOpen"_s, m_screen->cellBar().isOpen()},
            {u"rect"_s, QJsonArray{place.x(), place.y(), place.width(), place.height()}}};
    }
    if (m_screen->isFinding())
        told[u"find"] = QJsonObject{{u"words"_s, m_screen->findBar().words()},
            {u"current"_s, m_workbook->found().number()}, {u"count"_s, m_workbook->found().count()},
            {u"says"_s, m_screen->findBar().countWords()}};
    return told;
}

} // namespace corvelle
