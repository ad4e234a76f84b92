// The field in which a card's title is edited, in the place where the title stands.
//
// It deletes itself when the editing has ended: Return and the loss of focus take the text over,
// Escape doesn't.
#pragma once

#include <QLineEdit>

namespace corvelle {

class TitleField : public QLineEdit
{
    Q_OBJECT

public:
    // Of a name with an extension only what stands before it is selected.
    TitleField(const QString& title, bool hasExtension, QWidget* parent);

    void setLook(const QFont& font, const QColor& ink, const QColor& fill);

signals:
    void committed(const QString& text);
    // After committed(), or alone when nothing shall change.
    void ended();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void end(bool takesOver);

    const QString m_before;
    bool m_hasEnded = false;
};

} // namespace corvelle
