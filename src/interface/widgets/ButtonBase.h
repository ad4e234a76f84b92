// What all our buttons share: sign and words, hover, the focus ring, Return beside Space, and a
// name for screen readers.
//
// Buttons take the focus from the keyboard only, so a focused one always shows its ring.
#pragma once

#include "interface/theme/Fonts.h"
#include "interface/theme/Icons.h"
#include "interface/theme/Theme.h"

#include <QAbstractButton>

#include <optional>

namespace corvelle {

class ButtonBase : public QAbstractButton
{
    Q_OBJECT

public:
    void setSign(std::optional<Icon> sign);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    struct Measures
    {
        int height, leastWidth, padding, gap, signSize;
        double radius;
    };

    ButtonBase(const Measures& measures, QWidget* parent);

    virtual Lettering lettering() const = 0;

    // Sign and words in a row, centred.
    void drawContent(QPainter& painter, const QColor& ink, const QColor& signInk) const;
    const Palette& colors() const;
    const Measures& measures() const { return m_measures; }
    void setMeasures(const Measures& measures);
    std::optional<Icon> sign() const { return m_sign; }

    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    Measures m_measures;
    std::optional<Icon> m_sign;
};

} // namespace corvelle
