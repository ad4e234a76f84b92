// The page or Markdown file over the canvas: opened, followed, copied and exported.
#include "canvas/CanvasCommands.h"
#include "canvas/OpenDocument.h"
#include "interface/page/FindBar.h"
#include "interface/page/PageCopy.h"
#include "interface/page/PageSheet.h"
#include "interface/shell/CardMenus.h"
#include "interface/shell/CrumbBar.h"
#include "interface/shell/Dock.h"
#include "interface/shell/MainWindow.h"
#include "interface/shell/ToolBar.h"
#include "interface/shell/ZoomBar.h"
#include "interface/wording/Wording.h"
#include "library/FileNames.h"
#include "library/ItemFacts.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"
#include "platform/Desktop.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QSaveFile>
#include <QShortcut>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

const QString itemScheme = u"corvelle://item/"_s;

// The item that an address of ours names; empty for any other address.
QString addressedItem(const QString& address)
{
    if (address.startsWith(itemScheme))
        return address.mid(itemScheme.size());
    const qsizetype at = address.startsWith(u"/s/") ? address.indexOf(u"/n/") : -1;
    return at < 0 ? QString() : address.mid(at + 3);
}

bool isOpenedElsewhere(const QUrl& url)
{
    const QString scheme = url.scheme().toLower();
    return url.isValid() && (scheme == u"http" || scheme == u"https" || scheme == u"mailto");
}

} // namespace

void MainWindow::connectPage()
{
    connect(&m_model, &CanvasModel::openedChanged, this, &MainWindow::showOpened);
    connect(m_document, &OpenDocument::read, this, &MainWindow::showDocument);
    connect(m_document, &OpenDocument::unreadable, this, [this](const QString& sentence) {
        m_toasts->show({u"page"_s, Icon::Alert, sentence, {}, {}});
        m_model.closeOver();
    });
    connect(&m_model.library(), &Library::treeChanged, this, [this](const TreeChange& change) {
        if (change.everything || change.nodes.contains(m_model.openedID()))
            namePage();
        if (showsPage() && (change.everything || !change.nodes.isEmpty()))
            m_page->view().refreshItems();
    });
    connect(m_page, &PageSheet::closeWanted, this, [this] { m_model.closeOver(); });
    connect(m_page, &PageSheet::moreWanted, this,
        [this] { openPageMenu(m_page->moreButton().bottomLeft() + QPoint(0, 6)); });
    connect(&m_page->view(), &PageView::painted, this,
        [this] { m_paintedAfterMs = static_cast<double>(m_opening.nsecsElapsed()) / 1e6; });
    connect(&m_page->view(), &PageView::menuWanted, this, &MainWindow::openTextMenu);
    connect(&m_page->view(), &PageView::itemWanted, this, &MainWindow::followItem);
    connect(&m_page->view(), &PageView::addressWanted, this, &MainWindow::followAddress);
    connect(new QShortcut(QKeySequence(u"Ctrl+F"_s), this), &QShortcut::activated, this, [this] {
        if (showsPage() && !m_alertPanel)
            m_page->openFind();
    });
}

bool MainWindow::showsPage() const
{
    return m_page->isVisibleTo(this);
}

// ---- opening and closing ----

void MainWindow::showOpened()
{
    const QString& id = m_model.openedID();
    if (!id.isEmpty()) {
        m_opening.start();
        showTrash(false);
        m_document->open(id);
        return;
    }
    m_document->close();
    m_wordsToFind.clear();
    if (!showsPage())
        return;
    m_page->closeFind();
    m_page->hide();
    showChrome(true);
    m_crumbs->setOpened({});
    if (m_menu)
        m_menu->closeMenu(); // it was the page's
    if (!m_alertPanel)
        m_canvas->setFocus();
}

