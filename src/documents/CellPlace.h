// Where a cell is, and how people call that: "C7". Pure.
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace corvelle {

// Counted from 0.
struct CellPlace
{
    static constexpr int mostColumns = 16'384, mostRows = 1'048'576; // of a sheet

    int column = 0, row = 0;

    bool operator==(const CellPlace&) const = default;
};

// "C7" is column 2 of row 6. None when it isn't a place in a sheet.
std::optional<CellPlace> cellPlace(QByteArrayView reference);

// 0 is "A", 26 is "AA".
QString columnName(int column);
QString placeName(CellPlace place);

} // namespace corvelle
