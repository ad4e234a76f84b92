// Workbooks of others, what the program that they come from shows of them, and what explains the
// cells that are shown otherwise here.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace corvelle {

// Names of workbooks in the folder of real files; none when it isn't there.
QStringList realWorkbooks();
QByteArray realWorkbook(const QString& name);

struct JudgedCell
{
    QString place; // "0!B3": of the first sheet
    QString ours, theirs;
    QString rule; // that explains the difference; empty when none does

    bool differs() const { return ours != theirs; }
};

struct JudgedBook
{
    QString name;
    bool isOfFormats = false;      // exists to test number formats
    std::vector<JudgedCell> cells; // that aren't empty on both sides
    int filled = 0;                // with "#", and left out

    int equal() const;
};

// A workbook with a table of its sheets beside it; cells that didn't fit into their columns are
// left out.
std::vector<JudgedBook> judgedBooks();

// Workbooks that hold number formats, values and the texts that are to come of them.
std::vector<JudgedBook> selfCheckingBooks();

// A rule of ours by which cells differ.
struct SheetDifference
{
    QString rule, sentence;
    // Rows of one column, counted from 1; sheets and columns count from 0.
    struct Range
    {
        int sheet = 0, column = 0, from = 0, to = 0;
    };
    QHash<QString, std::vector<Range>> cells; // by workbook
};
std::vector<SheetDifference> sheetDifferences();

} // namespace corvelle
