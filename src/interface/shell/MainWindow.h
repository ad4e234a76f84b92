// The one window: the canvas, and the chrome that floats over it.
#pragma once

#include "canvas/CanvasModel.h"
#include "interface/canvas/CanvasView.h"
#include "interface/widgets/AlertPanel.h"
#include "interface/widgets/MenuPanel.h"
#include "interface/widgets/ToastStack.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

class QDialog;

#include <functional>
#include <optional>

namespace corvelle {

class CanvasCommands;
class CrumbBar;
class Dock;
class EmptyNote;
class LineNote;
class OpenedViewer;
class PageViewer;
class ToolBar;
class TrashView;
class WorkbookViewer;
class ZoomBar;

class MainWindow : public QWidget
{
    Q_OBJECT

public:
    MainWindow(CanvasModel& model, CanvasCommands& commands, bool showsScratchNote);
    ~MainWindow() override;

    // Sizes the window's content and centres the window on its screen.
    void setContentSize(QSize size);

    // Paints once where nobody sees it, so that the first real picture finds fonts and shadows
    // made.
    void warmUp() { (void)grab(); }

    // Logs each frame that takes longer.
    void probe(double slowMs);

    CanvasView& canvasView() { return *m_canvas; }

    // Shows the alert over all else; `chosen` gets the number of the answer. One alert at a time: a
    // newer one takes its place.
    void showAlert(const Alert& alert, std::function<void(int)> chosen);
    void closeAlert();

    // ---- acts: WindowActs.cpp ----
    void showTrash(bool shows);
    bool showsTrash() const;
    TrashView& trashView() { return *m_trash; }
    // The rows of the menu that is open, with their places; none when none is.
    QJsonArray menuJson() const;
    void closeOverlays();

    // ---- what is open over the canvas: WindowOpened.cpp ----
    bool showsOpened() const;
    bool isOpenedSettled() const;
    // Opens the field for finding with these words.
    void findInOpened(const QString& words);
    // What is open, as a script sees it; null for nothing.
    QJsonValue openedJson() const;

    // Files that something else has deleted are in the Trash.
    void tellDeletedElsewhere(int count);

    // Asks where an item is that can't be found, starting at the folder.
    void locate(const QString& id, const QString& folder);
    // Whether the place that the person chose for an item is its place now.
    void tellLocated(const QString& id, bool couldUse);

    // What a script sees of the toasts and of the alert.
    QJsonArray toastsJson() const;
    std::optional<QJsonObject> alertJson() const;

signals:
    void closed();
    void switchLibraryWanted();
    // A web or mail address, to be opened by the desktop.
    void addressWanted(const QUrl& url);
    // The person wants to say where an item is that can't be found, and then says it.
    void locateWanted(const QString& id);
    void relinkWanted(const QString& id, const QString& path);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void addShortcuts();
    void layOut();
    void takeScheme();
    void updateEmptyNote();
    void updateProgress();
    void zoomBy(double factor);

    void connectActs();
    void addEditShortcuts();
    void openMenu(const QString& key, QPoint at);
    void showMenu(
        std::vector<MenuRow> rows, QPoint at, const std::function<void(const QString&)>& act);
    void actOnCards(const QString& act, const std::vector<QString>& ids, QPoint at);
    void actOnCanvas(const QString& act, QPointF point);
    void makeNew(NodeKind kind, QPointF point);
    void askForLink(QPointF point);
    void chooseFiles(QPointF point);
    void openDialog(QDialog& dialog);
    void tellMissing(const QString& id);
    void pickIcon(const QString& id, QPoint at);
    void copyLinks(const std::vector<QString>& ids);
    void paste();
    void askToDelete(const std::vector<QString>& ids);
    void tellWithUndo(const QString& text, const QString& undoName);
    void fillTrash();
    void showWorking();
    bool isCanvasCovered() const { return showsTrash() || showsOpened(); }

    void connectOpened();
    OpenedViewer* viewerFor(const Node& node) const;
    std::vector<OpenedViewer*> viewers() const;
    void showOpened();
    void leaveOpened();
    void presentOpened();
    void nameOpened();
    void showChrome(bool shows);
    void openWorkbookMenu(QPoint at);

    // ---- WindowPage.cpp ----
    void connectPage();
    void followItem(const QString& id);
    void followAddress(const QString& address);
    const Node* linkedFile(const QString& link) const;
    void followFile(const Node& node);
    void openPageMenu(QPoint at);
    void openTextMenu(QPoint at);
    void actOnPage(const QString& act);
    void copyPage(bool html);
    void exportPage(const Node& node, bool html);

    CanvasModel& m_model;
    CanvasCommands& m_commands;
    CrumbBar* m_crumbs;
    CanvasView* m_canvas;
    ZoomBar* m_zoom;
    Dock* m_dock;
    ToolBar* m_tools;
    TrashView* m_trash;
    PageViewer* m_page;
    WorkbookViewer* m_workbook;
    OpenedViewer* m_opened = nullptr; // that something is open in, read or shown
    QElapsedTimer m_opening;          // since something was opened
    double m_readAfterMs = 0;         // it was ready to be shown,
    double m_paintedAfterMs = 0;      // it was first painted
    QString m_wordsToFind;            // once what is being opened is there
    QPointer<MenuPanel> m_menu;
    LineNote* m_working; // while the main thread is kept
    QTimer m_workingEnds;
    EmptyNote* m_empty;
    LineNote* m_progress;
    LineNote* m_scratch = nullptr;
    bool m_probes = false;
    ToastStack* m_toasts = nullptr;
    QPointer<AlertPanel> m_alertPanel;
    std::optional<Alert> m_alert; // while its panel shows
    int m_deletedElsewhere = 0;   // that the toast tells, while it stands
};

} // namespace corvelle
