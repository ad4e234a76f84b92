#pragma once

namespace corvelle {

// Lets the toolkit make the accessible form of every page's view: a text to read. Once, before the
// first view.
void installPageAccessibility();

} // namespace corvelle
