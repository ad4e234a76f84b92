#include "documents/Xlsx.h"
#include "documents/CellPlace.h"
#include "documents/ZipWriter.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

constexpr const char* mainSpace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";

// A workbook of one sheet, whose parts can be replaced.
struct Book
{
    QByteArray workbook = "<sheets><sheet name='Costs' r:id='r1'/></sheets>";
    QByteArray relations = "<Relationship Id='r1' Target='worksheets/sheet1.xml'/>";
    QByteArray rows;
    QByteArray strings;
    QByteArray styles;
    QString sheetPart = u"xl/worksheets/sheet1.xml"_s;
    QByteArray space = mainSpace;

    QByteArray bytes() const
    {
        const auto part = [this](const char* root, const QByteArray& inside) {
            return QByteArray("<") + root + " xmlns='" + space +
                   "' xmlns:r='http://schemas.openxmlformats.org/officeDocument/2006/relationships'"
                   ">" +
                   inside + "</" + root + ">";
        };
        ZipWriter zip(QDateTime{});
        zip.add(u"xl/workbook.xml"_s, part("workbook", workbook));
        zip.add(u"xl/_rels/workbook.xml.rels"_s,
            "<Relationships "
            "xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>" +
                relations + "</Relationships>");
        zip.add(sheetPart, part("worksheet", rows));
        zip.add(u"xl/sharedStrings.xml"_s, part("sst", strings));
        zip.add(u"xl/styles.xml"_s, part("styleSheet", styles));
        return zip.finish();
    }

    std::optional<SheetRows> sheet(const SheetLimits& limits = {}) const
    {
        const auto book = Xlsx::read(bytes());
        return book ? book->rows(0, limits) : std::nullopt;
    }
    // Its rows as one text: cells parted by "|", rows by "/".
    QString shown(const SheetLimits& limits = {}) const
    {
        const auto read = sheet(limits);
        if (!read)
            return u"(none)"_s;
        QStringList lines;
        for (const auto& row : read->rows) {
            QStringList cells;
            for (const SheetCell& cell : row)
                cells.append(cell.text);
            lines.append(cells.join(u'|'));
        }
        return lines.join(u'/');
    }
};

Book withRows(const QByteArray& rows)
{
    Book book;
    book.rows = "<sheetData>" + rows + "</sheetData>";
    book.strings = "<si><t>one</t></si><si><r><t>tw</t></r><rPh><t>x</t></rPh><r><t>o</t></r>"
                   "</si><si><t>a_x000D_b_x005F_x_xZZZZ_</t><phoneticPr/></si>";
    book.styles = "<numFmts><numFmt numFmtId='164' formatCode='0.0&quot; km&quot;'/></numFmts>"
                  "<cellXfs><xf numFmtId='0'/><xf numFmtId='164'/><xf numFmtId='14'/>"
                  "<xf numFmtId='999'/><xf numFmtId='9'/></cellXfs>";
    return book;
}

} // namespace

TEST(Xlsx, readsEveryKindOfCell)
{
    const struct
    {
        QByteArray cell;
        QString shown;
    } cases[] = {
        {"<c t='s'><v>1</v></c>", u"two"_s},
        {"<c t='s'><v>2</v></c>", u"a\rb_x_xZZZZ_"_s},
        {"<c t='s'><v>3</v></c>", QString()},
        {"<c t='s'><v>-1</v></c>", QString()},
        {"<c t='inlineStr'><is><t> x </t></is></c>", u" x "_s},
        {"<c t='b'><v>1</v></c>", u"TRUE"_s},
        {"<c t='b'><v>0</v></c>", u"FALSE"_s},
        {"<c t='str' s='1'><v>7</v></c>", u"7"_s},
        {"<c t='e'><v>#DIV/0!</v></c>", u"#DIV/0!"_s},
        {"<c t='d'><v>2020-01-02</v></c>", u"1/2/20"_s},
        {"<c t='d' s='1'><v>1900-01-01T12:00:00</v></c>", u"2.5 km"_s},
        {"<c t='d'><v>soon</v></c>", u"soon"_s},
        {"<c><v>1.50</v></c>", u"1.5"_s},
        {"<c s='1'><v>1234.56</v></c>", u"1234.6 km"_s},
        {"<c s='2'><v>43831</v></c>", u"1/1/20"_s},
        {"<c s='4'><v>0.5</v></c>", u"50%"_s},
        {"<c s='3'><v>5</v></c>", u"5"_s},
        {"<c s='77'><v>5</v></c>", u"5"_s},
        {"<c><v>1e999</v></c>", u"1e999"_s},
        {"<c><v>nan</v></c>", u"nan"_s},
        {"<c><v>12 apples</v></c>", u"12 apples"_s},
        {"<c s='1'/>", QString()},
        {"<c><f>A1+1</f><v>3</v></c>", u"3"_s},
    };
    for (const auto& c : cases)
        EXPECT_EQ(withRows("<row>" + c.cell + "</row>").shown(), c.shown) << c.cell.constData();
    EXPECT_TRUE(withRows("<row><c><v>1</v></c></row>").sheet()->rows[0][0].isNumber);
    EXPECT_FALSE(withRows("<row><c t='str'><v>1</v></c></row>").sheet()->rows[0][0].isNumber);
}

