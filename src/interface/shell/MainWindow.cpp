#include "interface/shell/MainWindow.h"

#include "base/Log.h"
#include "interface/shell/CanvasNotes.h"
#include "interface/shell/CrumbBar.h"
#include "interface/shell/Dock.h"
#include "interface/shell/PageViewer.h"
#include "interface/shell/ToolBar.h"
#include "interface/shell/WorkbookViewer.h"
#include "interface/shell/ZoomBar.h"
#include "interface/theme/Shadows.h"
#include "interface/trash/TrashView.h"
#include "interface/widgets/Look.h"
#include "interface/wording/Wording.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QScreen>
#include <QShortcut>

#include <ctime>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr QSize firstSize(1440, 900);
constexpr QSize leastSize(760, 480);
constexpr int edge = 16;          // of the chrome from the window's sides and top
constexpr int bottomEdge = 20;    // and from its lower edge
constexpr int filledEdge = 84;    // where what is open has a bar there
constexpr int emptyNoteTop = 330; // of 900: a little above the middle
constexpr double keyZoomFactor = 1.2;

} // namespace

MainWindow::MainWindow(CanvasModel& model, CanvasCommands& commands, bool showsScratchNote)
    : m_model(model)
    , m_commands(commands)
    , m_crumbs(new CrumbBar(model, this))
    , m_canvas(new CanvasView(model, this))
    , m_zoom(new ZoomBar(this))
    , m_dock(new Dock(this))
    , m_tools(new ToolBar(this))
    , m_trash(new TrashView(this))
    , m_page(new PageViewer(model.library(), this))
    , m_workbook(new WorkbookViewer(model.library(), this))
    , m_working(new LineNote(LineNote::Tone::Inverse, this))
    , m_empty(new EmptyNote(this))
    , m_progress(new LineNote(LineNote::Tone::Inverse, this))
{
    setWindowTitle(u"Corvelle"_s);
    setMinimumSize(leastSize);
    resize(firstSize);
    for (OpenedViewer* viewer : viewers()) {
        viewer->surface().hide();
        viewer->surface().lower();
    }
    m_trash->hide();
    m_trash->lower();
    m_canvas->lower();
    m_working->hide();
    m_toasts = new ToastStack(*this);
    if (showsScratchNote) {
        m_scratch = new LineNote(LineNote::Tone::Quiet, this);
        m_scratch->setWords(u"Test copy · scratch library"_s);
    }
    m_progress->hide();
    setTabOrder(m_crumbs, m_tools);
    setTabOrder(m_tools, m_canvas);
    setTabOrder(m_canvas, m_dock);
    setTabOrder(m_dock, m_zoom);
    setTabOrder(m_zoom, &m_page->surface());
    setTabOrder(&m_page->surface(), &m_workbook->surface());

    Library& library = model.library();
    connect(&model, &CanvasModel::cardsChanged, this, &MainWindow::updateEmptyNote);
    connect(&library, &Library::loadErrorChanged, this, &MainWindow::updateEmptyNote);
    connect(&library, &Library::importProgressChanged, this, &MainWindow::updateProgress);
    connect(&library, &Library::failed, this, [this](const QString& message) {
        m_toasts->show({u"failure"_s, Icon::Alert, shown(message), {}, {}});
    });
    connect(m_crumbs, &CrumbBar::resized, this, &MainWindow::layOut);
    connect(m_canvas, &CanvasView::zoomLabelChanged, this,
        [this] { m_zoom->setPercent(m_canvas->shownZoomPercent()); });
    connect(m_zoom, &ZoomBar::zoomInWanted, this, [this] { zoomBy(keyZoomFactor); });
    connect(m_zoom, &ZoomBar::zoomOutWanted, this, [this] { zoomBy(1 / keyZoomFactor); });
    m_zoom->setPercent(m_canvas->shownZoomPercent());

    addShortcuts();
    connectActs();
    connectOpened();
    takeScheme();
    updateEmptyNote();
    m_canvas->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::addShortcuts()
{
    const auto add = [this](const QKeySequence& key, auto act) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, act);
    };
    add(u"Alt+Left"_s, [this] { m_model.goBack(); });
    add(u"Alt+Right"_s, [this] { m_model.goForward(); });
    add(u"Alt+Home"_s, [this] { m_model.goHome(); });
    add(u"Ctrl+Shift+O"_s, [this] { emit switchLibraryWanted(); });
    add(u"Ctrl+Q"_s, [this] { close(); }); // not every desktop has a standard key for it
}

void MainWindow::setContentSize(QSize size)
{
    setMinimumSize(leastSize.boundedTo(size));
    resize(size);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - QPoint(size.width() / 2, size.height() / 2));
}

// One frame: all that the window paints, and what the events before it did.
bool MainWindow::event(QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QWidget::event(event);
    QElapsedTimer time;
    time.start();
    const bool result = QWidget::event(event);
    const double ms = m_canvas->takeEventMs() + static_cast<double>(time.nsecsElapsed()) / 1e6;
    m_canvas->frames().add(ms);
    if (m_probes && ms > m_canvas->frames().slowLimitMs())
        logLine(u"canvas slow pass %1 ms (zoom %2, cards %3, overview no): cardZoom %4"_s
                    .arg(ms, 0, 'f', 0)
                    .arg(m_model.camera().zoom, 0, 'f', 2)
                    .arg(m_model.mounted().size())
                    .arg(m_model.drawnCardZoom()));
    return result;
}

void MainWindow::probe(double slowMs)
{
    m_probes = true;
    m_canvas->frames().setSlowLimit(slowMs);
    logLine(
        u"canvas probe on: main thread %1 ms CPU since launch (menus, library, window), not in the passes below"_s
            .arg(1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC, 0, 'f', 0));
}

