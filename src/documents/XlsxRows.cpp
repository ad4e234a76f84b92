#include "documents/XlsxRows.h"

#include "base/Text.h"
#include "documents/CellPlace.h"
#include "documents/XNode.h"

#include <algorithm>
#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qsizetype mostPlaces = 4'000'000; // of cells that stand in memory

template<class Number>
std::optional<Number> parsed(QByteArrayView text)
{
    const QByteArrayView number = text.trimmed();
    Number value{};
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    const bool whole = !number.isEmpty() && end == number.data() + number.size();
    return error == std::errc() && whole ? std::optional(value) : std::nullopt;
}

class RowReader
{
public:
    RowReader(const XlsxShared& shared, const SheetLimits& limits)
        : m_shared(shared)
        , m_limits{std::min(limits.rows, CellPlace::mostRows),
              std::min(limits.columns, CellPlace::mostColumns), limits.characters}
    {}

    SheetRows take() { return std::move(m_sheet); }
    bool hasRow() const { return m_row >= 0; }

    void setDimension(XNode dimension)
    {
        const QByteArray range = dimension.value("ref").toLatin1();
        if (const auto last = cellPlace(QByteArrayView(range).sliced(range.indexOf(':') + 1)))
            m_sheet.claimed = QSize(last->column + 1, last->row + 1);
    }

    // False at the limits.
    bool addRow(XNode row)
    {
        const auto number = parsed<int>(row.attr("r").value_or(QByteArrayView()));
        m_row = number && *number > 0 ? *number - 1 : m_row + 1;
        if (m_row >= m_limits.rows) {
            m_sheet.isCut = true;
            return false;
        }
        m_column = -1;
        for (const XNode cell : row.children())
            if (cell.name() == "x:c")
                addCell(cell);
        return m_places <= mostPlaces;
    }

private:
    void addCell(XNode cell)
    {
        const auto place = cellPlace(cell.attr("r").value_or(QByteArrayView()));
        m_column = place ? place->column : m_column + 1;
        SheetCell read = cellOf(cell);
        if (read.text.isEmpty())
            return;
        if (m_column >= m_limits.columns || m_places > mostPlaces) {
            m_sheet.isCut = true;
            return;
        }
        if (read.text.size() > m_limits.characters) {
            const QStringView kept = firstCharacters(read.text, m_limits.characters);
            m_sheet.isCut = m_sheet.isCut || kept.size() < read.text.size();
            read.text.truncate(kept.size());
        }
        placeFor(m_row, m_column) = std::move(read);
    }

    SheetCell& placeFor(int row, int column)
    {
        auto& rows = m_sheet.rows;
        if (rows.size() <= static_cast<size_t>(row)) {
            m_places += row + 1 - static_cast<qsizetype>(rows.size());
            rows.resize(static_cast<size_t>(row) + 1);
        }
        auto& cells = rows[static_cast<size_t>(row)];
        if (cells.empty())
            cells.reserve(m_width); // rows are mostly as wide as the last one
        if (cells.size() <= static_cast<size_t>(column)) {
            m_places += column + 1 - static_cast<qsizetype>(cells.size());
            cells.resize(static_cast<size_t>(column) + 1);
            m_width = cells.size();
        }
        return cells[static_cast<size_t>(column)];
    }

    const NumberFormat& formatOf(XNode cell) const
    {
        const auto style = parsed<size_t>(cell.attr("s").value_or(QByteArrayView()));
        // A cell without a style has the first.
        const size_t number = style.value_or(0);
        return number < m_shared.formats.size() ? m_shared.formats[number] : m_general;
    }

    SheetCell cellOf(XNode cell) const;
    SheetCell numberOf(XNode cell, QByteArrayView value) const;
    SheetCell dateOf(XNode cell, QByteArrayView value) const;

    const XlsxShared& m_shared;
    const SheetLimits m_limits;
    const NumberFormat m_general;
    const NumberFormat m_plainDate{u"m/d/yy"};
    SheetRows m_sheet;
    int m_row = -1, m_column = -1; // read last
    qsizetype m_places = 0;
    size_t m_width = 0; // of the row before
};

SheetCell RowReader::cellOf(XNode cell) const
{
    const QByteArrayView type = cell.attr("t").value_or("n");
    if (type == "inlineStr")
        return {formatOf(cell).text(xlsxString(cell.child("x:is")))};
    const XNode node = cell.child("x:v");
    const QByteArrayView value = node.text();
    if (!node || value.isEmpty())
        return {};
    if (type == "s") {
        const auto number = parsed<size_t>(value);
        return number && *number < m_shared.strings.count()
                   ? SheetCell{formatOf(cell).text(m_shared.strings.at(*number))}
                   : SheetCell();
    }
    if (type == "b")
        return {value == "1" ? u"TRUE"_s : u"FALSE"_s};
    if (type == "str" || type == "e")
        return {QString::fromUtf8(value)};
    return type == "d" ? dateOf(cell, value) : numberOf(cell, value);
}

SheetCell RowReader::numberOf(XNode cell, QByteArrayView value) const
{
    const auto number = parsed<double>(value);
    if (!number || !std::isfinite(*number))
        return {QString::fromUtf8(value)};
    return {formatOf(cell).number(*number, m_shared.dates), true};
}

SheetCell RowReader::dateOf(XNode cell, QByteArrayView value) const
{
    const QString text = QString::fromUtf8(value);
    const auto serial = serialOfIsoDate(text, m_shared.dates);
    if (!serial)
        return {text};
    const NumberFormat& format = formatOf(cell);
    return {(format.isGeneral() ? m_plainDate : format).number(*serial, m_shared.dates), true};
}

} // namespace

std::optional<SheetRows> xlsxRows(
    const ByteSource& source, const XlsxShared& shared, const SheetLimits& limits)
{
    if (!source)
        return std::nullopt;
    RowReader reader(shared, limits);
    const bool whole = XNode::stream(source, {"x:dimension", "x:row"}, [&](XNode part) {
        if (part.name() == "x:row")
            return reader.addRow(part);
        reader.setDimension(part);
        return true;
    });
    if (!whole && !reader.hasRow())
        return std::nullopt;
    return reader.take();
}

} // namespace corvelle
