#include "interface/page/SpokenPage.h"

#include <algorithm>

namespace corvelle {

QString wordsForObject(const BlockAttachment& attachment)
{
    const PageNode node = nodeOf(attachment);
    switch (attachment.kind) {
    case PageNode::Type::Table:
        return plainText(node).replace(u'\n', lineBreak);
    case PageNode::Type::Embed:
        return embedOf(node).label;
    default:
        const QString alt = pictureOf(node).alt;
        return alt.isEmpty() ? QStringLiteral("Picture") : alt;
    }
}

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

} // namespace

SpokenPage::SpokenPage(FlatText text)
    : m_text(std::move(text))
{
    qsizetype length = 0;
    m_starts.reserve(static_cast<size_t>(m_text.blockCount()) + 1);
    m_text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        m_starts.push_back(length);
        eachSpoken(m_text, block.start, block.end,
            [&](Units, QStringView, QStringView said) { length += said.size(); });
        ++length;
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

qsizetype SpokenPage::offsetOf(Units place) const
{
    if (m_starts.empty())
        return 0;
    const FlatText::BlockAt block = m_text.blockAt(place);
    qsizetype offset = m_starts[static_cast<size_t>(block.index)];
    eachSpoken(m_text, block.start, std::min(place, block.end),
        [&](Units, QStringView, QStringView said) { offset += said.size(); });
    return offset;
}

Units SpokenPage::placeOf(qsizetype offset) const
{
    if (m_starts.empty())
        return 0;
    offset = std::clamp<qsizetype>(offset, 0, length());
    const qsizetype index = blockOf(offset);
    const FlatText::BlockAt block = m_text.block(index);
    qsizetype at = m_starts[static_cast<size_t>(index)];
    Units place = block.start;
    eachSpoken(
        m_text, block.start, block.end, [&](Units unit, QStringView units, QStringView said) {
            if (at + said.size() <= offset)
                place = unit + units.size();
            else if (at <= offset && units.size() == said.size())
                place = unit + offset - at;
            at += said.size();
        });
    return place;
}

} // namespace corvelle
