#include "documents/DocDump.h"

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

QString escaped(const QString& text)
{
    QString all;
    all.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'\\')
            all += u"\\\\";
        else if (c == u'\t')
            all += u"\\t";
        else if (c == u'\n')
            all += u"\\n";
        else if (c == u'\r')
            all += u"\\r";
        else if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
                 c == QChar::ParagraphSeparator)
            all += u"\\u"_s + QString::number(c.unicode(), 16).rightJustified(4, u'0');
        else
            all += c;
    }
    return all;
}

class Dump
{
public:
    explicit Dump(QByteArray& into)
        : m_into(into)
    {}

    void add(const DocBlock& block) { std::visit(*this, block.value); }

    void operator()(const DocBlock::Paragraph& block)
    {
        line(u"paragraph %1"_s.arg(block.level), plainText(block.inlines));
    }
    void operator()(const DocBlock::Item& block)
    {
        const QString kind = block.ordered ? u"ordered"_s : u"bullet"_s;
        line(u"item %1 %2 %3"_s.arg(kind).arg(block.depth).arg(block.number),
            plainText(block.inlines));
    }
    void operator()(const DocBlock::Table& block)
    {
        line(u"table"_s, {});
        for (size_t row = 0; row < block.rows.size(); ++row)
            addRow(block.rows[row], row + 1);
    }
    void operator()(const DocBlock::Pre& block) { line(u"pre"_s, block.text); }
    void operator()(const DocBlock::Aside& block) { line(u"aside"_s, block.text); }
    void operator()(const DocBlock::Continuation& block)
    {
        line(u"continuation %1"_s.arg(block.depth), plainText(block.inlines));
    }
    void operator()(const DocBlock::Task& block)
    {
        line(u"task %1 %2"_s.arg(block.depth).arg(block.checked ? u"checked"_s : u"open"_s),
            plainText(block.inlines));
    }
    void operator()(const DocBlock::Quote& block)
    {
        line(u"quote"_s, {});
        addDeeper(block.blocks);
    }
    void operator()(const DocBlock::Code& block) { line(u"code"_s, block.text); }
    void operator()(const DocBlock::Section&) { line(u"section"_s, {}); }
    void operator()(const DocBlock::Rule&) { line(u"rule"_s, {}); }

private:
    // Rows and columns count from 1, a column in its row.
    void addRow(const DocRow& row, size_t number)
    {
        m_indent += 2;
        for (size_t column = 0; column < row.cells.size(); ++column) {
            const DocCell& cell = row.cells[column];
            line(u"cell %1 %2 spans %3 %4%5"_s.arg(number)
                     .arg(column + 1)
                     .arg(cell.rowSpan)
                     .arg(cell.colSpan)
                     .arg(row.header ? u" header"_s : QString()),
                {});
            addDeeper(cell.blocks);
        }
        m_indent -= 2;
    }

    void addDeeper(const DocBlocks& blocks)
    {
        m_indent += 2;
        for (const DocBlock& block : blocks)
            add(block);
        m_indent -= 2;
    }

    void line(const QString& head, const QString& text)
    {
        m_into += QByteArray(m_indent, ' ');
        m_into += head.toUtf8();
        m_into += '\t';
        m_into += escaped(text).toUtf8();
        m_into += '\n';
    }

    QByteArray& m_into;
    int m_indent = 0;
};

} // namespace

QByteArray dumpOf(const DocBlock& block)
{
    QByteArray lines;
    Dump(lines).add(block);
    return lines;
}

} // namespace corvelle
