// Asks for one line over the dimmed window: the address of a website, say.
//
// Return gives the line, Escape or a press beside the panel closes it. It deletes itself.
#pragma once

#include <QPointer>
#include <QWidget>

class QLineEdit;

namespace corvelle {

class GlassPanel;

class PromptPanel : public QWidget
{
    Q_OBJECT

public:
    PromptPanel(
        const QString& title, const QString& placeholder, const QString& button, QWidget& host);

    QLineEdit& field() const { return *m_field; }

signals:
    // Not sent for a blank line.
    void given(const QString& line);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void give();
    void closePanel();
    void place();

    QWidget& m_host;
    GlassPanel* m_panel;
    QLineEdit* m_field;
    QPointer<QWidget> m_focusBefore;
};

} // namespace corvelle
