// A document as it is shown to be read: what Word files and previews of other kinds become.
//
// Values, but for pictures, which are shared and don't change once they are in a document. Texts
// that may be absent are null then. A reader of documents bounds how deep blocks lie in one
// another.
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace corvelle {

struct DocMarks
{
    QString link; // an address, or "#" and a place in the document; null for none
    bool bold = false, italic = false, strike = false, underline = false;
    bool sup = false, sub = false, code = false, faint = false;
    bool operator==(const DocMarks&) const = default;
};

struct DocPicture
{
    std::optional<QByteArray> data; // what can be drawn; none gives a sentence in its place
    double width = 0, height = 0;   // in points on screen at 100 %; 0 without data
    QString link;
    std::optional<QByteArray> raw; // the original bytes; none when they weren't read
    QString contentType, alt, editSource;
};

struct DocInline
{
    struct Text
    {
        QString text;
        DocMarks marks;
        bool operator==(const Text&) const = default;
    };
    using Picture = std::shared_ptr<DocPicture>;
    struct Checkbox
    {
        bool checked = false;
        bool operator==(const Checkbox&) const = default;
    };
    struct LineBreak
    {
        bool operator==(const LineBreak&) const = default;
    };

    std::variant<Text, Picture, Checkbox, LineBreak> value;
    bool operator==(const DocInline&) const = default;
};
using DocInlines = std::vector<DocInline>;

struct DocBlock;
using DocBlocks = std::vector<DocBlock>;

struct DocCell
{
    int colSpan = 1, rowSpan = 1;
    DocBlocks blocks;
    bool operator==(const DocCell&) const;
};

struct DocRow
{
    bool header = false;
    std::vector<DocCell> cells;
    bool operator==(const DocRow&) const = default;
};

struct DocBlock
{
    struct Paragraph
    {
        int level = 0; // 1 to 6 for headings
        DocInlines inlines;
        bool operator==(const Paragraph&) const = default;
    };
    struct Item
    {
        bool ordered = false;
        int depth = 0, number = 1;
        DocInlines inlines;
        bool operator==(const Item&) const = default;
    };
    struct Table
    {
        std::vector<DocRow> rows;
        bool operator==(const Table&) const = default;
    };
    struct Pre
    {
        QString text;
        bool operator==(const Pre&) const = default;
    };
    struct Aside
    {
        QString text;
        bool operator==(const Aside&) const = default;
    };
    struct Continuation // of the item above, at its depth
    {
        int depth = 0;
        DocInlines inlines;
        bool operator==(const Continuation&) const = default;
    };
    struct Task
    {
        bool checked = false;
        int depth = 0;
        DocInlines inlines;
        bool operator==(const Task&) const = default;
    };
    struct Quote
    {
        DocBlocks blocks;
        bool operator==(const Quote&) const;
    };
    struct Code
    {
        QString text;
        bool operator==(const Code&) const = default;
    };
    struct Section
    {
        bool operator==(const Section&) const = default;
    };
    struct Rule
    {
        bool operator==(const Rule&) const = default;
    };

    std::variant<Paragraph, Item, Table, Pre, Aside, Continuation, Task, Quote, Code, Section, Rule>
        value;
    bool operator==(const DocBlock&) const = default;
};

inline bool DocCell::operator==(const DocCell& other) const
{
    return colSpan == other.colSpan && rowSpan == other.rowSpan && blocks == other.blocks;
}
inline bool DocBlock::Quote::operator==(const Quote& other) const
{
    return blocks == other.blocks;
}

// Each block's text and an empty line behind it. A picture has none.
QString plainText(const DocBlocks& blocks);
// Of one block, without the empty line.
QString plainText(const DocBlock& block);
// Of a line of words.
QString plainText(const DocInlines& inlines);

// One paragraph without marks.
DocBlock paragraphOf(const QString& text, int level = 0);

} // namespace corvelle
