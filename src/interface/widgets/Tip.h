// Tells a control's name and key after the pointer has rested on it: "Clean up  Ctrl Shift L".
//
// Owned by its control. The hint lies in the window, below the control or above it when there is no
// room.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class QWidget;

namespace corvelle {

class Tip : public QObject
{
    Q_OBJECT

public:
    Tip(QWidget& control, const QString& name, const QString& key = {});
    ~Tip() override;

    void setWords(const QString& name, const QString& key = {});

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();
    void hide();

    QWidget& m_control;
    QString m_name, m_key;
    QTimer m_rest;
    QPointer<QWidget> m_hint;
};

} // namespace corvelle
