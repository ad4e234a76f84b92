// A button of the bars and the dock: a sign, words or both, without a surface until the pointer is
// over it.
#pragma once

#include "interface/widgets/ButtonBase.h"

#include <QString>

namespace corvelle {

class Tip;

class BarButton : public ButtonBase
{
    Q_OBJECT

public:
    enum class Form : unsigned char {
        Bar,   // 32 px high
        Crumb, // the same, closer at the sides
        Dock,  // 64 x 52, the sign above the words
    };

    // The name is what a screen reader says and the tip shows; the words may be empty beside a
    // sign.
    BarButton(Icon sign, const QString& name, QWidget* parent, Form form = Form::Bar);
    BarButton(const QString& words, QWidget* parent, Form form = Form::Bar);

    // The key is shown in the tip, as the desktop writes it.
    void setName(const QString& name, const QString& key = {});

    // The place where one is: semibold and dark.
    void setHere(bool here);
    void setSignSize(int pixels);
    // Something dragged is over it and would be taken.
    void setTargeted(bool targeted);

    QSize sizeHint() const override;

protected:
    Lettering lettering() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    void drawDockItem(QPainter& painter, const QColor& ink) const;

    const Form m_form;
    bool m_isHere = false;
    bool m_isTargeted = false;
    Tip* m_tip = nullptr;
};

} // namespace corvelle
