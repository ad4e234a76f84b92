// The body of a Word file, with what reading and editing need of it and no more. Values.
#pragma once

#include "documents/DocBlock.h"

#include <QString>

#include <optional>
#include <variant>
#include <vector>

namespace corvelle {

struct RunProps
{
    QString styleName; // of the character style; null for none
    bool bold = false, italic = false, strike = false, underline = false;
    QString vertical; // "superscript", "subscript" or another word; null for none
    bool operator==(const RunProps&) const = default;
};

struct ParagraphLook
{
    bool bar = false;  // a line along its left side
    bool code = false; // shaded, all in a typewriter's font
    bool operator==(const ParagraphLook&) const = default;
};

// Where a paragraph stands in a list.
struct NumLevel
{
    bool ordered = false;
    int level = 0;
    bool operator==(const NumLevel&) const = default;
};

struct DNode;
using DNodes = std::vector<DNode>;

struct DNode
{
    struct Paragraph
    {
        QString styleId, styleName; // null for none
        std::optional<NumLevel> numbering;
        DNodes children;
        ParagraphLook look;
    };
    struct Run
    {
        RunProps props;
        DNodes children;
    };
    struct Text
    {
        QString text;
    };
    struct Hyperlink
    {
        QString target; // null for none
        DNodes children;
    };
    using Picture = std::shared_ptr<DocPicture>;
    struct Table
    {
        DNodes rows;
    };
    struct Row
    {
        bool header = false;
        DNodes cells;
    };
    struct Cell
    {
        int colSpan = 1, rowSpan = 1;
        std::optional<bool> vMerge; // true goes on with the merge above, false begins one
        DNodes children;
    };
    struct NoteRef
    {
        QString key; // "footnote:" or "endnote:" and the note's id
    };
    struct Checkbox
    {
        bool checked = false;
    };
    struct Tab
    {};
    struct LineBreak
    {};
    struct Bookmark
    {};

    std::variant<Paragraph, Run, Text, Hyperlink, Picture, Table, Row, Cell, NoteRef, Checkbox, Tab,
        LineBreak, Bookmark>
        value;
};

} // namespace corvelle
