#include "documents/DocBlock.h"

#include "documents/Overloaded.h"

namespace corvelle {

namespace {

constexpr QChar thinSpace(0x2009), emptyBox(0x2610), checkedBox(0x2611);

void append(QString& to, const DocInlines& inlines)
{
    for (const DocInline& each : inlines)
        std::visit(Overloaded{[&](const DocInline::Text& text) {
                                  if (text.marks.code)
                                      to += thinSpace + text.text + thinSpace;
                                  else
                                      to += text.text;
                              },
                       [](const DocInline::Picture&) {},
                       [&](DocInline::Checkbox box) { to += box.checked ? checkedBox : emptyBox; },
                       [&](DocInline::LineBreak) { to += u'\n'; }},
            each.value);
}

void append(QString& to, const DocBlocks& blocks);

struct TextOfBlock
{
    QString& to;

    void operator()(const DocBlock::Paragraph& block) { append(to, block.inlines); }
    void operator()(const DocBlock::Item& block) { append(to, block.inlines); }
    void operator()(const DocBlock::Continuation& block) { append(to, block.inlines); }
    void operator()(const DocBlock::Task& block) { append(to, block.inlines); }
    void operator()(const DocBlock::Table& block)
    {
        for (const DocRow& row : block.rows)
            for (const DocCell& cell : row.cells)
                append(to, cell.blocks);
    }
    void operator()(const DocBlock::Quote& block) { append(to, block.blocks); }
    void operator()(const DocBlock::Pre& block) { to += block.text; }
    void operator()(const DocBlock::Aside& block) { to += block.text; }
    void operator()(const DocBlock::Code& block) { to += block.text; }
    void operator()(const DocBlock::Section&) {}
    void operator()(const DocBlock::Rule&) {}
};

void append(QString& to, const DocBlocks& blocks)
{
    for (const DocBlock& block : blocks) {
        std::visit(TextOfBlock{to}, block.value);
        to += u"\n\n";
    }
}

} // namespace

QString plainText(const DocBlocks& blocks)
{
    QString text;
    append(text, blocks);
    return text;
}

QString plainText(const DocBlock& block)
{
    QString text;
    std::visit(TextOfBlock{text}, block.value);
    return text;
}

QString plainText(const DocInlines& inlines)
{
    QString text;
    append(text, inlines);
    return text;
}

DocBlock paragraphOf(const QString& text, int level)
{
    return {DocBlock::Paragraph{level, {DocInline{DocInline::Text{text, {}}}}}};
}

} // namespace corvelle
