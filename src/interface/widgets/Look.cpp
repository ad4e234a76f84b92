#include "interface/widgets/Look.h"

#include <QStyle>
#include <QWidget>

namespace corvelle {

Scheme schemeOf(const QWidget& widget)
{
    return widget.palette().color(QPalette::Window).lightnessF() < 0.5F ? Scheme::Dark
                                                                        : Scheme::Light;
}

QPalette toolkitPalette(Scheme scheme)
{
    const Palette& colors = palette(scheme);
    QPalette result;
    const auto set = [&](QPalette::ColorRole role, const QColor& color) {
        result.setColor(role, color);
    };
    set(QPalette::Window, colors.ground);
    set(QPalette::WindowText, colors.ink);
    set(QPalette::Base, colors.surface);
    set(QPalette::AlternateBase, colors.sunken);
    set(QPalette::Text, colors.ink);
    set(QPalette::PlaceholderText, colors.ink3);
    set(QPalette::Button, colors.raised);
    set(QPalette::ButtonText, colors.ink);
    set(QPalette::BrightText, colors.onAccent);
    set(QPalette::Highlight, colors.accent);
    set(QPalette::HighlightedText, colors.onAccent);
    set(QPalette::Link, colors.accent);
    set(QPalette::LinkVisited, colors.accentInk);
    set(QPalette::ToolTipBase, colors.inverse);
    set(QPalette::ToolTipText, colors.onInverse);
    set(QPalette::Light, colors.raised);
    set(QPalette::Midlight, colors.field);
    set(QPalette::Mid, colors.dot);
    set(QPalette::Dark, colors.ink4);
    set(QPalette::Shadow, colors.ink);
    for (const QPalette::ColorRole role :
        {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        result.setColor(QPalette::Disabled, role, colors.ink4);
    return result;
}

bool isMotionReduced(const QWidget& widget)
{
    return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0;
}

} // namespace corvelle
