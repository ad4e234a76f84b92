// What the person does in the window: menus, keys, the dock, the Trash, and what toasts tell of it.
#include "canvas/CanvasCommands.h"
#include "interface/shell/CanvasNotes.h"
#include "interface/shell/CardMenus.h"
#include "interface/shell/CrumbBar.h"
#include "interface/shell/Dock.h"
#include "interface/shell/MainWindow.h"
#include "interface/shell/ToolBar.h"
#include "interface/shell/ZoomBar.h"
#include "interface/trash/TrashView.h"
#include "interface/widgets/IconPicker.h"
#include "interface/widgets/MenuPanel.h"
#include "interface/widgets/PromptPanel.h"
#include "interface/wording/Wording.h"
#include "platform/Desktop.h"

#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMimeData>
#include <QShortcut>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int workingLingersMs = 400;

QString address(const QString& typed)
{
    const QString line = typed.trimmed();
    const QUrl url(line.contains(u"://") ? line : u"https://"_s + line);
    const bool web = url.scheme() == u"http" || url.scheme() == u"https";
    return web && url.isValid() && url.host().contains(u'.') ? url.toString() : QString();
}

} // namespace

void MainWindow::connectActs()
{
    m_canvas->setCommands(&m_commands);
    m_canvas->setUpTargets([this](std::optional<QPointF> at) -> std::optional<UpTarget> {
        const auto found = m_crumbs->targetAt(
            at ? std::optional(m_canvas->mapTo(this, at->toPoint()) - m_crumbs->pos())
               : std::nullopt);
        return found ? std::optional(UpTarget{found->folder, found->name}) : std::nullopt;
    });
    connect(m_canvas, &CanvasView::menuWanted, this, &MainWindow::openMenu);
    connect(m_canvas, &CanvasView::dropRefused, this, [this] {
        m_toasts->show({u"drop"_s, Icon::Alert,
            u"Only files, web addresses and text can be added here."_s, {}, {}});
    });
    connect(&m_model, &CanvasModel::missingOpened, this, &MainWindow::tellMissing);
    connect(&m_commands, &CanvasCommands::told, this, &MainWindow::tellWithUndo);
    connect(&m_commands.edits().journal(), &UndoJournal::refused, this,
        [this](const QString& title, const QString& reason) {
            m_toasts->show({u"library-step"_s, Icon::Alert, shown(title), shown(reason), {}});
        });
    connect(&m_model.library(), &Library::working, this, &MainWindow::showWorking);
    m_workingEnds.setSingleShot(true);
    m_workingEnds.setInterval(workingLingersMs);
    connect(&m_workingEnds, &QTimer::timeout, m_working, &QWidget::hide);

    connect(
        m_dock, &Dock::wanted, this, [this](NodeKind kind) { makeNew(kind, m_commands.middle()); });
    connect(m_dock, &Dock::dragMoved, this, [this](NodeKind kind, QPointF global) {
        m_canvas->showPlacing(kind, m_canvas->mapFromGlobal(global));
    });
    connect(m_dock, &Dock::dragCancelled, this, [this] { m_canvas->showPlacing(std::nullopt); });
    connect(m_dock, &Dock::dropped, this, [this](NodeKind kind, QPointF global) {
        m_canvas->showPlacing(std::nullopt);
        const QPointF at = m_canvas->mapFromGlobal(global);
        const QPoint inDock = m_dock->mapFromGlobal(global).toPoint();
        if (m_canvas->rect().contains(at.toPoint()) && !m_dock->rect().contains(inDock))
            makeNew(kind, toCanvas(at, m_model.camera(), m_model.viewport()));
    });

    connect(m_tools, &ToolBar::trashWanted, this, [this] { showTrash(!showsTrash()); });
    connect(m_crumbs, &CrumbBar::overlayLeft, this, [this] { showTrash(false); });
    connect(&m_model, &CanvasModel::folderChanged, this, [this] { showTrash(false); });
    connect(&m_model.library(), &Library::treeChanged, this, [this] {
        if (showsTrash())
            fillTrash();
    });
    connect(m_trash, &TrashView::closeWanted, this, [this] { showTrash(false); });
    connect(m_trash, &TrashView::putBackWanted, this,
        [this](const std::vector<QString>& ids) { m_commands.putBack(ids); });
    connect(m_trash, &TrashView::deleteWanted, this, &MainWindow::askToDelete);
    connect(m_trash, &TrashView::emptyWanted, this, [this] {
        std::vector<QString> all;
        for (const TrashRow& row : m_trash->rows())
            all.push_back(row.id);
        askToDelete(all);
    });
    addEditShortcuts();
}

