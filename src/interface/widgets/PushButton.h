// A button with a surface: the one thing to press in accent, the others outlined.
#pragma once

#include "interface/widgets/ButtonBase.h"

#include <QString>

namespace corvelle {

class PushButton : public ButtonBase
{
    Q_OBJECT

public:
    enum class Role : unsigned char {
        Primary,
        PrimaryDanger, // filled, for an answer that deletes for good
        Secondary,
        SecondaryDanger,
    };
    enum class Size : unsigned char { Normal, Small };

    PushButton(const QString& words, Role role, QWidget* parent, Size size = Size::Normal);

    // Shown after the words, paler: the key that does the same.
    void setKey(const QString& key);

    // Closer at the sides, where buttons must share a row that is short.
    void setSnug();

    QSize sizeHint() const override;

protected:
    Lettering lettering() const override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isFilled() const { return m_role == Role::Primary || m_role == Role::PrimaryDanger; }
    QColor fill() const;
    QColor ink() const;

    const Role m_role;
    const Size m_size;
    QString m_key;
};

} // namespace corvelle
