#include "interface/page/SpokenPage.h"

#include "interface/page/TableCells.h"

#include <algorithm>

namespace corvelle {

namespace {

// Each unit with what is said for it.
template<class Visit>
void eachSpoken(const FlatText& text, Units from, Units to, Visit visit)
{
    text.eachRun(from, to, [&](Units at, QStringView run, const CharStyleRef& style) {
        const bool stands = style && (style->mention || style->attachment);
        if (!stands)
            return visit(at, run, run);
        const QString said =
            style->mention ? style->mention->label : wordsForObject(*style->attachment);
        for (qsizetype i = 0; i < run.size(); ++i)
            visit(at + i, run.mid(i, 1), said);
    });
}

qsizetype spokenLength(const FlatText& text, Units from, Units to)
{
    qsizetype length = 0;
    eachSpoken(
        text, from, to, [&](Units, QStringView, QStringView said) { length += said.size(); });
    return length;
}

QString tableWords(const TableCells& table)
{
    QString words;
    for (size_t i = 0; i < table.texts.size(); ++i) {
        if (i > 0)
            words +=
                table.plan.cells[i].row == table.plan.cells[i - 1].row ? QChar(u'\t') : lineBreak;
        eachSpoken(table.texts[i], 0, table.lengthOf(i),
            [&](Units, QStringView, QStringView said) { words += said; });
    }
    return words.replace(u'\n', u' ');
}

// How far a place lies behind the beginning of the table that the step at `depth` goes into.
qsizetype offsetInTable(const FlatText& text, const PagePlace& place, size_t depth)
{
    const CellStep& step = place.cells[depth];
    const auto table = tableAt(text, step.table);
    if (!table || static_cast<size_t>(step.cell) >= table->texts.size())
        return 0;
    qsizetype offset = 0;
    const auto cell = static_cast<size_t>(step.cell);
    for (size_t i = 0; i < cell; ++i)
        offset += spokenLength(table->texts[i], 0, table->lengthOf(i)) + 1;
    const FlatText& inside = table->texts[cell];
    if (depth + 1 == place.cells.size())
        return offset + spokenLength(inside, 0, std::min(place.at, table->lengthOf(cell)));
    return offset + spokenLength(inside, 0, place.cells[depth + 1].table) +
           offsetInTable(inside, place, depth + 1);
}

PagePlace placeInTable(const TableCells& table, Units at, qsizetype offset, CellPath way);

// Of what is said for a stretch; the way leads to the text.
PagePlace placeInWords(
    const FlatText& text, Units from, Units to, qsizetype offset, const CellPath& way)
{
    PagePlace place{way, from};
    std::optional<Units> inTable;
    qsizetype at = 0, tableStart = 0;
    eachSpoken(text, from, to, [&](Units unit, QStringView units, QStringView said) {
        const qsizetype end = at + said.size();
        if (at <= offset && offset <= end && units.front() == attachmentCharacter &&
            tableAt(text, unit)) {
            inTable = unit;
            tableStart = at;
        } else if (end <= offset) {
            place.at = unit + units.size();
        } else if (at <= offset && units.size() == said.size()) {
            place.at = unit + offset - at;
        }
        at = end;
    });
    if (!inTable || way.size() >= deepestTable)
        return place;
    const auto table = tableAt(text, *inTable);
    return table->texts.empty() ? place : placeInTable(*table, *inTable, offset - tableStart, way);
}

PagePlace placeInTable(const TableCells& table, Units at, qsizetype offset, CellPath way)
{
    size_t cell = 0;
    for (; cell + 1 < table.texts.size(); ++cell) {
        const qsizetype length = spokenLength(table.texts[cell], 0, table.lengthOf(cell));
        if (offset <= length)
            break;
        offset -= length + 1;
    }
    way.push_back({at, static_cast<int>(cell)});
    return placeInWords(table.texts[cell], 0, table.lengthOf(cell), offset, way);
}

} // namespace

QString wordsForObject(const BlockAttachment& attachment)
{
    switch (attachment.kind) {
    case PageNode::Type::Table:
        return tableWords(*tableCells(attachment));
    case PageNode::Type::Embed:
        return embedOf(nodeOf(attachment)).label;
    default:
        const QString alt = pictureOf(nodeOf(attachment)).alt;
        return alt.isEmpty() ? QStringLiteral("Picture") : alt;
    }
}

SpokenPage::SpokenPage(FlatText text)
    : m_text(std::move(text))
{
    qsizetype length = 0;
    m_starts.reserve(static_cast<size_t>(m_text.blockCount()) + 1);
    m_text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        m_starts.push_back(length);
        length += spokenLength(m_text, block.start, block.end) + 1;
        return true;
    });
    m_starts.push_back(length);
}

QString SpokenPage::blockWords(qsizetype index) const
{
    const FlatText::BlockAt block = m_text.block(index);
    QString words;
    eachSpoken(m_text, block.start, block.end,
        [&](Units, QStringView, QStringView said) { words += said; });
    return words + u'\n';
}

qsizetype SpokenPage::blockOf(qsizetype offset) const
{
    const auto beyond = std::upper_bound(m_starts.begin(), m_starts.end() - 1, offset);
    return std::max<qsizetype>(0, beyond - m_starts.begin() - 1);
}

QString SpokenPage::text(qsizetype from, qsizetype to) const
{
    from = std::clamp<qsizetype>(from, 0, length());
    to = std::clamp<qsizetype>(to, from, length());
    QString words;
    if (from == to)
        return words;
    const qsizetype first = blockOf(from);
    for (qsizetype block = first; m_starts[static_cast<size_t>(block)] < to; ++block)
        words += blockWords(block);
    return words.mid(from - m_starts[static_cast<size_t>(first)], to - from);
}

qsizetype SpokenPage::offsetOf(const PagePlace& place) const
{
    if (m_starts.empty())
        return 0;
    const Units at = place.cells.empty() ? place.at : place.cells.front().table;
    const FlatText::BlockAt block = m_text.blockAt(at);
    return m_starts[static_cast<size_t>(block.index)] +
           spokenLength(m_text, block.start, std::min(at, block.end)) +
           (place.cells.empty() ? 0 : offsetInTable(m_text, place, 0));
}

PagePlace SpokenPage::placeOf(qsizetype offset) const
{
    if (m_starts.empty())
        return {};
    offset = std::clamp<qsizetype>(offset, 0, length());
    const qsizetype index = blockOf(offset);
    const FlatText::BlockAt block = m_text.block(index);
    return placeInWords(
        m_text, block.start, block.end, offset - m_starts[static_cast<size_t>(index)], {});
}

} // namespace corvelle
