#pragma once

namespace corvelle {

// Lets the toolkit make the accessible form of every sheet's view: a table of cells. Once, before
// the first view.
void installSheetAccessibility();

} // namespace corvelle