TEST(Xlsx, putsCellsInTheirPlaces)
{
    EXPECT_EQ(withRows("<row r='2'><c r='B2'><v>1</v></c><c><v>2</v></c></row>"
                       "<row><c r='A9'><v>3</v></c></row><row r='5'><c r='?'><v>4</v></c></row>")
                  .shown(),
        u"/|1|2/3//4"_s);
    EXPECT_EQ(withRows("<row r='0'><c><v>1</v></c></row><row r='x'><c><v>2</v></c></row>").shown(),
        u"1/2"_s);
    EXPECT_EQ(cellPlace("XFD1048576")->column, 16'383);
    for (const char* no : {"", "A", "1", "A0", "XFE1", "A1048577", "A1B", "AAAAAAAAAAAAAA1", "A-1"})
        EXPECT_FALSE(cellPlace(no)) << no;
    EXPECT_EQ(columnName(0) + columnName(25) + columnName(26) + columnName(701) + columnName(702),
        u"AZAAZZAAA"_s);
}

TEST(Xlsx, stopsAtTheLimits)
{
    Book book = withRows("<row r='2'><c r='A2'><v>1</v></c><c r='C2' s='1'/></row>");
    book.rows.prepend("<dimension ref='A1:C7'/>");
    EXPECT_EQ(book.sheet()->claimed, QSize(3, 7));
    EXPECT_FALSE(book.sheet({2, 2, 1})->isCut); // an empty cell isn't missed
    EXPECT_TRUE(book.sheet({1, 2, 1})->isCut);

    book = withRows("<row><c t='str'><v>a\xCC\x81"
                    "bc</v></c><c><v>2</v></c></row>"
                    "<row><c r='A1001'><v>3</v></c></row>");
    EXPECT_EQ(book.shown({2, 1, 2}), u"a\u0301b/3"_s);
    EXPECT_TRUE(book.sheet({2, 1, 9})->isCut);
    EXPECT_TRUE(book.sheet({2, 2, 2})->isCut);
    EXPECT_FALSE(book.sheet({2, 2, 3})->isCut);
    // A damaged place behind the last row that is wanted isn't reached.
    book.rows.replace("</sheetData>", "<row r='1001'><c><v>9</v></c></row><broken");
    EXPECT_EQ(book.sheet()->rows.size(), 2u);
}

TEST(Xlsx, findsTheSheetsOfTheWorkbook)
{
    Book book = withRows("<row><c t='s'><v>0</v></c></row>");
    book.workbook = "<sheets><sheet r:id='r1'/><sheet name='Two' r:id='nowhere'/>"
                    "<sheet name=''/></sheets>";
    EXPECT_EQ(Xlsx::read(book.bytes())->names(), (QStringList{u"Sheet1"_s, u"Two"_s, QString()}));
    EXPECT_FALSE(Xlsx::read(book.bytes())->rows(1));
    EXPECT_FALSE(Xlsx::read(book.bytes())->rows(-1));
    for (const auto& [target, part] : {std::pair("/other/a.xml", u"other/a.xml"_s),
             std::pair("./b.xml", u"xl/b.xml"_s), std::pair("../c.xml", u"c.xml"_s)}) {
        book.relations = QByteArray("<Relationship Id='r1' Target='") + target + "'/>";
        book.sheetPart = part;
        EXPECT_EQ(book.shown(), u"one"_s) << target;
    }
    book.relations.clear(); // the usual place
    book.sheetPart = u"xl/worksheets/Sheet1.XML"_s;
    EXPECT_EQ(book.shown(), u"one"_s);
    book.workbook = "<sheets>" + QByteArray("<sheet name='s'/>").repeated(101) + "</sheets>";
    EXPECT_EQ(Xlsx::read(book.bytes())->names().size(), 100);
    EXPECT_EQ(Xlsx::read(book.bytes())->sheetCount(), 101);
}

TEST(Xlsx, readsBothFamiliesAndBothDateSystems)
{
    Book book = withRows("<row><c s='2'><v>0</v></c><c t='d'><v>2020-01-01</v></c></row>");
    book.space = "http://purl.oclc.org/ooxml/spreadsheetml/main";
    EXPECT_EQ(book.shown(), u"12/30/99|1/1/20"_s);
    for (const char* yes : {"1", "true"}) {
        book.workbook.prepend(QByteArray("<workbookPr date1904='") + yes + "'/>");
        EXPECT_EQ(book.shown(), u"1/1/04|1/1/20"_s);
    }
}

TEST(Xlsx, readsLessOfADamagedWorkbook)
{
    EXPECT_FALSE(Xlsx::read("PK"));
    Book book = withRows("<row><c t='s'><v>0</v></c><c s='1'><v>2</v></c></row>");
    book.strings = "<si><t>one</t>"; // never closed
    book.styles = "<cellXfs><xf></cellXfs>";
    EXPECT_EQ(book.shown(), u"|2"_s);
    book.rows = "<sheetData><row><c><v>1</v></c></row><row><c>";
    EXPECT_EQ(book.shown(), u"1"_s);
    book.rows = "<sheetData><row><c><v>1";
    EXPECT_EQ(book.shown(), u"(none)"_s);
    // A row that was read counts, also when what it shows lies beyond the limits.
    book.rows = "<sheetData><row r='1'><c r='J1'><v>1</v></c></row><row><c bad";
    EXPECT_TRUE(book.sheet({50, 7, 20}));
    EXPECT_TRUE(book.sheet());
    book.rows = "<drawing/>"; // a sheet that holds a chart
    EXPECT_EQ(book.shown(), QString());
    book.workbook = "<sheets>";
    EXPECT_EQ(book.shown(), u"(none)"_s);
}

TEST(Xlsx, givesItsPlainText)
{
    EXPECT_EQ(plainText(*withRows("<row r='2'><c r='B1' t='str'><v>a&#10;b</v></c><c><v>2</v></c>"
                                  "</row><row r='9'><c><v>3</v></c></row>")
                             .sheet()),
        u"\ta b\t2\n3"_s);
}
