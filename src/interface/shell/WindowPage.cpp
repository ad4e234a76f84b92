// The page or Markdown file over the canvas: followed, copied and exported.
#include "canvas/LinkedPath.h"
#include "canvas/Viewer.h"
#include "interface/page/PageCopy.h"
#include "interface/shell/CardMenus.h"
#include "interface/shell/MainWindow.h"
#include "interface/shell/PageViewer.h"
#include "library/FileNames.h"
#include "pages/PageHtml.h"
#include "pages/PageMarkdown.h"
#include "platform/Desktop.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QSaveFile>
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
    connect(&m_page->surface(), &PageSheet::moreWanted, this,
        [this] { openPageMenu(m_page->surface().moreButton().bottomLeft() + QPoint(0, 6)); });
    connect(&m_page->view(), &PageView::menuWanted, this, &MainWindow::openTextMenu);
    connect(&m_page->view(), &PageView::itemWanted, this, &MainWindow::followItem);
    connect(&m_page->view(), &PageView::addressWanted, this, &MainWindow::followAddress);
    connect(&m_model.library(), &Library::treeChanged, this, [this](const TreeChange& change) {
        if (m_opened == m_page && (change.everything || !change.nodes.isEmpty()))
            m_page->view().refreshItems();
    });
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
    if (m_page->followInside(address))
        return;
    if (const QString item = addressedItem(address); !item.isEmpty())
        followItem(item);
    else if (const QUrl url(address.trimmed()); isOpenedElsewhere(url))
        emit addressWanted(url);
    else if (const Node* file = linkedFile(address))
        followFile(*file);
    else
        m_toasts->show(
            {u"page"_s, Icon::Alert, u"This link can’t be opened here."_s, address.left(120), {}});
}

// The live item that a link between files names.
const Node* MainWindow::linkedFile(const QString& link) const
{
    const Library& library = m_model.library();
    const Node* document = library.node(m_model.openedID());
    const QString path = document ? linkedPath(document->path, link) : QString();
    if (path.isEmpty())
        return nullptr;
    // On disk an accented letter may be one character or two.
    const QString composed = path.normalized(QString::NormalizationForm_C);
    const QString decomposed = path.normalized(QString::NormalizationForm_D);
    const Node* found = nullptr;
    library.tree().eachNode([&](const Node& node, const SeenFile&) {
        if ((node.path == path || node.path == composed || node.path == decomposed) &&
            !library.isInTrash(node.id))
            found = &node;
    });
    return found;
}

// A link says what it likes: what would open in another application is only shown.
void MainWindow::followFile(const Node& node)
{
    if (node.kind == NodeKind::Folder || viewerOf(node) != Viewer::None) {
        m_model.openCard(node.id);
        return;
    }
    const QString id = node.id;
    m_model.open(node.parentID);
    m_model.select({id});
}

// ---- menus ----

void MainWindow::openPageMenu(QPoint at)
{
    const Node* node = m_model.library().node(m_page->document().id());
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
    const Node* node = m_model.library().node(m_page->document().id());
    if (!node)
        return;
    PageView& view = m_page->view();
    if (act == u"find")
        m_page->surface().openFind();
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
    const PageNodes nodes = m_page->view().nodes();
    if (html) {
        // As words, to be pasted where HTML is written, and as HTML where it is shown.
        auto copied = copiedBlocks(nodes, m_page->view().mentions());
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
    const PageTree page{m_page->view().nodes(), m_page->document().contents().attrs};
    const QByteArray bytes =
        html ? PageHTML::file(page, node.title, {m_page->view().mentions(), {}, {}}).toUtf8()
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

} // namespace corvelle