void MainWindow::addEditShortcuts()
{
    const auto add = [this](const QKeySequence& key, auto act) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, [this, act] {
            if (!m_alertPanel)
                act();
        });
    };
    // Nobody takes back what they can't see.
    const auto undo = [this] {
        if (!showsOpened())
            m_commands.undo();
    };
    const auto redo = [this] {
        if (!showsOpened())
            m_commands.redo();
    };
    add(u"Ctrl+Z"_s, undo);
    add(u"Ctrl+Shift+Z"_s, redo);
    add(u"Ctrl+Y"_s, redo);
    add(u"Ctrl+N"_s, [this] { makeNew(NodeKind::Page, m_commands.middle()); });
    add(u"Ctrl+Shift+N"_s, [this] { makeNew(NodeKind::Folder, m_commands.middle()); });
    add(u"Ctrl+C"_s, [this] {
        if (!isCanvasCovered())
            copyLinks(m_commands.selected());
    });
    add(u"Ctrl+V"_s, [this] { paste(); });
}

// ---- menus ----

void MainWindow::openMenu(const QString& key, QPoint at)
{
    if (m_alertPanel || m_menu)
        return;
    if (!key.isEmpty() && !m_model.selection().contains(key))
        m_model.click(key, false);
    const auto ids = m_commands.selected();
    const QPointF point = toCanvas(QPointF(at), m_model.camera(), m_model.viewport());
    std::vector<MenuRow> rows;
    if (key.isEmpty()) {
        const UndoManager& manager = m_commands.undoManager();
        const QMimeData* clipboard = QGuiApplication::clipboard()->mimeData();
        rows = canvasMenu({manager.undoActionName(), manager.redoActionName(), manager.canUndo(),
            manager.canRedo(), clipboard && (clipboard->hasUrls() || clipboard->hasText())});
    } else {
        rows = cardMenu(m_model.library(), ids);
    }
    showMenu(std::move(rows), m_canvas->mapTo(this, at),
        [this, key, ids, at, point](const QString& act) {
            if (key.isEmpty())
                actOnCanvas(act, point);
            else
                actOnCards(act, ids, at);
        });
}

void MainWindow::showMenu(
    std::vector<MenuRow> rows, QPoint at, const std::function<void(const QString&)>& act)
{
    for (MenuRow& row : rows)
        row.words = shown(row.words);
    m_menu = new MenuPanel(std::move(rows), at, *this);
    connect(m_menu, &MenuPanel::chosen, this, act);
}

void MainWindow::actOnCards(const QString& act, const std::vector<QString>& ids, QPoint at)
{
    const Node* first = m_model.library().node(ids.front());
    if (!first)
        return;
    if (act == u"open")
        m_model.openCard(ids.front());
    else if (act == u"rename")
        m_model.startRenaming(ids.front());
    else if (act == u"icon")
        pickIcon(ids.front(), at);
    else if (act == u"duplicate")
        m_commands.duplicate(ids);
    else if (act == u"copy")
        copyLinks(ids);
    else if (act == u"locate")
        emit locateWanted(ids.front());
    else if (act == u"show")
        showInFileManager(m_model.library().filePath(*first));
    else if (act == u"trash")
        m_commands.trash(ids);
    else if (act.startsWith(u"color:"))
        m_commands.setColor(ids, nodeColor(act.mid(6)));
}

void MainWindow::actOnCanvas(const QString& act, QPointF point)
{
    if (act == u"undo")
        m_commands.undo();
    else if (act == u"redo")
        m_commands.redo();
    else if (act == u"page")
        makeNew(NodeKind::Page, point);
    else if (act == u"folder")
        makeNew(NodeKind::Folder, point);
    else if (act == u"link")
        makeNew(NodeKind::Link, point);
    else if (act == u"files")
        makeNew(NodeKind::File, point);
    else if (act == u"paste")
        paste();
    else if (act == u"all")
        m_model.selectAll();
    else if (act == u"bin")
        showTrash(true);
    else if (act == u"library")
        emit switchLibraryWanted();
}

