// A real library on a real disk with everything that edits it, opened and closed as the program
// does.
#pragma once

#include "base/Log.h"
#include "disk/AddFiles.h"
#include "disk/DiskSync.h"
#include "disk/LinkSync.h"
#include "library/Duplicates.h"
#include "library/Edits.h"
#include "library/PageSaves.h"
#include "support/EventLoop.h"
#include "support/Printing.h"
#include "support/TempFolder.h"

#include <QDirIterator>

#include <gtest/gtest.h>

#include <memory>

class EditedLibrary
{
public:
    explicit EditedLibrary(QString root, corvelle::OpenMode mode = corvelle::OpenMode::Application)
        : library({root, true}, mode)
        , journal(manager)
        , edits(library, manager, journal)
        , duplicates(edits)
        , pageSaves(library)
        , addFiles(edits)
        , diskSync(library)
        , linkSync(library)
    {
        using namespace corvelle;
        QObject::connect(&library, &Library::failed, &library,
            [this](const QString& message) { failures.append(message); });
        QObject::connect(&journal, &UndoJournal::refused, &library,
            [this](const QString& title, const QString& reason) {
                refusals.append(title + " | " + reason);
            });
        const auto noteRemovals = [this](const std::map<QString, double>& times) {
            journal.closeGesture();
            journal.record(change::Trashed{times});
            journal.setName("Move to Trash");
            journal.closeGesture();
        };
        QObject::connect(&diskSync, &DiskSync::removedOnDisk, &library, noteRemovals);
        QObject::connect(&linkSync, &LinkSync::removedOnDisk, &library, noteRemovals);
        EXPECT_TRUE(library.open(openLibrary({root, true}, mode)))
            << library.loadError().toStdString();
        journal.start(
            {library.root(), databasePath(library.root()), mode == OpenMode::ToolServer, {}});
    }
    ~EditedLibrary() { journal.quit(); }

    // Ends the gesture, as the event loop does.
    void done() { manager.closeEventGroup(); }
    bool settle()
    {
        done();
        return turnUntil([this] {
            return diskSync.isIdle() && linkSync.isIdle() && addFiles.isIdle() &&
                   duplicates.isIdle() && edits.isIdle() && !library.isReloading() &&
                   !journal.isWriting();
        });
    }
    // A whole look at the disk, to its end.
    bool look()
    {
        diskSync.start();
        return settle();
    }

    QString make(corvelle::NodeKind kind, const QString& title, const QString& parent = {})
    {
        corvelle::Edits::Wish wish;
        wish.kind = kind;
        wish.title = title;
        wish.parent = parent;
        wish.url = "https://example.com/";
        const QString id = edits.make(wish);
        done();
        return id;
    }
    QString folder(const QString& title, const QString& parent = {})
    {
        return make(corvelle::NodeKind::Folder, title, parent);
    }
    const corvelle::Node& node(const QString& id) const { return *library.node(id); }
    QString path(const QString& id) const { return library.filePath(node(id)); }
    QString find(const QString& title) const
    {
        QString found;
        library.tree().eachNode([&](const corvelle::Node& n, const corvelle::SeenFile&) {
            if (n.title == title && !library.isInTrash(n.id))
                found = n.id;
        });
        return found;
    }
    bool undo()
    {
        done();
        const bool could = manager.canUndo();
        manager.undo();
        return could;
    }
    bool redo()
    {
        done();
        const bool could = manager.canRedo();
        manager.redo();
        return could;
    }
    QString lastFailure() const { return failures.isEmpty() ? QString() : failures.last(); }

    corvelle::Library library;
    corvelle::UndoManager manager;
    corvelle::UndoJournal journal;
    corvelle::Edits edits;
    corvelle::Duplicates duplicates;
    corvelle::PageSaves pageSaves;
    corvelle::AddFiles addFiles;
    corvelle::DiskSync diskSync;
    corvelle::LinkSync linkSync;
    QStringList failures, refusals;
};
