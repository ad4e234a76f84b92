#include "app/Application.h"

#include "app/KeyMigration.h"
#include "app/Relaunch.h"
#include "app/TestDriver.h"
#include "base/Log.h"
#include "interface/canvas/CanvasAccessible.h"
#include "interface/page/PageAccessible.h"
#include "interface/sheet/SheetAccessible.h"
#include "interface/widgets/Look.h"
#include "interface/wording/Wording.h"
#include "library/DataSteps.h"
#include "platform/Desktop.h"
#include "platform/KeyStore.h"

#include <QDesktopServices>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QSocketNotifier>
#include <QThread>
#include <QUrl>
#include <QWheelEvent>
#include <QWindow>

#include <chrono>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

const QString libraryChangedMessage = u"app.corvelle.library-changed"_s;
const QString showMessage = u"app.corvelle.show"_s;
const QString openItemMessage = u"app.corvelle.open-item"_s;

constexpr int handOverTries = 40; // the other copy may still be starting
constexpr unsigned long handOverStepMs = 50;

QString activationToken()
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

// The write end of a socket pair that a signal handler may use.
int signalSocket = -1;

void onSignal(int)
{
    const char byte = 0;
    (void)!::write(signalSocket, &byte, 1);
}

} // namespace

bool TimedApplication::notify(QObject* receiver, QEvent* event)
{
    if (m_depth > 0)
        return QApplication::notify(receiver, event);
    QElapsedTimer time;
    time.start();
    ++m_depth;
    const bool result = QApplication::notify(receiver, event);
    --m_depth;
    m_longestMs = std::max(m_longestMs, static_cast<double>(time.nsecsElapsed()) / 1e6);
    return result;
}

Application::Application(TimedApplication& toolkit, LaunchOptions options, LibraryPlace place,
    std::future<LibraryOpening> opening)
    : m_toolkit(toolkit)
    , m_options(std::move(options))
    , m_opening(std::move(opening))
    , m_library(std::move(place), OpenMode::Application)
    , m_journal(m_undoManager)
    , m_edits(m_library, m_undoManager, m_journal)
    , m_duplicates(m_edits)
    , m_pageSaves(m_library)
    , m_addFiles(m_edits)
    , m_canvas(m_library)
    , m_commands(m_canvas, m_edits, m_undoManager, m_duplicates, m_addFiles, m_pageSaves)
    , m_diskSync(m_library)
    , m_linkSync(m_library)
    , m_bus(std::make_unique<MessageBus>())
    , m_background(u"corvelle.background"_s)
{}

Application::~Application() = default;

// ---- start ----

bool Application::handOver()
{
    if (m_options.itemID.isEmpty())
        return false;
    m_opened = m_opening.get();
    if (!m_opened->heldBy)
        return false;
    const BusMessage message{openItemMessage, m_options.itemID, activationToken()};
    for (int i = 0; i < handOverTries; ++i) {
        if (m_bus->send(message, *m_opened->heldBy))
            return true;
        QThread::msleep(handOverStepMs);
    }
    return false;
}

