// An Excel workbook (ECMA-376 Part 1, SpreadsheetML; transitional and strict), read as the texts
// that its cells show. Nothing is calculated: the values that were stored last are shown in their
// formats.
//
// Not shared between threads. What can't be read is left out; only a workbook without its main part
// isn't opened.
#pragma once

#include "documents/NumberFormat.h"
#include "documents/XlsxStrings.h"
#include "documents/ZipArchive.h"

#include <QSize>
#include <QStringList>

#include <optional>
#include <vector>

namespace corvelle {

struct SheetCell
{
    QString text;
    bool isNumber = false; // a number or a date: it stands at the right

    bool operator==(const SheetCell&) const = default;
};

// Places, not elements: a cell in row 1,001 is beyond 1,000 rows, though it be the only one.
struct SheetLimits
{
    int rows = 1000, columns = 40;
    qsizetype characters = 2000; // of a cell
};

struct SheetRows
{
    std::vector<std::vector<SheetCell>> rows; // by their places, without empty ends
    QSize claimed;                            // columns and rows, as the sheet says; may be wrong
    bool isCut = false;                       // by the limits

    bool operator==(const SheetRows&) const = default;
};

class Xlsx
{
public:
    static constexpr qint64 mostBytes = 20'000'000; // of a file that is read at all
    static constexpr int mostSheets = 100;

    // None for what isn't a workbook.
    static std::optional<Xlsx> read(QByteArray bytes);

    // In the workbook's order; hidden ones too. No more than `mostSheets`.
    QStringList names() const;
    // How many the workbook has, those beyond the limit too.
    int sheetCount() const { return m_sheetCount; }
    // None when the sheet can't be read. What stands before a damaged place is read.
    std::optional<SheetRows> rows(int sheet, const SheetLimits& limits = {}) const;

private:
    struct Sheet
    {
        QString name, part;
    };

    Xlsx() = default;

    ZipArchive m_zip;
    std::vector<Sheet> m_sheets;
    int m_sheetCount = 0;
    XlsxStrings m_strings;
    std::vector<NumberFormat> m_formats; // by a cell's style
    DateSystem m_dates = DateSystem::From1900;
};

// The words of a sheet: cells are parted by tabs, rows by newlines; empty rows are left out.
QString plainText(const SheetRows& sheet);

} // namespace corvelle
