// Where the cells of a sheet stand: columns as wide as their contents, rows of one height. Pure.
//
// Logical pixels, from the upper left corner of the first cell.
#pragma once

#include "documents/Xlsx.h"

#include <QSize>

#include <functional>
#include <vector>

namespace corvelle {

class SheetLayout
{
public:
    static constexpr int rowHeight = 30, headHeight = 26;
    static constexpr int side = 10; // of a cell, left and right of its text
    static constexpr int emptyWidth = 104, leastWidth = 56, mostWidth = 320;

    SheetLayout() = default;
    // `measure` tells the width of a text of one line.
    SheetLayout(const SheetRows& sheet, const std::function<double(const QString&)>& measure);

    // How many hold something.
    int columns() const { return static_cast<int>(m_rights.size()); }
    int rows() const { return m_rows; }
    QSize size() const { return {left(columns()), rows() * rowHeight}; }

    // Columns behind these are as wide as an empty one.
    int left(int column) const;
    int width(int column) const { return left(column + 1) - left(column); }
    int columnAt(int x) const;
    static int top(int row) { return row * rowHeight; }
    static int rowAt(int y) { return y / rowHeight; }

    // Of the numbers at the left.
    int numbersWidth() const;

private:
    std::vector<int> m_rights; // of the columns
    int m_rows = 0;
};

// The text of a cell as one line, and not longer than anybody sees of it.
QString lineOf(const QString& text);

} // namespace corvelle
