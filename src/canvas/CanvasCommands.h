// What a person can do to the cards of the open folder, as one call for each, however it is asked
// for: by menu, key, dragging, dropping or pasting.
//
// Lives as long as the window, on the main thread. It decides where new cards land, selects them
// and says what a toast tells.
#pragma once

#include "canvas/CanvasModel.h"
#include "disk/AddFiles.h"
#include "library/Duplicates.h"
#include "library/Edits.h"
#include "library/PageSaves.h"

#include <QUrl>

namespace corvelle {

// What of a text that was dropped becomes what.
struct DroppedText
{
    std::vector<QString> links; // web addresses; then nothing else counts
    QString title;              // of a page; the first line when it is short enough
    std::vector<QString> lines; // of its body

    bool isNothing() const { return links.empty() && title.isEmpty() && lines.empty(); }
};
DroppedText droppedText(const QString& text);

// The document of a page with a paragraph for each line.
QString pageOfLines(const std::vector<QString>& lines);

class CanvasCommands : public QObject
{
    Q_OBJECT

public:
    CanvasCommands(CanvasModel& model, Edits& edits, UndoManager& manager, Duplicates& duplicates,
        AddFiles& addFiles, PageSaves& pageSaves, QObject* parent = nullptr);

    Edits& edits() const { return m_edits; }
    UndoManager& undoManager() const { return m_manager; }

    // A new card at the free spot nearest to a point of the canvas; its title is edited at once.
    void makeFolder(QPointF point);
    void makePage(QPointF point);
    void makeLink(const QString& url, QPointF point);

    void rename(const QString& id, const QString& title);
    void trash(const std::vector<QString>& ids);
    void putBack(const std::vector<QString>& ids);
    void duplicate(const std::vector<QString>& ids);
    void setColor(const std::vector<QString>& ids, NodeColor color);

    // The end of a drag.
    void place(const std::map<QString, QPointF>& points);
    void moveInto(const std::vector<QString>& ids, const QString& folder);
    // Out of the open folder to one above it, beside the folder that they come from.
    void moveUp(const std::vector<QString>& ids, const QString& folder);

    // Files, web addresses and text from outside, into a folder or, with an empty one, onto the
    // open canvas at the point.
    void addUrls(const QList<QUrl>& urls, const QString& intoFolder, QPointF point);
    void addText(const QString& text, QPointF point);

    void undo();
    void redo();

    // The middle of what is in view, on the canvas.
    QPointF middle() const;
    // The selection in the order of the folder.
    std::vector<QString> selected() const;

signals:
    // Something was done that a toast tells; with `undoName` it offers to take that step back.
    void told(const QString& text, const QString& undoName);

private:
    QString make(NodeKind kind, const QString& url, const QString& title, QPointF point);
    QPointF spotFor(NodeKind kind, QPointF point) const;
    void show(const std::vector<QString>& ids);

    CanvasModel& m_model;
    Library& m_library;
    Edits& m_edits;
    UndoManager& m_manager;
    Duplicates& m_duplicates;
    AddFiles& m_addFiles;
    PageSaves& m_pageSaves;
};

} // namespace corvelle
