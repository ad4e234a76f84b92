// Word files: any parts give blocks whose text is the text, within the model's bounds. The input is
// the parts one after the other, with a byte 1 between: body, styles, numbering, footnotes,
// relationships.

#include "documents/DocDump.h"
#include "documents/DocxReader.h"
#include "documents/Overloaded.h"
#include "documents/ZipWriter.h"

#include "Check.h"

#include <QDateTime>

using namespace corvelle;

namespace {

QByteArray word(const char* root, const QByteArray& inner)
{
    return QByteArray("<w:") + root +
           " xmlns:w='http://purl.oclc.org/ooxml/wordprocessingml/main'"
           " xmlns:r='http://purl.oclc.org/ooxml/officeDocument/relationships'"
           " xmlns:wp='http://purl.oclc.org/ooxml/drawingml/wordprocessingDrawing'"
           " xmlns:a='http://purl.oclc.org/ooxml/drawingml/main'"
           " xmlns:pic='http://purl.oclc.org/ooxml/drawingml/picture'"
           " xmlns:mc='http://schemas.openxmlformats.org/markup-compatibility/2006'"
           " xmlns:v='urn:schemas-microsoft-com:vml'"
           " xmlns:w14='http://schemas.microsoft.com/office/word/2010/wordml'>" +
           inner + "</w:" + root + ">";
}

QByteArray rels(const QByteArray& inner)
{
    return "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>" +
           inner + "</Relationships>";
}

ZipArchive packageOf(const QByteArray& input)
{
    QByteArrayList parts = input.split('\1');
    parts.resize(5);
    ZipWriter zip(QDateTime{});
    zip.add("_rels/.rels", rels("<Relationship Id='m' Type='/officeDocument' Target='d.xml'/>"));
    zip.add("d.xml", word("document", parts[0]));
    zip.add("styles.xml", word("styles", parts[1]));
    zip.add("numbering.xml", word("numbering", parts[2]));
    zip.add("footnotes.xml", word("footnotes", parts[3]));
    zip.add("_rels/d.xml.rels", rels(parts[4]));
    zip.add("a.png", "\x89PNG");
    return ZipArchive(zip.finish());
}

void checkBlocks(const DocBlocks& blocks)
{
    for (const DocBlock& block : blocks)
        std::visit(
            Overloaded{[](const DocBlock::Paragraph& p) {
                           check(p.level >= 0 && p.level <= 6, "a heading has one of six levels");
                       },
                [](const DocBlock::Item& item) {
                    check(
                        item.depth >= 0 && item.depth < 5 && item.number > 0, "items are shallow");
                },
                [](const DocBlock::Table& table) {
                    for (const DocRow& row : table.rows)
                        for (const DocCell& cell : row.cells) {
                            check(cell.colSpan >= 1 && cell.colSpan <= 1'000, "spans are held");
                            check(cell.rowSpan >= 1 && size_t(cell.rowSpan) <= table.rows.size(),
                                "a cell ends with its table");
                            checkBlocks(cell.blocks);
                        }
                },
                [](const auto&) {}},
            block.value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const ZipArchive zip = packageOf(bytesOf(data, size));
    const auto blocks = DocxReader::blocks(zip);
    const auto opened = DocxReader::open(zip);
    check(blocks.has_value() == opened.has_value(), "what is shown can be edited");
    if (!blocks)
        return 0;
    checkBlocks(*blocks);
    check(DocxReader::text(zip) == plainText(*blocks), "the text is that of the blocks");
    for (const DocBlock& block : *blocks)
        for (const char c : dumpOf(block))
            check(
                c == '\n' || c == '\t' || c < 0 || c >= ' ', "a dump holds no control characters");
    return 0;
}
