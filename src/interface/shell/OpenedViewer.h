// What shows an opened item over the canvas. The window has one for each kind of viewer, and lets
// one at a time show something.
//
// Main thread. The window owns viewer and surface.
#pragma once

#include "canvas/Viewer.h"
#include "interface/widgets/OpenedFrame.h"
#include "interface/widgets/ToastModel.h"

#include <QJsonObject>
#include <QObject>

namespace corvelle {

class OpenedViewer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Fills the window, and is hidden until something is ready to be shown.
    virtual OpenedFrame& surface() = 0;
    // Whether the bar that says where one is stands in the surface's own head row.
    virtual bool holdsCrumbs() const { return false; }

    // Begins to read; ready() or unreadable() follows. What was open before goes.
    virtual void open(const Node& node) = 0;
    virtual void close() = 0;
    // Puts what is ready onto the surface, which is shown by now.
    virtual void present() = 0;
    // The item's name or sign may be others.
    virtual void setNode(const Node& node) = 0;

    virtual bool isReading() const = 0;
    // Nothing is on its way that would change what is seen.
    virtual bool isSettled() const { return !isReading(); }
    // What a script sees of it, beside what is told of any opened item.
    virtual QJsonObject told() const = 0;

signals:
    void ready();
    // It can't be shown at all, and is closed; the sentence says why.
    void unreadable(const QString& sentence);
    // What was opened is painted for the first time.
    void painted();
    void toastWanted(const Toast& toast);
};

} // namespace corvelle