void Application::start()
{
    watchSignals();
    installCanvasAccessibility();
    installPageAccessibility();
    installSheetAccessibility();
    takeAppearance();
    connect(&m_appearance, &Appearance::changed, this, &Application::takeAppearance);
    m_window = std::make_unique<MainWindow>(m_canvas, m_commands, m_options.showsScratchNote());
    m_window->canvasView().setShowsDots(m_defaults.showsDots());
    if (m_options.probeMs)
        m_window->probe(*m_options.probeMs);
    if (m_options.size)
        m_window->setContentSize(*m_options.size);
    if (m_options.background)
        m_window->setAttribute(Qt::WA_ShowWithoutActivating);
    connect(m_window.get(), &MainWindow::closed, this, &Application::quit);
    connect(m_window.get(), &MainWindow::switchLibraryWanted, this, &Application::chooseLibrary);
    connect(&m_canvas, &CanvasModel::openItem, this, &Application::openItem);
    connect(m_window.get(), &MainWindow::addressWanted, this, &Application::openAddress);
    connect(m_window.get(), &MainWindow::locateWanted, this, [this](const QString& id) {
        m_linkSync.findPlaceNear(
            id, [this, id](const QString& folder) { m_window->locate(id, folder); });
    });
    connect(m_window.get(), &MainWindow::relinkWanted, this,
        [this](const QString& id, const QString& path) {
            m_window->tellLocated(id, m_linkSync.relink(id, path));
        });
    connect(&m_canvas, &CanvasModel::missingOpened, &m_linkSync, &LinkSync::visit);
    connect(m_bus.get(), &MessageBus::received, this, &Application::received);
    connect(&m_diskSync, &DiskSync::removedOnDisk, this, &Application::noteRemovals);
    connect(&m_linkSync, &LinkSync::removedOnDisk, this, &Application::noteRemovals);
    connect(&m_linkSync, &LinkSync::removedOnDisk, &m_diskSync, &DiskSync::countDeleted);
    connect(&m_linkSync, &LinkSync::mountsChanged, &m_diskSync, &DiskSync::lookUnderMounts);
    connect(&m_toolkit, &QGuiApplication::applicationStateChanged, this,
        [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive)
                m_linkSync.lookForFolders();
        });
    connect(&m_addFiles, &AddFiles::lookWanted, &m_diskSync, &DiskSync::start);
    connect(&m_diskSync, &DiskSync::deletedElsewhere, m_window.get(),
        &MainWindow::tellDeletedElsewhere);

    if (!m_options.driverFile.isEmpty())
        m_driver = std::make_unique<TestDriver>(*this, m_options.driverFile);
    if (!m_options.isUnderTest())
        m_background.async([] {
            migrateKey(keysFilePath(),
                [](const QString& key) { return saveKey(u"ANTHROPIC_API_KEY"_s, key); });
        });

    // While the library is still being read, the window gets its fonts and shadows ready.
    if (!m_opened && m_opening.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        m_window->warmUp();
    m_library.open(m_opened ? std::move(*m_opened) : m_opening.get());
    m_opened.reset();
    m_window->show();
    libraryOpened();
}

void Application::takeAppearance()
{
    QApplication::setPalette(toolkitPalette(m_appearance.isDark() ? Scheme::Dark : Scheme::Light));
}

void Application::libraryOpened()
{
    if (!m_library.isOpen()) {
        tellProblem();
        return;
    }
    // After the first picture, which shows what the table says.
    QTimer::singleShot(0, this, &Application::startServices);
    if (!m_started) {
        m_started = true;
        m_canvas.open(m_options.folder);
        openAddressed(m_options.itemID);
    }
}

void Application::startJournal()
{
    m_journal.start(
        {m_library.root(), databasePath(m_library.root()), false, [this](const QString& id) {
             const Node* node = m_library.node(id);
             return node ? node->path : QString();
         }});
}

// Nobody asked for it here, so it is a step apart from whatever the person is doing.
void Application::noteRemovals(const std::map<QString, double>& times)
{
    m_journal.closeGesture();
    m_journal.record(change::Trashed{times});
    m_journal.setName(u"Move to Trash"_s);
    m_journal.closeGesture();
}

void Application::startServices()
{
    startJournal();
    m_background.async([root = m_library.root()] {
        if (auto connection = SQLite::open(databasePath(root)))
            runDataSteps(*connection);
    });
    m_diskSync.watch();
    m_linkSync.start();
}

// ---- problems at the opening ----

void Application::tellProblem()
{
    if (m_options.background) {
        if (m_library.heldBy())
            quit();
        return;
    }
    if (m_library.heldBy())
        tellSecondCopy();
    else if (m_library.isMissingFolder())
        tellMissing();
    else
        tellFailed();
}

void Application::tellSecondCopy()
{
    m_window->showAlert(
        {u"“%1” is already open"_s.arg(m_library.name()),
            u"Another copy of Corvelle has this library open. A library opens in one copy at a "
            u"time, so neither "
            u"saves over the other’s changes. This copy will close and show you that one."_s,
            {{u"Show Other Copy"_s, Alert::Role::Likely}}},
        [this](int) {
            if (*m_library.heldBy() >= 1)
                m_bus->send({showMessage, {}, activationToken()}, *m_library.heldBy());
            quit();
        });
}

