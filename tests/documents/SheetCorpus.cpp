#include "documents/SheetCorpus.h"

#include "documents/CellPlace.h"
#include "documents/XNode.h"
#include "documents/Xlsx.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString folder()
{
    const QString shared = qEnvironmentVariable("CORVELLE_SHARED", u"../shared"_s);
    return shared + u"/corpus/xlsx/"_s;
}

QByteArray fileBytes(const QString& name)
{
    QFile file(folder() + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// ---- tables of others ----

using Table = std::vector<QStringList>;

QString decoded(const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    // Some were saved in an alphabet of their time and place.
    return text.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytes) : text;
}

Table tableOf(const QByteArray& csv)
{
    Table table;
    QString text = decoded(csv);
    text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    QStringList row;
    QString cell;
    bool quoted = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'"' && quoted && i + 1 < text.size() && text[i + 1] == u'"') {
            cell += c;
            ++i;
        } else if (c == u'"') {
            quoted = !quoted;
        } else if (quoted || (c != u',' && c != u'\n')) {
            cell += c;
        } else {
            row.append(std::exchange(cell, {}));
            if (c == u'\n')
                table.push_back(std::exchange(row, {}));
        }
    }
    row.append(cell);
    table.push_back(row);
    return table;
}

Table tableOf(const SheetRows& sheet)
{
    Table table;
    for (const auto& cells : sheet.rows) {
        QStringList& row = table.emplace_back();
        for (const SheetCell& cell : cells)
            row.append(QString(cell.text).replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n'));
    }
    return table;
}

// Where theirs couldn't write a character, any one is taken for it.
bool isWrittenAlike(const QString& ours, const QString& theirs)
{
    return ours.size() == theirs.size() &&
           std::equal(ours.begin(), ours.end(), theirs.begin(),
               [](QChar our, QChar their) { return our == their || our.unicode() > 126; });
}

bool isFilled(const QString& theirs)
{
    return theirs.size() > 1 && theirs.count(u'#') == theirs.size();
}

// Without blanks at the ends; what else is one in some alphabet is a sign in another.
QString trimmed(const QString& text)
{
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\n' || c == u'\t'; };
    qsizetype from = 0, to = text.size();
    while (from < to && isBlank(text[from]))
        ++from;
    while (to > from && isBlank(text[to - 1]))
        --to;
    return text.mid(from, to - from);
}

QString cellAt(const Table& table, size_t row, qsizetype column)
{
    return row < table.size() ? trimmed(table[row].value(column)) : QString();
}

QString ruleOf(const QString& book, int sheet, int column, int row)
{
    static const std::vector<SheetDifference> differences = sheetDifferences();
    for (const SheetDifference& difference : differences)
        for (const SheetDifference::Range& range : difference.cells.value(book))
            if (range.sheet == sheet && range.column == column && row >= range.from &&
                row <= range.to)
                return difference.rule;
    return {};
}

void judgeSheet(JudgedBook& judged, int sheet, const Table& ours, const Table& theirs)
{
    for (size_t row = 0; row < std::max(ours.size(), theirs.size()); ++row) {
        const qsizetype columns = std::max(
            row < ours.size() ? ours[row].size() : 0, row < theirs.size() ? theirs[row].size() : 0);
        for (qsizetype column = 0; column < columns; ++column) {
            JudgedCell cell;
            cell.place =
                u"%1!%2%3"_s.arg(sheet).arg(columnName(static_cast<int>(column))).arg(row + 1);
            cell.ours = cellAt(ours, row, column);
            cell.theirs = cellAt(theirs, row, column);
            if (isFilled(cell.theirs)) {
                ++judged.filled;
                continue;
            }
            if (cell.ours.isEmpty() && cell.theirs.isEmpty())
                continue;
            if (isWrittenAlike(cell.ours, cell.theirs))
                cell.theirs = cell.ours;
            cell.rule =
                ruleOf(judged.name, sheet, static_cast<int>(column), static_cast<int>(row) + 1);
            judged.cells.push_back(std::move(cell));
        }
    }
}

DateSystem datesOf(const QByteArray& bytes)
{
    const auto tree = XNode::parse(ZipArchive(bytes).source(u"xl/workbook.xml"_s));
    const bool later = tree && tree->root().child("x:workbookPr").value("date1904") == u"1";
    return later ? DateSystem::From1904 : DateSystem::From1900;
}

// The numbers of the second sheet, before any format.
QHash<QString, double> storedValues(const QByteArray& bytes)
{
    QHash<QString, double> values;
    const auto tree = XNode::parse(ZipArchive(bytes).source(u"xl/worksheets/sheet2.xml"_s));
    if (!tree)
        return values;
    for (const XNode cell : tree->root().descendants("x:c")) {
        bool isNumber = false;
        const double value = cell.child("x:v").text().toByteArray().toDouble(&isNumber);
        if (isNumber && cell.value("t") != u"s")
            values.insert(cell.value("r"), value);
    }
    return values;
}

bool isOfFormats(const QString& name)
{
    return name.contains(u"number_format") || name.contains(u"LONumbers") ||
           name.contains(u"NumberFormatCondition") || name.contains(u"formula_stress");
}

SheetLimits wholeSheet()
{
    return {1'048'576, 16'384, 1'000'000};
}

} // namespace

int JudgedBook::equal() const
{
    return static_cast<int>(std::count_if(
        cells.begin(), cells.end(), [](const JudgedCell& cell) { return !cell.differs(); }));
}

QStringList realWorkbooks()
{
    return QDir(folder()).entryList({u"*.xlsx"_s, u"*.xlsm"_s}, QDir::Files, QDir::Name);
}

QByteArray realWorkbook(const QString& name)
{
    return fileBytes(name);
}

std::vector<JudgedBook> judgedBooks()
{
    std::vector<JudgedBook> books;
    for (const QString& name : realWorkbooks()) {
        const auto names = fileBytes(name + u".expected.sheetnames"_s).trimmed().split('\n');
        JudgedBook judged{.name = name, .isOfFormats = isOfFormats(name), .cells = {}};
        const auto book = Xlsx::read(realWorkbook(name));
        bool isJudged = false;
        for (int sheet = 0; sheet < names.size(); ++sheet) {
            const QString table = name + u".expected.%1.csv"_s.arg(sheet);
            if (!QFile::exists(folder() + table))
                continue;
            isJudged = true;
            const int number = book ? static_cast<int>(book->names().indexOf(
                                          QString::fromUtf8(names[sheet].trimmed())))
                                    : -1;
            const auto rows = book ? book->rows(number, wholeSheet()) : std::nullopt;
            judgeSheet(judged, sheet, rows ? tableOf(*rows) : Table(), tableOf(fileBytes(table)));
        }
        if (isJudged)
            books.push_back(std::move(judged));
    }
    return books;
}

std::vector<JudgedBook> selfCheckingBooks()
{
    std::vector<JudgedBook> books;
    for (const QString& name : realWorkbooks()) {
        const QByteArray bytes = realWorkbook(name);
        const auto book = Xlsx::read(bytes);
        const int number = book ? static_cast<int>(book->names().indexOf(u"Tests"_s)) : -1;
        const auto rows = book ? book->rows(number, wholeSheet()) : std::nullopt;
        if (!rows || cellAt(tableOf(*rows), 0, 0) != u"Result (expected)")
            continue;
        const auto values = storedValues(bytes);
        const Table table = tableOf(*rows);
        JudgedBook judged{.name = name, .isOfFormats = true, .cells = {}};
        for (size_t row = 1; row < table.size(); ++row) {
            const auto value = values.constFind(u"C%1"_s.arg(row + 1));
            const QString code = table[row].value(1);
            if (value == values.constEnd() || code.isEmpty())
                continue;
            JudgedCell cell;
            cell.place = u"%1!A%2"_s.arg(number).arg(row + 1);
            cell.theirs = cellAt(table, row, 0);
            cell.ours = trimmed(NumberFormat(code).number(*value, datesOf(bytes)));
            cell.rule = ruleOf(name, number, 0, static_cast<int>(row) + 1);
            judged.cells.push_back(std::move(cell));
        }
        books.push_back(std::move(judged));
    }
    return books;
}

} // namespace corvelle