void MainWindow::makeNew(NodeKind kind, QPointF point)
{
    if (!m_model.library().isOpen() || isCanvasCovered())
        return;
    switch (kind) {
    case NodeKind::Page:
        m_commands.makePage(point);
        break;
    case NodeKind::Folder:
        m_commands.makeFolder(point);
        break;
    case NodeKind::Link:
        askForLink(point);
        break;
    case NodeKind::File:
        chooseFiles(point);
        break;
    }
}

void MainWindow::askForLink(QPointF point)
{
    auto* prompt = new PromptPanel(u"Add a website"_s, u"https://example.com"_s, u"Add"_s, *this);
    connect(prompt, &PromptPanel::given, this, [this, point](const QString& line) {
        if (const QString url = address(line); !url.isEmpty())
            m_commands.makeLink(url, point);
        else
            m_toasts->show(
                {u"link"_s, Icon::Alert, u"“%1” isn’t a web address."_s.arg(line), {}, {}});
    });
}

void MainWindow::chooseFiles(QPointF point)
{
    auto* dialog = new QFileDialog(this, u"Add files"_s);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    connect(dialog, &QFileDialog::urlsSelected, this,
        [this, point](const QList<QUrl>& urls) { m_commands.addUrls(urls, {}, point); });
    openDialog(*dialog);
}

void MainWindow::locate(const QString& id, const QString& folder)
{
    const Node* node = m_model.library().node(id);
    if (!node)
        return;
    const bool isFolder = node->kind == NodeKind::Folder;
    const QString title = node->title.isEmpty() ? u"Corvelle"_s : node->title;
    auto* dialog = new QFileDialog(this, u"Where is “%1” now?"_s.arg(title), folder);
    dialog->setFileMode(isFolder ? QFileDialog::Directory : QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ShowDirsOnly, isFolder);
    dialog->setLabelText(QFileDialog::Accept, u"Locate"_s);
    connect(dialog, &QFileDialog::fileSelected, this,
        [this, id](const QString& path) { emit relinkWanted(id, path); });
    openDialog(*dialog);
}

// The keyboard comes back to where it was, also on desktops that leave that to programs.
void MainWindow::openDialog(QDialog& dialog)
{
    dialog.setAttribute(Qt::WA_DeleteOnClose);
    connect(&dialog, &QObject::destroyed, this, [this, before = QPointer(focusWidget())] {
        activateWindow();
        QWidget* const next = before ? before.data() : m_canvas;
        next->setFocus();
    });
    dialog.open();
}

void MainWindow::tellLocated(const QString& id, bool couldUse)
{
    m_toasts->dismiss(u"locate"_s);
    const Node* node = m_model.library().node(id);
    if (!node || couldUse)
        return;
    const QString what = node->kind == NodeKind::Folder ? u"folder"_s : u"file"_s;
    const QString title = node->title.isEmpty() ? u"Corvelle"_s : node->title;
    m_toasts->show({u"locate"_s, Icon::Alert,
        u"Couldn’t use that %1 for “%2”. Try again."_s.arg(what, title), {}, {}});
}

void MainWindow::tellMissing(const QString& id)
{
    const Node* node = m_model.library().node(id);
    if (!node)
        return;
    m_toasts->show(
        {u"locate"_s, Icon::Help, u"“%1” can’t be found"_s.arg(node->title),
            u"It was in %1. It may have been moved, or be on a disk that isn’t connected."_s.arg(
                QFileInfo(m_model.library().filePath(*node)).path()),
            node->isLinked() ? u"Locate…"_s : QString()},
        [this, id] { emit locateWanted(id); });
}

void MainWindow::pickIcon(const QString& id, QPoint at)
{
    const Node* node = m_model.library().node(id);
    if (!node)
        return;
    auto* picker = new IconPicker(node->icon, m_canvas->mapTo(this, at), *this);
    connect(picker, &IconPicker::picked, this,
        [this, id](const QString& icon) { m_commands.edits().setIcon(id, icon); });
}

// ---- clipboard ----

void MainWindow::copyLinks(const std::vector<QString>& ids)
{
    if (ids.empty())
        return;
    QStringList links;
    for (const QString& id : ids)
        links.append(u"corvelle://item/"_s + id);
    QGuiApplication::clipboard()->setText(links.join(u'\n'));
    m_toasts->show({u"copied"_s, Icon::Check,
        ids.size() == 1 ? u"Copied link"_s : u"Copied %1 links"_s.arg(ids.size()), {}, {}});
}