void Application::tellMissing()
{
    const QString parent = QFileInfo(m_library.place().root).absolutePath();
    m_window->showAlert(
        {u"Can’t find the library “%1”"_s.arg(m_library.name()),
            u"It was in %1. It may have been renamed or moved in Finder, or be on a disk that "
            u"isn’t connected. "
            u"Nothing in it has changed."_s.arg(parent),
            {{u"Back to Corvelle Library"_s, Alert::Role::WayOut},
                {u"Try Again"_s, Alert::Role::Other}, {u"Choose Library…"_s, Alert::Role::Likely}}},
        [this](int answer) {
            if (answer == 0)
                switchTo(defaultLibrary());
            else if (answer == 1)
                tryAgain();
            else
                chooseLibrary();
        });
}

void Application::tellFailed()
{
    m_window->showAlert(
        {u"Couldn’t open the library “%1”"_s.arg(m_library.name()),
            u"Corvelle couldn’t read it, or couldn’t save in its folder: its data may be damaged, "
            u"or the folder "
            u"may not allow changes. Nothing in it has changed."_s,
            {{u"Quit"_s, Alert::Role::WayOut}, {u"Show in Finder"_s, Alert::Role::Other},
                {u"Choose Library…"_s, Alert::Role::Likely}}},
        [this](int answer) {
            if (answer == 0) {
                quit();
            } else if (answer == 1) {
                showInFileManager(m_library.place().root);
                tellFailed();
            } else {
                chooseLibrary();
            }
        });
}

void Application::tryAgain()
{
    const LibraryPlace place = m_library.place();
    if (isMissing(place)) {
        tellMissing();
        return;
    }
    m_library.open(openLibrary(place, OpenMode::Application, m_library.takeLock()));
    libraryOpened();
}

void Application::chooseLibrary()
{
    auto* dialog = new QFileDialog(m_window.get(),
        shown(u"Choose a library folder, or make an empty one for a new library."_s));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, u"Open Library"_s);
    dialog->setDirectory(QFileInfo(m_library.place().root).absolutePath());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &Application::switchTo);
    connect(dialog, &QFileDialog::rejected, this, [this] {
        if (!m_library.isOpen())
            tellProblem();
    });
    dialog->open();
}

void Application::tellNotALibrary(const QString& folder)
{
    m_window->showAlert(
        {u"“%1” isn’t a library"_s.arg(QFileInfo(folder).fileName()),
            u"Choose an empty folder to start a new library, or one you’ve opened as a library "
            u"before. A new "
            u"library can bring in files from this folder with Corvelle ▸ Onboarding."_s,
            {{u"Cancel"_s, Alert::Role::WayOut}, {u"Choose Another…"_s, Alert::Role::Likely}}},
        [this](int answer) {
            if (answer == 1)
                chooseLibrary();
            else if (!m_library.isOpen())
                tellProblem();
        });
}

void Application::switchTo(const QString& folder)
{
    const QString chosen = expandedPath(folder);
    if (m_library.isOpen() && QFileInfo(chosen).canonicalFilePath() == m_library.root())
        return;
    if (!passesLibraryTest(chosen)) {
        tellNotALibrary(chosen);
        return;
    }
    m_pendingRelaunch = chosen == defaultLibrary() ? QString() : chosen;
    quit();
}

// ---- stop ----

