// Where the moving end of a selection goes by the keyboard, as far as the text alone decides.
//
// In a cell it stays in the cell's text. Once two cells of a table are selected, it goes from cell
// to cell; a table in which the other end isn't is passed whole. On the main thread.
#pragma once

#include "interface/page/PagePlace.h"

namespace corvelle {

enum class CaretStep { Character, Word, Block, Page };

PagePlace movedBy(CaretStep step, bool forward, const FlatText& page, const PagePlace& anchor,
    const PagePlace& head);

// Whether the two are in different cells of one table.
bool isAcrossCells(const FlatText& page, const PagePlace& anchor, const PagePlace& head);

// Of two such places: the head in the cell beside or below its own; none at the table's edge.
std::optional<PagePlace> cellBeside(
    const FlatText& page, const PagePlace& anchor, const PagePlace& head, int rows, int columns);

// Out of a table that the anchor isn't in, at its beginning or its end.
PagePlace outOfTables(const PagePlace& anchor, PagePlace head, bool toEnd);

// The word round a place of a text, or the blanks or signs between two.
std::pair<qsizetype, qsizetype> wordAround(const QString& text, qsizetype at);

} // namespace corvelle
