// Word files of our own making, as small as they can be.
#pragma once

#include "documents/DocDump.h"
#include "documents/DocxReader.h"
#include "documents/ZipWriter.h"

#include <map>

namespace corvelle {

// The parts of a file besides its main one; an empty part is left out.
struct DocxParts
{
    QByteArray rels, styles, numbering, footnotes, endnotes;
    std::map<QString, QByteArray> others = {};
};

inline QByteArray wordPart(const char* root, const QByteArray& inner)
{
    return QByteArray("<w:") + root +
           " xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\""
           " xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\""
           " xmlns:wp=\"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing\""
           " xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\""
           " xmlns:pic=\"http://schemas.openxmlformats.org/drawingml/2006/picture\""
           " xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\""
           " xmlns:m=\"http://schemas.openxmlformats.org/officeDocument/2006/math\""
           " xmlns:v=\"urn:schemas-microsoft-com:vml\""
           " xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\">" +
           inner + "</w:" + root + ">";
}

inline QByteArray relsPart(const QByteArray& inner)
{
    return "<Relationships "
           "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
           inner + "</Relationships>";
}

inline QByteArray docxOf(const QByteArray& body, const DocxParts& parts = {})
{
    ZipWriter zip(QDateTime{});
    zip.add(
        "_rels/.rels", relsPart("<Relationship Id=\"m\" Type=\"http://example.org/officeDocument\" "
                                "Target=\"/word/document.xml\"/>"));
    zip.add("word/document.xml", wordPart("document", "<w:body>" + body + "</w:body>"));
    const auto add = [&](const char* name, const QByteArray& part) {
        if (!part.isEmpty())
            zip.add(name, part);
    };
    add("word/_rels/document.xml.rels", parts.rels.isEmpty() ? QByteArray() : relsPart(parts.rels));
    const auto addWord = [&](const char* root, const QByteArray& inner) {
        add(qPrintable("word/" + QString(root) + ".xml"),
            inner.isEmpty() ? QByteArray() : wordPart(root, inner));
    };
    addWord("styles", parts.styles);
    addWord("numbering", parts.numbering);
    addWord("footnotes", parts.footnotes);
    addWord("endnotes", parts.endnotes);
    for (const auto& [name, part] : parts.others)
        zip.add(name, part);
    return zip.finish();
}

inline QByteArray dumpOf(const DocBlocks& blocks)
{
    QByteArray lines;
    for (const DocBlock& block : blocks)
        lines += dumpOf(block);
    return lines;
}

inline QByteArray dumpOfDocx(const QByteArray& body, const DocxParts& parts = {})
{
    const auto blocks = DocxReader::blocks(ZipArchive(docxOf(body, parts)));
    return blocks ? dumpOf(*blocks) : "(unreadable)";
}

// A paragraph with these runs, a run with these words.
inline QByteArray p(const QByteArray& inner, const QByteArray& properties = {})
{
    return "<w:p><w:pPr>" + properties + "</w:pPr>" + inner + "</w:p>";
}
inline QByteArray r(const QByteArray& words, const QByteArray& properties = {})
{
    return "<w:r><w:rPr>" + properties + "</w:rPr><w:t xml:space=\"preserve\">" + words +
           "</w:t></w:r>";
}

} // namespace corvelle
