// The running program: owns the library, its services and the window, and starts and stops them in
// their order.
#pragma once

#include "app/Defaults.h"
#include "app/LaunchOptions.h"
#include "canvas/CanvasCommands.h"
#include "canvas/CanvasModel.h"
#include "disk/AddFiles.h"
#include "disk/DiskSync.h"
#include "disk/LinkSync.h"
#include "interface/shell/MainWindow.h"
#include "library/Duplicates.h"
#include "library/Edits.h"
#include "library/Library.h"
#include "library/PageSaves.h"
#include "platform/Appearance.h"
#include "platform/MessageBus.h"

#include <QApplication>
#include <QElapsedTimer>

#include <future>
#include <memory>

namespace corvelle {

class TestDriver;
}

class QMimeData;

namespace corvelle {

// The toolkit's application object, which times every event: nothing may keep the main thread for
// long.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;

    double longestEventMs() const { return m_longestMs; }
    void resetLongestEvent() { m_longestMs = 0; }

private:
    int m_depth = 0;
    double m_longestMs = 0;
};

class Application : public QObject
{
    Q_OBJECT

public:
    // `opening` runs since before the toolkit started.
    Application(TimedApplication& toolkit, LaunchOptions options, LibraryPlace place,
        std::future<LibraryOpening> opening);
    ~Application() override;

    // Hands the address to the copy that has the library, if one has: true when this copy is done.
    bool handOver();

    // Shows the window, opens the library and starts what runs beside it.
    void start();

    // The orderly stop.
    void quit();

    Library& library() { return m_library; }
    DiskSync& diskSync() { return m_diskSync; }
    LinkSync& linkSync() { return m_linkSync; }
    PageSaves& pageSaves() { return m_pageSaves; }
    Edits& edits() { return m_edits; }
    Duplicates& duplicates() { return m_duplicates; }
    AddFiles& addFiles() { return m_addFiles; }
    UndoManager& undoManager() { return m_undoManager; }
    UndoJournal& journal() { return m_journal; }
    CanvasModel& canvas() { return m_canvas; }
    MainWindow& window() { return *m_window; }

    // Opens an item that is no folder: a file in its application, a website in the browser.
    void openItem(const QString& id);
    void openAddress(const QUrl& url);
    void closeOverlay();

    // What is under way, as words; empty when the program is idle.
    QStringList busyWith() const;
    double longestEventMs() const { return m_toolkit.longestEventMs(); }
    void resetLongestEvent() { m_toolkit.resetLongestEvent(); }

    // Real input events, as from the window system.
    void postKey(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, const QString& text);
    void postMouse(
        QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    // A drag of another program that comes in and is let go; takes what it carries.
    void postDrop(QPointF at, QMimeData* carried);
    void postWheel(QPointF at, QPoint pixels, QPoint angle, Qt::KeyboardModifiers modifiers);

private:
    void libraryOpened();
    void startServices();
    void startJournal();
    void noteRemovals(const std::map<QString, double>& times);
    void tellProblem();
    void tellSecondCopy();
    void tellMissing();
    void tellFailed();
    void tryAgain();
    void chooseLibrary();
    void tellNotALibrary(const QString& folder);
    void switchTo(const QString& folder);
    void relaunchIfPending();
    void received(const BusMessage& message);
    void bringToFront(const QString& activationToken);
    void openAddressed(const QString& id);
    void takeAppearance();
    void watchSignals();

    TimedApplication& m_toolkit;
    const LaunchOptions m_options;
    Defaults m_defaults;
    Appearance m_appearance;
    std::future<LibraryOpening> m_opening;
    std::optional<LibraryOpening> m_opened;
    Library m_library;
    UndoManager m_undoManager;
    UndoJournal m_journal;
    Edits m_edits;
    Duplicates m_duplicates;
    PageSaves m_pageSaves;
    AddFiles m_addFiles;
    CanvasModel m_canvas;
    CanvasCommands m_commands;
    DiskSync m_diskSync;
    LinkSync m_linkSync;
    std::unique_ptr<MessageBus> m_bus;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TestDriver> m_driver;
    SerialQueue m_background;
    std::optional<QString> m_pendingRelaunch; // the library to go to; empty for the default one
    Qt::MouseButtons m_buttonsHeld;
    bool m_started = false;
};

} // namespace corvelle