void MainWindow::paste()
{
    const QMimeData* clipboard = QGuiApplication::clipboard()->mimeData();
    if (!clipboard || isCanvasCovered() || !m_model.library().isOpen())
        return;
    const QPoint pointer = m_canvas->mapFromGlobal(QCursor::pos());
    const QPointF point = m_canvas->rect().contains(pointer)
                              ? toCanvas(QPointF(pointer), m_model.camera(), m_model.viewport())
                              : m_commands.middle();
    if (clipboard->hasUrls()) {
        m_commands.addUrls(clipboard->urls(), {}, point);
        return;
    }
    // Text alone is not pasted onto a canvas; the web addresses in it are.
    for (const QString& link : droppedText(clipboard->text()).links)
        m_commands.makeLink(link, point);
}

// ---- Trash ----

bool MainWindow::showsTrash() const
{
    return m_trash->isVisibleTo(this);
}

void MainWindow::showTrash(bool shows)
{
    if (shows == showsTrash())
        return;
    if (shows)
        m_model.closeOver();
    m_trash->setVisible(shows);
    m_canvas->setVisible(!shows);
    m_dock->setVisible(!shows);
    m_zoom->setVisible(!shows);
    m_crumbs->setOverlay(shows ? u"Trash"_s : QString());
    if (shows) {
        m_trash->select({});
        fillTrash();
        m_trash->setFocus();
    } else {
        m_canvas->setFocus();
    }
    updateEmptyNote();
    layOut();
}

void MainWindow::fillTrash()
{
    m_trash->setRows(trashRows(m_model.library().tree(), QDateTime::currentDateTime()));
}

void MainWindow::askToDelete(const std::vector<QString>& ids)
{
    const Node* first = ids.empty() ? nullptr : m_model.library().node(ids.front());
    if (!first)
        return;
    const QString title = first->title.isEmpty() ? u"Corvelle"_s : first->title;
    showAlert(
        {ids.size() == 1 ? u"Delete “%1” for good?"_s.arg(title)
                         : u"Delete %1 items for good?"_s.arg(ids.size()),
            u"This can’t be undone. Files that are linked from outside the library stay where they are."_s,
            {{u"Cancel"_s, Alert::Role::WayOut},
                {u"Delete for Good"_s, Alert::Role::LikelyDanger}}},
        [this, ids](int answer) {
            if (answer == 1)
                m_commands.edits().deleteForGood(ids);
            if (showsTrash())
                m_trash->setFocus();
        });
}

// ---- telling ----

void MainWindow::tellWithUndo(const QString& text, const QString& undoName)
{
    UndoManager& manager = m_commands.undoManager();
    m_toasts->show({undoName, Icon::Trash, shown(text), {}, u"Undo"_s}, [&manager, undoName] {
        // Something else may have been done since: then the step stands further down.
        if (manager.undoActionName() == undoName)
            manager.undo();
    });
}

void MainWindow::tellDeletedElsewhere(int count)
{
    constexpr int mostUntold = 50;
    const QString key = u"deleted-in-finder"_s;
    const auto& toasts = m_toasts->model().toasts();
    const bool stands = std::any_of(toasts.begin(), toasts.end(),
        [&](const auto& standing) { return standing.toast.key == key; });
    m_deletedElsewhere = (stands ? m_deletedElsewhere : 0) + count;
    if (m_deletedElsewhere > mostUntold)
        m_toasts->show({key, Icon::Trash,
            shown(u"%1 items deleted in Finder are in the Trash"_s.arg(m_deletedElsewhere)), {},
            {}});
}

// Called from within long work: nothing but painting may happen here.
void MainWindow::showWorking()
{
    if (!isVisible())
        return;
    m_working->setWords(u"Working…"_s);
    layOut();
    m_working->show();
    m_working->raise();
    m_working->repaint();
    m_workingEnds.start();
}

void MainWindow::closeOverlays()
{
    closeAlert();
    if (m_menu)
        m_menu->closeMenu();
    showTrash(false);
    m_model.closeOver();
}

QJsonArray MainWindow::menuJson() const
{
    QJsonArray rows;
    if (!m_menu)
        return rows;
    for (const auto& [id, place] : m_menu->places()) {
        QString words;
        for (const MenuRow& row : m_menu->rows())
            if (row.id == id)
                words = row.words;
        rows.append(QJsonObject{{u"id"_s, id}, {u"words"_s, words},
            {u"place"_s, QJsonArray{place.x(), place.y(), place.width(), place.height()}}});
    }
    return rows;
}

} // namespace corvelle