void MainWindow::showDocument(bool again)
{
    const Node* node = m_model.library().node(m_document->id());
    if (!node)
        return;
    const OpenDocument::Contents& contents = m_document->contents();
    const bool page = viewerOf(*node) == Viewer::Page;
    ShownPage shown{contents.text, contents.settings, page ? node->title : QString(),
        page ? node->icon : QString()};
    namePage();
    if (!contents.readable)
        m_toasts->show({u"page"_s, Icon::Alert, u"“%1” couldn’t be read"_s.arg(node->title),
            u"What is stored of it stays as it is."_s, {}});
    if (again && showsPage()) {
        m_page->view().refresh(std::move(shown));
        return;
    }
    const bool wasOpen = showsPage();
    m_page->closeFind();
    m_page->setGeometry(rect());
    showChrome(false);
    m_page->show();
    m_page->view().open(std::move(shown));
    const PlacedCard* card = m_model.card(node->id);
    m_page->comeFrom(
        card && !wasOpen ? toScreen(card->rect(), m_model.camera(), m_model.viewport()) : QRectF());
    if (!m_alertPanel)
        m_page->takeFocus();
    layOut();
    if (const QString words = std::exchange(m_wordsToFind, {}); !words.isEmpty())
        findInOpened(words);
}

void MainWindow::namePage()
{
    const Node* node = m_model.library().node(m_document->id());
    if (!node)
        return;
    m_page->setName(kindIcon(node->kind, node->isPicture()), node->title);
    m_crumbs->setOpened(node->title);
    const bool page = viewerOf(*node) == Viewer::Page;
    if (page && showsPage() && m_page->view().page().title != node->title) {
        ShownPage shown = m_page->view().page();
        shown.title = node->title;
        m_page->view().refresh(std::move(shown));
    }
}

void MainWindow::showChrome(bool shows)
{
    m_dock->setVisible(shows);
    m_zoom->setVisible(shows);
    m_tools->setVisible(shows);
}

ItemLooks MainWindow::itemLooks() const
{
    return [&library = m_model.library()](const QString& id) {
        const Node* node = library.node(id);
        return node ? ItemLook{kindIcon(node->kind, node->isPicture()), !library.isInTrash(id)}
                    : ItemLook{Icon::Page, false};
    };
}

MentionSource MainWindow::mentionFacts() const
{
    return [&library = m_model.library()](const QString& id) { return itemFacts(library, id); };
}

// ---- following ----

void MainWindow::followItem(const QString& id)
{
    const Node* node = m_model.library().node(id);
    if (node && !m_model.library().isInTrash(id))
        m_model.openCard(id);
    else
        m_toasts->show({u"page"_s, Icon::Alert,
            node ? u"“%1” is in the Trash."_s.arg(node->title) : u"This item is gone."_s, {}, {}});
}

void MainWindow::followAddress(const QString& address)
{
    if (const QString item = addressedItem(address); !item.isEmpty())
        followItem(item);
    else if (const QUrl url(address.trimmed()); isOpenedElsewhere(url))
        emit addressWanted(url);
    else
        m_toasts->show(
            {u"page"_s, Icon::Alert, u"This link can’t be opened here."_s, address.left(120), {}});
}

// ---- menus ----

void MainWindow::openPageMenu(QPoint at)
{
    const Node* node = m_model.library().node(m_document->id());
    if (!node || m_alertPanel || m_menu)
        return;
    showMenu(
        pageMenu(node->kind == NodeKind::File), at, [this](const QString& act) { actOnPage(act); });
}

void MainWindow::openTextMenu(QPoint at)
{
    if (m_alertPanel || m_menu)
        return;
    showMenu(pageTextMenu(m_page->view().hasSelection()), m_page->view().mapTo(this, at),
        [this](const QString& act) { actOnPage(act); });
}

void MainWindow::actOnPage(const QString& act)
{
    const Node* node = m_model.library().node(m_document->id());
    if (!node)
        return;
    PageView& view = m_page->view();
    if (act == u"find")
        m_page->openFind();
    else if (act == u"copy")
        view.copy();
    else if (act == u"all")
        view.selectAll();
    else if (act == u"copy-md" || act == u"copy-html")
        copyPage(act == u"copy-html");
    else if (act == u"export-md" || act == u"export-html")
        exportPage(*node, act == u"export-html");
    else if (act == u"show")
        showInFileManager(m_model.library().filePath(*node));
    else if (act == u"elsewhere")
        emit m_model.openItem(node->id);
}

