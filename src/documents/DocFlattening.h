// Turns the nodes of a Word file's body into blocks to be read: headings, list items with their
// numbers, tables, and the notes behind them.
#pragma once

#include "documents/DNode.h"

#include <QHash>

#include <functional>

namespace corvelle {

class DocFlattening
{
public:
    // The blocks of one node more of the body, behind what is there. Numbers of lists and notes go
    // on.
    void add(const DNode& node, DocBlocks& into);

    // The notes that were referred to, in that order, and those that they refer to themselves.
    // `noteOf` gives a note's nodes; none when there is no such note.
    using NoteSource = std::function<std::optional<DNodes>(const QString& key)>;
    void addNotes(const NoteSource& noteOf, DocBlocks& into);

private:
    struct Counter
    {
        bool ordered = false;
        int count = 0;
    };
    using Counters = std::vector<Counter>; // by depth

    void addNode(const DNode& node, Counters& counters, DocBlocks& into);
    void addParagraph(const DNode::Paragraph& paragraph, Counters& counters, DocBlocks& into);
    void addTable(const DNode::Table& table, DocBlocks& into);
    DocBlocks blocksOf(const DNodes& nodes);
    void flatten(const DNodes& nodes, const DocMarks& marks, DocInlines& into);
    int noteNumber(const QString& key);

    Counters m_counters;
    std::vector<QString> m_notes; // keys, in the order of their numbers
    QHash<QString, int> m_noteNumbers;
};

// What a paragraph is by its style and its numbering.
struct ParagraphKind
{
    int level = 0;                // of a heading; 0 for none
    std::optional<NumLevel> item; // of a list; none for a paragraph
};
ParagraphKind kindOf(const DNode::Paragraph& paragraph);

// Blanks collapse to one and go at the edges; neighbours with equal marks are one text.
DocInlines tidied(const DocInlines& inlines);

} // namespace corvelle
