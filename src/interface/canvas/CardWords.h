// The words on a card and how much of it can be read at a size.
#pragma once

#include <QString>
#include <Qt>

namespace corvelle {

// The pixels of one canvas point when the zoom reads 100%.
inline constexpr double pixelsPerPoint = 1.1;

enum class Detail : unsigned char {
    Far,  // folders and pages have names, everything else is a shape with a mark
    Bars, // titles are words, what is below them are bars
    Full,
};

// At `scale` pixels a point.
Detail detailAt(double scale);

// "Empty", "1 item", "1,204 items".
QString countWords(int count);

// Where a title that is too long is cut: in the middle when it ends in an extension, which must
// stay readable.
Qt::TextElideMode titleElision(const QString& title);

} // namespace corvelle