void Application::quit()
{
    // A field that is being edited gives up focus first, so that its edit is committed.
    if (QWidget* focused = QApplication::focusWidget())
        focused->clearFocus();
    m_pageSaves.drain();
    m_journal.quit();
    relaunchIfPending();
    // Queued: a stop that is asked for before the event loop runs counts as well.
    QMetaObject::invokeMethod(
        qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
}

void Application::relaunchIfPending()
{
    if (!m_pendingRelaunch)
        return;
    m_defaults.setLibraryPath(*m_pendingRelaunch);
    m_pendingRelaunch.reset();
    relaunch(m_options.background);
}

void Application::watchSignals()
{
    int sockets[2] = {};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return;
    signalSocket = sockets[0];
    auto* notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        quit();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

// ---- other programs ----

void Application::received(const BusMessage& message)
{
    if (message.name == libraryChangedMessage) {
        if (message.object.isEmpty() || message.object == m_library.root())
            m_library.reload();
    } else if (message.name == showMessage) {
        bringToFront(message.token);
    } else if (message.name == openItemMessage) {
        bringToFront(message.token);
        openAddressed(message.object);
    }
}

void Application::bringToFront(const QString& token)
{
    // Where the window system wants a token for this, the toolkit takes it from here.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void Application::openAddressed(const QString& id)
{
    const Node* node = m_library.node(id);
    if (!node || m_library.isInTrash(id))
        return;
    if (node->kind == NodeKind::Folder) {
        m_canvas.open(id);
        return;
    }
    m_canvas.open(node->parentID);
    m_canvas.select({id});
    m_canvas.openCard(id);
}

void Application::openItem(const QString& id)
{
    const Node* node = m_library.node(id);
    if (!node)
        return;
    QUrl target;
    if (node->kind == NodeKind::File)
        target = QUrl::fromLocalFile(m_library.filePath(*node));
    else if (node->kind == NodeKind::Link)
        target = QUrl(node->url);
    if (target.isEmpty())
        return;
    if (!QDesktopServices::openUrl(target))
        m_library.fail(
            u"Couldn’t open “%1”: no application on this Mac opens it."_s.arg(node->title));
}

void Application::openAddress(const QUrl& url)
{
    if (!QDesktopServices::openUrl(url))
        m_library.fail(u"Couldn’t open “%1”: no application on this Mac opens it."_s.arg(
            url.toDisplayString()));
}

void Application::closeOverlay()
{
    m_window->closeOverlays();
}

// ---- for the test driver ----

QStringList Application::busyWith() const
{
    QStringList busy;
    if (!m_diskSync.isIdle())
        busy.append(u"disk"_s);
    if (!m_linkSync.isIdle())
        busy.append(u"links"_s);
    if (!m_addFiles.isIdle())
        busy.append(u"arrivals"_s);
    if (!m_duplicates.isIdle())
        busy.append(u"duplicates"_s);
    if (!m_pageSaves.isIdle())
        busy.append(u"saves"_s);
    if (!m_edits.isIdle())
        busy.append(u"removals"_s);
    if (m_journal.isWriting())
        busy.append(u"journal"_s);
    if (m_library.isReloading())
        busy.append(u"reload"_s);
    if (!m_background.isIdle())
        busy.append(u"upkeep"_s);
    if (!m_window->canvasView().isSettled())
        busy.append(u"cards"_s);
    if (!m_window->isOpenedSettled())
        busy.append(u"page"_s);
    return busy;
}

void Application::postKey(
    QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, const QString& text)
{
    QWidget* focused = QApplication::focusWidget();
    QObject* target = focused ? focused : &m_window->canvasView();
    QString typed = text;
    if (typed.isEmpty() && !(modifiers & ~Qt::ShiftModifier) && key < 0x80)
        typed = QChar(key).toLower();
    QCoreApplication::postEvent(target, new QKeyEvent(type, key, modifiers, typed));
}

void Application::postMouse(
    QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    if (type == QEvent::MouseButtonRelease)
        m_buttonsHeld &= ~Qt::MouseButtons(button);
    else if (type != QEvent::MouseMove)
        m_buttonsHeld |= button;
    QWindow* window = m_window->windowHandle();
    QCoreApplication::postEvent(window,
        new QMouseEvent(type, at, window->mapToGlobal(at), button, m_buttonsHeld, modifiers));
}

// As the window system hands a drag over: to the window, which finds the widget below the point.
void Application::postDrop(QPointF at, QMimeData* carried)
{
    std::unique_ptr<QMimeData> held(carried);
    QWindow* window = m_window->windowHandle();
    constexpr Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QDragEnterEvent enter(at.toPoint(), actions, carried, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    QDragMoveEvent move(at.toPoint(), actions, carried, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &move);
    QDropEvent drop(at, actions, carried, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &drop);
}

void Application::postWheel(
    QPointF at, QPoint pixels, QPoint angle, Qt::KeyboardModifiers modifiers)
{
    QWindow* window = m_window->windowHandle();
    QCoreApplication::postEvent(window, new QWheelEvent(at, window->mapToGlobal(at), pixels, angle,
                                            m_buttonsHeld, modifiers, Qt::NoScrollPhase, false));
}

} // namespace corvelle
