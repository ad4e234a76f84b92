// What is open over the canvas, whatever shows it: which viewer that is, its coming and going, and
// what scripts are told of it.
#include "canvas/FileWords.h"
#include "interface/shell/CardMenus.h"
#include "interface/shell/CrumbBar.h"
#include "interface/shell/Dock.h"
#include "interface/shell/MainWindow.h"
#include "interface/shell/PageViewer.h"
#include "interface/shell/ToolBar.h"
#include "interface/shell/WorkbookViewer.h"
#include "interface/shell/ZoomBar.h"
#include "interface/widgets/Departure.h"
#include "platform/Desktop.h"

#include <QShortcut>

using namespace Qt::StringLiterals;

namespace corvelle {

// The one place that knows which viewer an item gets.
OpenedViewer* MainWindow::viewerFor(const Node& node) const
{
    switch (viewerOf(node)) {
    case Viewer::Page:
    case Viewer::Markdown:
    case Viewer::Document:
        return m_page;
    case Viewer::Workbook:
        return m_workbook;
    case Viewer::None:
        break;
    }
    return nullptr;
}

std::vector<OpenedViewer*> MainWindow::viewers() const
{
    return {m_page, m_workbook};
}

void MainWindow::connectOpened()
{
    connect(&m_model, &CanvasModel::openedChanged, this, &MainWindow::showOpened);
    connect(&m_model.library(), &Library::treeChanged, this, [this](const TreeChange& change) {
        if (change.everything || change.nodes.contains(m_model.openedID()))
            nameOpened();
    });
    for (OpenedViewer* viewer : viewers()) {
        connect(viewer, &OpenedViewer::ready, this, [this, viewer] {
            if (viewer == m_opened)
                presentOpened();
        });
        connect(viewer, &OpenedViewer::unreadable, this, [this](const QString& sentence) {
            m_toasts->show({u"page"_s, Icon::Alert, sentence, {}, {}});
            m_model.closeOver();
        });
        connect(viewer, &OpenedViewer::painted, this,
            [this] { m_paintedAfterMs = static_cast<double>(m_opening.nsecsElapsed()) / 1e6; });
        connect(
            &viewer->surface(), &OpenedFrame::closeWanted, this, [this] { m_model.closeOver(); });
        connect(&viewer->surface(), &OpenedFrame::appWanted, this,
            [this] { emit m_model.openItem(m_model.openedID()); });
        connect(viewer, &OpenedViewer::toastWanted, this,
            [this](const Toast& toast) { m_toasts->show(toast); });
    }
    connect(new QShortcut(QKeySequence(u"Ctrl+F"_s), this), &QShortcut::activated, this, [this] {
        if (showsOpened() && !m_alertPanel)
            m_opened->surface().openFind();
    });
    connectPage();
    WorkbookScreen& screen = m_workbook->surface();
    connect(&screen, &WorkbookScreen::moreWanted, this,
        [this, &screen] { openWorkbookMenu(screen.moreButton().bottomLeft() + QPoint(0, 6)); });
    connect(&screen.view(), &SheetView::menuWanted, this,
        [this, &screen](QPoint at) { openWorkbookMenu(screen.view().mapTo(this, at)); });
}

bool MainWindow::showsOpened() const
{
    return m_opened && m_opened->surface().isVisibleTo(this);
}

// ---- coming and going ----

void MainWindow::showOpened()
{
    const Node* node = m_model.library().node(m_model.openedID());
    OpenedViewer* const wanted = node ? viewerFor(*node) : nullptr;
    if (m_opened && m_opened != wanted)
        leaveOpened();
    m_opened = wanted;
    if (!wanted)
        return;
    m_opening.start();
    showTrash(false);
    wanted->open(*node);
}

void MainWindow::leaveOpened()
{
    const bool wasShown = showsOpened();
    m_wordsToFind.clear();
    Departure::of(m_opened->surface());
    m_opened->close();
    m_opened->surface().hide();
    m_opened = nullptr;
    if (!wasShown)
        return;
    showChrome(true);
    m_crumbs->setOpened({});
    m_crumbs->setBare(false);
    layOut();
    if (m_menu)
        m_menu->closeMenu(); // it was that of what was open
    if (!m_alertPanel)
        m_canvas->setFocus();
}

void MainWindow::presentOpened()
{
    const Node* node = m_model.library().node(m_model.openedID());
    if (!node)
        return;
    m_readAfterMs = static_cast<double>(m_opening.nsecsElapsed()) / 1e6;
    nameOpened();
    const bool wasShown = showsOpened();
    OpenedFrame& surface = m_opened->surface();
    surface.setGeometry(rect());
    showChrome(false);
    surface.show();
    m_crumbs->setBare(m_opened->holdsCrumbs());
    layOut();
    m_opened->present();
    const PlacedCard* card = m_model.card(node->id);
    surface.comeFrom(card && !wasShown
                         ? toScreen(card->rect(), m_model.camera(), m_model.viewport())
                         : QRectF());
    if (!m_alertPanel)
        surface.takeFocus();
    if (const QString words = std::exchange(m_wordsToFind, {}); !words.isEmpty())
        findInOpened(words);
}

void MainWindow::nameOpened()
{
    const Node* node = m_model.library().node(m_model.openedID());
    if (!node || !m_opened)
        return;
    m_opened->setNode(*node);
    // What has a head row of its own shows there what it is.
    m_crumbs->setOpened(
        node->title, m_opened->holdsCrumbs() ? fileBadge(node->mime, node->title) : QString());
}

void MainWindow::showChrome(bool shows)
{
    m_dock->setVisible(shows);
    m_zoom->setVisible(shows);
    m_tools->setVisible(shows);
}

void MainWindow::findInOpened(const QString& words)
{
    if (!m_opened)
        return;
    if (m_opened->isReading()) {
        m_wordsToFind = words;
        return;
    }
    m_opened->surface().openFind();
    m_opened->surface().setFindWords(words);
}

// ---- workbooks ----

void MainWindow::openWorkbookMenu(QPoint at)
{
    if (m_alertPanel || m_menu || m_opened != m_workbook)
        return;
    const bool hasSheet = m_workbook->surface().note().isEmpty();
    showMenu(
        workbookMenu(hasSheet, m_workbook->surface().canFind()), at, [this](const QString& act) {
            SheetView& view = m_workbook->surface().view();
            const Node* node = m_model.library().node(m_model.openedID());
            if (act == u"find")
                m_workbook->surface().openFind();
            else if (act == u"copy")
                view.copy();
            else if (act == u"all")
                view.pickAll();
            else if (node && act == u"show")
                showInFileManager(m_model.library().filePath(*node));
            else if (node && act == u"elsewhere")
                emit m_model.openItem(node->id);
        });
}

// ---- for scripts ----

QJsonValue MainWindow::openedJson() const
{
    const Node* node = m_model.library().node(m_model.openedID());
    if (!node || !m_opened)
        return {};
    QJsonObject told = m_opened->told();
    told[u"id"] = node->id;
    told[u"kind"] = word(node->kind);
    told[u"badge"] = m_crumbs->badge();
    const QRect app = m_opened->surface().appButton();
    const QRect bar = m_crumbs->geometry();
    told[u"appButton"] = QJsonArray{app.x(), app.y(), app.width(), app.height()};
    told[u"bar"] = QJsonArray{bar.x(), bar.y(), bar.width(), bar.height()};
    told[u"shown"] = showsOpened();
    told[u"readAfter"] = m_readAfterMs;
    told[u"paintedAfter"] = m_paintedAfterMs;
    return told;
}

bool MainWindow::isOpenedSettled() const
{
    return !m_opened || m_opened->isSettled();
}

} // namespace corvelle
