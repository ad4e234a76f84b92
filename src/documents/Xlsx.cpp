#include "documents/Xlsx.h"

#include "documents/XNode.h"
#include "documents/XlsxRows.h"
#include "documents/XlsxStyles.h"

#include <QDir>
#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

// Where the part of a sheet is: a target counts from the workbook's folder, or from the root.
QString partOf(const QString& target)
{
    return target.startsWith(u'/') ? target.mid(1) : QDir::cleanPath(u"xl/"_s + target);
}

ByteSource sourceOfPart(const ZipArchive& zip, const QString& part)
{
    // Some writers part the folders as their own system does.
    return zip.source(zip.entry(part) ? part : QString(part).replace(u'/', u'\\'));
}

std::optional<XTree> treeOfPart(const ZipArchive& zip, const QString& part)
{
    const ByteSource source = sourceOfPart(zip, part);
    return source ? XNode::parse(source) : std::nullopt;
}

QHash<QString, QString> relationTargets(const ZipArchive& zip)
{
    QHash<QString, QString> targets;
    if (const auto tree = treeOfPart(zip, u"xl/_rels/workbook.xml.rels"_s))
        for (const XNode item : tree->root().children())
            if (item.name() == "relationships:Relationship")
                targets.insert(item.value("Id"), item.value("Target"));
    return targets;
}

} // namespace

std::optional<Xlsx> Xlsx::read(QByteArray bytes)
{
    Xlsx book;
    book.m_zip = ZipArchive(std::move(bytes));
    const auto tree = treeOfPart(book.m_zip, u"xl/workbook.xml"_s);
    if (!tree)
        return std::nullopt;
    const XNode root = tree->root();
    const QString since1904 = root.child("x:workbookPr").value("date1904");
    if (since1904 == u"1" || since1904 == u"true")
        book.m_dates = DateSystem::From1904;
    const auto targets = relationTargets(book.m_zip);
    for (const XNode item : root.child("x:sheets").children()) {
        if (item.name() != "x:sheet")
            continue;
        if (++book.m_sheetCount > mostSheets)
            continue; // only counted
        const QString number = QString::number(book.m_sheets.size() + 1);
        const QString name = item.value("name"), target = targets.value(item.value("r:id"));
        book.m_sheets.push_back({name.isNull() ? u"Sheet"_s + number : name,
            target.isEmpty() ? u"xl/worksheets/sheet%1.xml"_s.arg(number) : partOf(target)});
    }
    if (const auto source = sourceOfPart(book.m_zip, u"xl/sharedStrings.xml"_s))
        book.m_strings = XlsxStrings(source);
    if (const auto source = sourceOfPart(book.m_zip, u"xl/styles.xml"_s))
        book.m_formats = xlsxFormats(source);
    return book;
}

QStringList Xlsx::names() const
{
    QStringList names;
    for (const Sheet& sheet : m_sheets)
        names.append(sheet.name);
    return names;
}

std::optional<SheetRows> Xlsx::rows(int sheet, const SheetLimits& limits) const
{
    if (sheet < 0 || sheet >= static_cast<int>(m_sheets.size()))
        return std::nullopt;
    return xlsxRows(sourceOfPart(m_zip, m_sheets[static_cast<size_t>(sheet)].part),
        {m_strings, m_formats, m_dates}, limits);
}

QString plainText(const SheetRows& sheet)
{
    QString text;
    for (const auto& cells : sheet.rows) {
        if (cells.empty())
            continue;
        if (!text.isEmpty())
            text += u'\n';
        for (size_t column = 0; column < cells.size(); ++column) {
            if (column > 0)
                text += u'\t';
            const qsizetype from = text.size();
            text += cells[column].text;
            std::replace_if(
                text.begin() + from, text.end(),
                [](QChar c) { return c == u'\t' || c == u'\n' || c == u'\r'; }, u' ');
        }
    }
    return text;
}

} // namespace corvelle