// ---- copying and exporting ----

void MainWindow::copyPage(bool html)
{
    const PageView& view = m_page->view();
    const PageNodes nodes = nodesBetween(view.page().text, 0, view.page().text.length());
    if (html) {
        // As words, to be pasted where HTML is written, and as HTML where it is shown.
        auto copied = copiedBlocks(nodes, mentionFacts());
        copied->setText(copied->html());
        QGuiApplication::clipboard()->setMimeData(copied.release());
    } else {
        auto copied = std::make_unique<QMimeData>();
        const QString markdown =
            PageMarkdown::markdownFromDoc(nodes, PageMarkdown::Pictures::Named);
        copied->setText(markdown);
        copied->setData(u"text/markdown"_s, markdown.toUtf8());
        QGuiApplication::clipboard()->setMimeData(copied.release());
    }
    m_toasts->show(
        {u"copied"_s, Icon::Check, html ? u"Copied as HTML"_s : u"Copied as Markdown"_s, {}, {}});
}

void MainWindow::exportPage(const Node& node, bool html)
{
    const PageView& view = m_page->view();
    const PageTree page{
        nodesBetween(view.page().text, 0, view.page().text.length()), m_document->contents().attrs};
    const QByteArray bytes =
        html ? PageHTML::file(page, node.title, {mentionFacts(), {}, {}}).toUtf8()
             : PageMarkdown::markdownFromDoc(page.content, PageMarkdown::Pictures::Kept).toUtf8();
    const QString ending = html ? u".html"_s : u".md"_s;
    const QString name = safeFileName(node.title);
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    auto* dialog = new QFileDialog(this, html ? u"Export as HTML"_s : u"Export as Markdown"_s,
        documents + u'/' + (name.endsWith(ending) ? name : name + ending));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(ending.mid(1));
    connect(dialog, &QFileDialog::fileSelected, this, [this, bytes](const QString& path) {
        QSaveFile file(path);
        const bool done =
            file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
        if (done)
            m_toasts->show({u"export"_s, Icon::Check,
                u"Exported “%1”"_s.arg(QFileInfo(path).fileName()), {}, {}});
        else
            m_toasts->show({u"export"_s, Icon::Alert,
                u"Couldn’t save “%1”: %2"_s.arg(QFileInfo(path).fileName(), file.errorString()), {},
                {}});
    });
    openDialog(*dialog);
}

// ---- for scripts ----

QJsonValue MainWindow::openedJson() const
{
    const Node* node = m_model.library().node(m_model.openedID());
    if (!node)
        return {};
    const PageView& view = m_page->view();
    QJsonObject told{{u"id"_s, node->id}, {u"kind"_s, word(node->kind)}, {u"shown"_s, showsPage()},
        {u"paintedAfter"_s, m_paintedAfterMs}, {u"scroll"_s, view.scrollPlace()},
        {u"scrollRange"_s, view.scrollRange()}};
    QJsonArray targets;
    for (const auto& [target, place] : showsPage()
                                           ? m_page->view().targetsInSight()
                                           : std::vector<std::pair<TargetInPage, QRectF>>()) {
        const QPointF at = m_page->view().mapTo(this, place.topLeft().toPoint());
        targets.append(QJsonObject{{u"item"_s, target.target.item}, {u"label"_s, target.label},
            {u"address"_s, target.target.link ? target.target.link->href : QString()},
            {u"place"_s, QJsonArray{at.x(), at.y(), place.width(), place.height()}}});
    }
    told[u"targets"] = targets;
    if (m_page->isFinding())
        told[u"find"] = QJsonObject{{u"words"_s, m_page->findBar().words()},
            {u"current"_s, view.currentFound()}, {u"count"_s, view.foundCount()}};
    return told;
}

bool MainWindow::isPageSettled() const
{
    return !m_document->isReading() && m_page->view().pictures().isIdle();
}

void MainWindow::findInOpened(const QString& words)
{
    if (m_document->isReading()) {
        m_wordsToFind = words;
        return;
    }
    m_page->openFind();
    m_page->setFindWords(words);
}

} // namespace corvelle
