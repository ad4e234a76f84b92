// A question over the dimmed window, with two or three answers.
//
// It fills its host and takes the pointer and the keyboard, but nothing waits for it: the answer
// comes as a signal. Return gives the likely answer, or the one that Tab has gone to; Escape the
// way out. The panel deletes itself after it.
#pragma once

#include <QPointer>
#include <QRect>
#include <QString>
#include <QWidget>

#include <vector>

namespace corvelle {

class GlassPanel;
class PushButton;

struct Alert
{
    enum class Role : unsigned char {
        WayOut, // at the left; Escape
        Other,
        Likely,       // at the right, filled
        LikelyDanger, // the same, for an answer that deletes
    };

    struct Answer
    {
        QString words;
        Role role = Role::Other;
    };

    QString title;
    QString text;
    std::vector<Answer> answers; // from left to right
};

class AlertPanel : public QWidget
{
    Q_OBJECT

public:
    AlertPanel(const Alert& alert, QWidget& host);

    // Gives an answer as if it had been pressed.
    void choose(int answer);

    // Where the button of an answer is, in the host.
    QRect answerPlace(int answer) const;

signals:
    // The number of the answer in Alert::answers. Sent once; the panel is on its way out then.
    void chosen(int answer);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();
    // In a row from y on, or one below the other; gives their lower edge.
    int layOutButtons(int y);
    int answerOf(bool wayOut) const;

    QWidget& m_host;
    const Alert m_alert;
    GlassPanel* m_panel = nullptr;
    std::vector<PushButton*> m_buttons;
    QPointer<QWidget> m_focusBefore;
    bool m_isAnswered = false;
};

} // namespace corvelle
