// Reads Word files (ECMA-376 Part 1, WordprocessingML) for their meaning: paragraphs, headings,
// lists, tables, links, notes, pictures. Any thread; nothing outside the file is opened.
//
// A part that is missing or damaged is as good as an empty one; only without a main part there is
// no document.
#pragma once

#include "documents/BodyReader.h"

#include <QHash>
#include <QString>

#include <functional>
#include <optional>

namespace corvelle {

class DocxReader
{
public:
    struct Opened
    {
        DNodes nodes;
        QHash<QString, DNodes> notes; // by "footnote:" or "endnote:" and the note's id
        Styles styles;
        bool headers = false; // headers or footers that show something
        bool comments = false;
        bool tracked = false;   // changes that somebody tracked; the nodes have them accepted
        bool equations = false; // neither they nor charts are among the nodes
        bool charts = false;
    };

    // The nodes, to be edited. None when the file can't be read.
    static std::optional<Opened> open(const ZipArchive& zip);
    static std::optional<Opened> open(const QString& path);

    // The blocks, to be shown.
    static std::optional<DocBlocks> blocks(
        const ZipArchive& zip, Pictures pictures = Pictures::Read);
    static std::optional<DocBlocks> blocks(const QString& path, Pictures pictures = Pictures::Read);

    // The same, handed over as they are made, so that a long document never stands in memory with
    // all its blocks. Pictures are skipped. False when the file can't be read.
    using Each = std::function<void(const DocBlock&)>;
    static bool eachBlock(const ZipArchive& zip, const Each& each);

    // What a search finds in it; pictures are skipped.
    static std::optional<QString> text(const ZipArchive& zip);
};

} // namespace corvelle
