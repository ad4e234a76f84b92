// Shows the toasts of a window, one above the other, the newest below.
//
// Lives as long as its host, whose size it follows. Each toast is announced once to screen readers.
#pragma once

#include "interface/widgets/ToastModel.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <map>

class QWidget;

namespace corvelle {

class GlassPanel;

class ToastStack : public QObject
{
    Q_OBJECT

public:
    explicit ToastStack(QWidget& host);

    // `act` runs when the toast's action is pressed; the toast leaves then.
    void show(const Toast& toast, std::function<void()> act = {});

    // Takes away what was said of this, once it no longer holds.
    void dismiss(const QString& key);

    // How far the lowest toast stands above the host's lower edge; 104 by default, which is 20
    // above the dock.
    void setBottom(int pixels);

    const ToastModel& model() const { return m_model; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void synchronize();
    bool isAttended() const;
    void place();
    std::int64_t now() const { return m_clock.elapsed(); }

    QWidget& m_host;
    ToastModel m_model;
    std::map<ToastModel::Id, GlassPanel*> m_panels;
    QElapsedTimer m_clock;
    QTimer m_end;
    int m_bottom = 104;
};

} // namespace corvelle
