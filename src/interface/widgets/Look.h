// How widgets learn light and dark, and how the toolkit's own parts take our colours.
#pragma once

#include "interface/theme/Theme.h"

#include <QPalette>

class QWidget;

namespace corvelle {

// The window's palette says which scheme it is in, so a widget is told of a change by its
// PaletteChange like any other.
Scheme schemeOf(const QWidget& widget);

// For the application: menus, text fields and scroll bars that the toolkit draws.
QPalette toolkitPalette(Scheme scheme);

// Whether positions jump and only opacity fades.
bool isMotionReduced(const QWidget& widget);

} // namespace corvelle
