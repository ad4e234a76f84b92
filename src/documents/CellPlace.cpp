#include "documents/CellPlace.h"

#include <charconv>

namespace corvelle {

std::optional<CellPlace> cellPlace(QByteArrayView reference)
{
    qsizetype at = 0;
    int column = 0;
    for (; at < reference.size() && column <= CellPlace::mostColumns; ++at) {
        const char letter = static_cast<char>(reference[at] & ~0x20);
        if (letter < 'A' || letter > 'Z')
            break;
        column = column * 26 + (letter - 'A' + 1);
    }
    int row = 0;
    const char* const end = reference.data() + reference.size();
    const auto read = std::from_chars(reference.data() + at, end, row);
    if (read.ec != std::errc() || read.ptr != end || column < 1 ||
        column > CellPlace::mostColumns || row < 1 || row > CellPlace::mostRows)
        return std::nullopt;
    return CellPlace{column - 1, row - 1};
}

QString columnName(int column)
{
    QString name;
    for (int rest = column + 1; rest > 0; rest = (rest - 1) / 26)
        name.prepend(QChar(u'A' + static_cast<char16_t>((rest - 1) % 26)));
    return name;
}

QString placeName(CellPlace place)
{
    return columnName(place.column) + QString::number(place.row + 1);
}

} // namespace corvelle
