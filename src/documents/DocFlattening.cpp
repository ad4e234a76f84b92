#include "documents/DocFlattening.h"

#include "documents/Overloaded.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostHeadingLevels = 6, mostItemDepths = 5;

bool hasContent(const DNodes& nodes);

bool hasContent(const DNode& node)
{
    return std::visit(
        Overloaded{[](const DNode::Paragraph& p) { return hasContent(p.children); },
            [](const DNode::Run& run) { return hasContent(run.children); },
            [](const DNode::Hyperlink& link) { return hasContent(link.children); },
            [](const DNode::Text& text) { return !text.text.isEmpty(); },
            [](const DNode::Picture&) { return true; }, [](const DNode::NoteRef&) { return true; },
            [](const DNode::Checkbox&) { return true; }, [](const auto&) { return false; }},
        node.value);
}

bool hasContent(const DNodes& nodes)
{
    return std::any_of(
        nodes.begin(), nodes.end(), [](const DNode& node) { return hasContent(node); });
}

// 0 for a style that isn't a heading's.
int headingLevel(const QString& styleId, const QString& styleName)
{
    const QString id = styleId.toUpper(), name = styleName.toUpper();
    for (int level = 1; level <= mostHeadingLevels; ++level)
        if (id == u"HEADING"_s + QString::number(level) ||
            name == u"HEADING "_s + QString::number(level))
            return level;
    return id == u"HEADING" || name == u"HEADING" ? 1 : 0;
}

bool isNoteStyle(const QString& styleName)
{
    static const QStringList names = {
        u"FOOTNOTE TEXT"_s, u"ENDNOTE TEXT"_s, u"ANNOTATION TEXT"_s, u"FOOTNOTE"_s, u"ENDNOTE"_s};
    return names.contains(styleName.toUpper());
}

// Paragraphs, also those in cells of tables.
void collectParagraphs(const DNodes& nodes, std::vector<const DNode::Paragraph*>& into)
{
    for (const DNode& node : nodes)
        std::visit(
            Overloaded{[&](const DNode::Paragraph& paragraph) { into.push_back(&paragraph); },
                [&](const DNode::Table& table) { collectParagraphs(table.rows, into); },
                [&](const DNode::Row& row) { collectParagraphs(row.cells, into); },
                [&](const DNode::Cell& cell) { collectParagraphs(cell.children, into); },
                [](const auto&) {}},
            node.value);
}

// Paragraphs and tables inside of what isn't meant to hold any.
void collectBlocks(const DNode& node, std::vector<const DNode*>& into)
{
    const auto collectAll = [&](const DNodes& nodes) {
        for (const DNode& each : nodes)
            collectBlocks(each, into);
    };
    std::visit(Overloaded{[&](const DNode::Run& run) { collectAll(run.children); },
                   [&](const DNode::Hyperlink& link) { collectAll(link.children); },
                   [&](const DNode::Paragraph&) { into.push_back(&node); },
                   [&](const DNode::Table&) { into.push_back(&node); }, [](const auto&) {}},
        node.value);
}

} // namespace

ParagraphKind kindOf(const DNode::Paragraph& paragraph)
{
    if (const int level = headingLevel(paragraph.styleId, paragraph.styleName))
        return {level, std::nullopt};
    if (!paragraph.numbering || isNoteStyle(paragraph.styleName) ||
        paragraph.numbering->level < 0 || paragraph.numbering->level >= mostItemDepths)
        return {};
    return {0, paragraph.numbering};
}

// ---- blocks ----

void DocFlattening::add(const DNode& node, DocBlocks& into)
{
    addNode(node, m_counters, into);
}

void DocFlattening::addNode(const DNode& node, Counters& counters, DocBlocks& into)
{
    if (const auto* paragraph = std::get_if<DNode::Paragraph>(&node.value)) {
        addParagraph(*paragraph, counters, into);
    } else if (const auto* table = std::get_if<DNode::Table>(&node.value)) {
        counters.clear();
        addTable(*table, into);
    } else {
        // What stands among paragraphs and is none, as a checkbox does, is one of its own.
        std::vector<const DNode*> inside;
        collectBlocks(node, inside);
        for (const DNode* block : inside)
            addNode(*block, counters, into);
        if (inside.empty())
            addParagraph({{}, {}, {}, {node}, {}}, counters, into);
    }
}

void DocFlattening::addParagraph(
    const DNode::Paragraph& paragraph, Counters& counters, DocBlocks& into)
{
    if (!hasContent(paragraph.children))
        return;
    const ParagraphKind kind = kindOf(paragraph);
    DocInlines inlines;
    flatten(paragraph.children, {}, inlines);
    inlines = tidied(inlines);
    if (!kind.item) {
        counters.clear();
        into.push_back({DocBlock::Paragraph{kind.level, std::move(inlines)}});
        return;
    }
    const auto depth = static_cast<size_t>(kind.item->level);
    counters.resize(depth + 1);
    Counter& counter = counters[depth];
    if (counter.ordered != kind.item->ordered)
        counter = {kind.item->ordered, 0};
    ++counter.count;
    into.push_back(
        {DocBlock::Item{counter.ordered, int(depth), counter.count, std::move(inlines)}});
}

void DocFlattening::addTable(const DNode::Table& table, DocBlocks& into)
{
    DocBlock::Table result;
    for (const DNode& node : table.rows) {
        const auto& row = std::get<DNode::Row>(node.value);
        DocRow& added = result.rows.emplace_back(DocRow{row.header, {}});
        for (const DNode& cellNode : row.cells) {
            const auto& cell = std::get<DNode::Cell>(cellNode.value);
            added.cells.push_back({cell.colSpan, cell.rowSpan, blocksOf(cell.children)});
        }
    }
    into.push_back({std::move(result)});
}

