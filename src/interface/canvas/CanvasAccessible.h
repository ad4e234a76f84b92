#pragma once

#include <QString>

namespace corvelle {

class CanvasModel;

// What a screen reader says of a card: kind, title, and count or size ("Folder, Taxes, 12 items").
QString spokenCard(const CanvasModel& model, const QString& key);

// Lets the toolkit make the accessible form of every canvas view: a list whose items are the cards.
// Once, before the first view.
void installCanvasAccessibility();

} // namespace corvelle