// ---- layout ----

void MainWindow::layOut()
{
    m_canvas->setGeometry(rect());
    m_trash->setGeometry(rect());
    for (OpenedViewer* viewer : viewers())
        viewer->surface().setGeometry(rect());
    m_tools->move(width() - edge - m_tools->width(), edge);
    m_dock->move((width() - m_dock->width()) / 2, height() - bottomEdge - m_dock->height());
    const bool isFilled = m_opened && m_opened->holdsCrumbs();
    m_crumbs->setMostWidth(
        isFilled ? m_opened->surface().headEnd() - edge : width() - 3 * edge - m_tools->width());
    m_crumbs->move(m_crumbs->isBare() ? QPoint(edge / 2, 2) : QPoint(edge, edge));
    m_zoom->move(width() - edge - m_zoom->width(), height() - bottomEdge - m_zoom->height());
    m_empty->move((width() - m_empty->width()) / 2, height() * emptyNoteTop / firstSize.height());
    const int reach = shadowReach(Elevation::Hint);
    const int aboveDock = m_dock->y() - edge + reach;
    m_progress->move((width() - m_progress->width()) / 2, aboveDock - m_progress->height());
    m_working->move((width() - m_working->width()) / 2, aboveDock - m_working->height());
    if (m_scratch)
        m_scratch->move(edge - reach,
            height() - (isFilled ? filledEdge : bottomEdge) - m_scratch->height() + reach);
}

void MainWindow::resizeEvent(QResizeEvent*)
{
    layOut();
}

void MainWindow::updateEmptyNote()
{
    m_empty->setVisible(m_model.library().isOpen() && m_model.cards().empty());
}

void MainWindow::updateProgress()
{
    const auto& progress = m_model.library().importProgress();
    m_progress->setVisible(progress.has_value());
    if (!progress)
        return;
    const QLocale english(QLocale::English);
    const QString done = english.toString(progress->done);
    m_progress->setWords(progress->total ? u"Bringing in %1 of %2 items"_s.arg(
                                               done, english.toString(*progress->total))
                                         : u"Bringing in %1 items"_s.arg(done));
    layOut();
}

// ---- light and dark ----

void MainWindow::takeScheme()
{
    m_canvas->setScheme(schemeOf(*this));
}

void MainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        takeScheme();
    QWidget::changeEvent(event);
}

// ---- acts ----

void MainWindow::zoomBy(double factor)
{
    const Camera& camera = m_model.camera();
    const QPointF centre(m_canvas->width() / 2.0, m_canvas->height() / 2.0);
    m_canvas->glideTo(zoomedAt(camera, camera.zoom * factor, centre, m_model.viewport()));
}

// What nothing with the keyboard took: it may stand in the bar above what is open.
void MainWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && showsOpened() && !m_alertPanel)
        m_model.closeOver();
    else
        QWidget::keyPressEvent(event);
}

void MainWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::BackButton)
        m_model.goBack();
    else if (event->button() == Qt::ForwardButton)
        m_model.goForward();
    else
        QWidget::mousePressEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    emit closed();
}

// ---- alerts ----

void MainWindow::showAlert(const Alert& alert, std::function<void(int)> chosen)
{
    closeAlert();
    Alert words = alert;
    words.title = shown(words.title);
    words.text = shown(words.text);
    for (Alert::Answer& answer : words.answers)
        answer.words = shown(answer.words);
    m_alert = words;
    m_alertPanel = new AlertPanel(words, *this);
    connect(
        m_alertPanel, &AlertPanel::chosen, this, [this, chosen = std::move(chosen)](int answer) {
            m_alert.reset();
            m_alertPanel.clear();
            if (showsOpened())
                m_opened->surface().takeFocus();
            else
                m_canvas->setFocus();
            chosen(answer);
        });
}

void MainWindow::closeAlert()
{
    if (m_alertPanel)
        m_alertPanel->deleteLater();
    m_alertPanel.clear();
    m_alert.reset();
}

// ---- for scripts ----

QJsonArray MainWindow::toastsJson() const
{
    QJsonArray list;
    const auto text = [](const QString& words) {
        return words.isEmpty() ? QJsonValue() : QJsonValue(words);
    };
    for (const auto& standing : m_toasts->model().toasts()) {
        const Toast& toast = standing.toast;
        list.append(QJsonObject{{u"key"_s, text(toast.key)}, {u"text"_s, toast.text},
            {u"detail"_s, text(toast.detail)}, {u"button"_s, text(toast.action)},
            {u"icon"_s, toast.icon ? QJsonValue(iconName(*toast.icon)) : QJsonValue()}});
    }
    if (m_progress->isVisible())
        list.append(QJsonObject{{u"key"_s, u"arrivals"_s}, {u"text"_s, m_progress->words()},
            {u"detail"_s, QJsonValue()}, {u"button"_s, QJsonValue()}, {u"icon"_s, QJsonValue()}});
    return list;
}

std::optional<QJsonObject> MainWindow::alertJson() const
{
    if (!m_alert || !m_alertPanel)
        return std::nullopt;
    QJsonArray buttons, places;
    for (int i = 0; i < static_cast<int>(m_alert->answers.size()); ++i) {
        const QRect place = m_alertPanel->answerPlace(i);
        buttons.append(m_alert->answers[static_cast<size_t>(i)].words);
        places.append(QJsonArray{place.x(), place.y(), place.width(), place.height()});
    }
    return QJsonObject{{u"title"_s, m_alert->title}, {u"text"_s, m_alert->text},
        {u"buttons"_s, buttons}, {u"places"_s, places}};
}

} // namespace corvelle