DocBlocks DocFlattening::blocksOf(const DNodes& nodes)
{
    DocBlocks blocks;
    Counters counters;
    for (const DNode& node : nodes)
        addNode(node, counters, blocks);
    return blocks;
}

// ---- inlines ----

void DocFlattening::flatten(const DNodes& nodes, const DocMarks& marks, DocInlines& into)
{
    const auto addText = [&](const QString& text, const DocMarks& textMarks) {
        into.push_back({DocInline::Text{text, textMarks}});
    };
    for (const DNode& node : nodes)
        std::visit(Overloaded{[&](const DNode::Run& run) {
                                  DocMarks inner = marks;
                                  inner.bold |=
                                      run.props.bold || run.props.styleName.toUpper() == u"STRONG";
                                  inner.italic |= run.props.italic;
                                  inner.strike |= run.props.strike;
                                  inner.underline |= run.props.underline;
                                  inner.sup |= run.props.vertical == u"superscript";
                                  inner.sub |= run.props.vertical == u"subscript";
                                  flatten(run.children, inner, into);
                              },
                       [&](const DNode::Hyperlink& link) {
                           DocMarks inner = marks;
                           inner.link = link.target;
                           flatten(link.children, inner, into);
                       },
                       [&](const DNode::Text& text) { addText(text.text, marks); },
                       [&](const DNode::Tab&) { addText(u"\t"_s, marks); },
                       [&](const DNode::NoteRef& ref) {
                           DocMarks raised = marks;
                           raised.sup = true;
                           addText(u'[' + QString::number(noteNumber(ref.key)) + u']', raised);
                       },
                       [&](const DNode::LineBreak&) { into.push_back({DocInline::LineBreak{}}); },
                       [&](const DNode::Checkbox& box) {
                           into.push_back({DocInline::Checkbox{box.checked}});
                       },
                       [&](const DNode::Picture& picture) { into.push_back({picture}); },
                       [](const auto&) {}},
            node.value);
}

int DocFlattening::noteNumber(const QString& key)
{
    int& number = m_noteNumbers[key];
    if (number == 0) {
        m_notes.push_back(key);
        number = static_cast<int>(m_notes.size());
    }
    return number;
}

void DocFlattening::addNotes(const NoteSource& noteOf, DocBlocks& into)
{
    // A note may name further ones.
    for (size_t i = 0; i < m_notes.size(); ++i) {
        const auto nodes = noteOf(m_notes[i]);
        if (!nodes)
            continue;
        std::vector<const DNode::Paragraph*> paragraphs;
        collectParagraphs(*nodes, paragraphs);
        DocInlines inlines;
        for (const DNode::Paragraph* paragraph : paragraphs) {
            if (!inlines.empty())
                inlines.push_back({DocInline::LineBreak{}});
            flatten(paragraph->children, {}, inlines);
        }
        DocMarks back;
        back.link = u"#"_s;
        inlines.push_back({DocInline::Text{u" "_s, {}}});
        inlines.push_back({DocInline::Text{u"↑"_s, back}});
        into.push_back({DocBlock::Item{true, 0, static_cast<int>(i) + 1, tidied(inlines)}});
    }
}

// ---- tidying ----

namespace {

class Tidying
{
public:
    void add(const DocInline& each)
    {
        if (const auto* text = std::get_if<DocInline::Text>(&each.value)) {
            addText(text->text, text->marks);
            return;
        }
        flushBlank(nullptr);
        m_inlines.push_back(each);
        m_isAtEdge = !std::holds_alternative<DocInline::Checkbox>(each.value);
    }

    // A last blank is dropped.
    DocInlines take() { return std::move(m_inlines); }

private:
    void addText(QStringView text, const DocMarks& marks)
    {
        for (qsizetype at = 0; at < text.size();) {
            qsizetype end = text.indexOf(u' ', at);
            if (end < 0)
                end = text.size();
            if (end > at) {
                flushBlank(&marks);
                append(text.sliced(at, end - at), marks);
                m_isAtEdge = false;
            }
            at = end;
            if (at == text.size())
                return;
            if (!m_isAtEdge && !m_hasBlank) {
                m_hasBlank = true;
                m_blankMarks = marks;
            }
            while (at < text.size() && text[at] == u' ')
                ++at;
        }
    }

    // `next` are the marks of the text behind; null when none stands there.
    void flushBlank(const DocMarks* next)
    {
        if (!m_hasBlank)
            return;
        m_hasBlank = false;
        auto* before =
            m_inlines.empty() ? nullptr : std::get_if<DocInline::Text>(&m_inlines.back().value);
        if (before && next && before->marks == *next)
            before->text += u' ';
        else
            append(u" ", m_blankMarks);
    }

    void append(QStringView text, const DocMarks& marks)
    {
        auto* before =
            m_inlines.empty() ? nullptr : std::get_if<DocInline::Text>(&m_inlines.back().value);
        if (before && before->marks == marks)
            before->text += text;
        else
            m_inlines.push_back({DocInline::Text{text.toString(), marks}});
    }

    DocInlines m_inlines;
    bool m_isAtEdge = true; // at the beginning, or behind a picture or a break
    bool m_hasBlank = false;
    DocMarks m_blankMarks;
};

} // namespace

DocInlines tidied(const DocInlines& inlines)
{
    Tidying tidying;
    for (const DocInline& each : inlines)
        tidying.add(each);
    return tidying.take();
}

} // namespace corvelle
