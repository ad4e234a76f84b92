#include "interface/page/PageFind.h"

#include "interface/page/ShownText.h"
#include "interface/page/TableCells.h"

#include <QStringMatcher>

#include <algorithm>

namespace corvelle {

namespace {

constexpr size_t mostFound = 10'000;

class Finder
{
public:
    Finder(const FlatText& text, const QString& words)
        : m_text(text)
        , m_matcher(words, Qt::CaseInsensitive)
        , m_length(static_cast<int>(words.size()))
    {}

    std::vector<TextRange> all()
    {
        m_text.eachBlock(0, [this](const FlatText::BlockAt& block) {
            const CharStyleRef only =
                block.length() == 1 ? m_text.styleAt(block.start) : CharStyleRef();
            if (only && only->attachment)
                lookIn(block.index, *only->attachment);
            else
                lookIn({block.index, -1, 0, 0}, m_text, block.start, block.end);
            return m_found.size() < mostFound;
        });
        return std::move(m_found);
    }

private:
    void lookIn(qsizetype block, const BlockAttachment& attachment)
    {
        if (attachment.kind == PageNode::Type::Embed) {
            if (m_matcher.indexIn(embedOf(nodeFromJson(attachment.node)).label) >= 0)
                m_found.push_back({block, -1, 0, 1});
        } else if (attachment.kind == PageNode::Type::Table) {
            const auto cells = tableCells(attachment);
            for (size_t i = 0; i < cells->texts.size() && m_found.size() < mostFound; ++i)
                lookIn({block, static_cast<int>(i), 0, 0}, cells->texts[i], 0,
                    cells->texts[i].length());
        }
    }

    void lookIn(TextRange range, const FlatText& text, Units from, Units to)
    {
        const ShownText shown = wordsOf(text, from, to);
        for (qsizetype at = m_matcher.indexIn(shown.words); at >= 0 && m_found.size() < mostFound;
             at = m_matcher.indexIn(shown.words, at + m_length)) {
            range.from = shown.place(static_cast<int>(at));
            range.to = shown.place(static_cast<int>(at) + m_length);
            // Of a label any part stands for the whole mention.
            auto jump = std::partition_point(shown.jumps.begin(), shown.jumps.end(),
                [at](const ShownText::Jump& before) { return before.shown + before.length <= at; });
            for (; jump != shown.jumps.end() && jump->shown < at + m_length; ++jump) {
                range.from = std::min(range.from, jump->place);
                range.to = std::max(range.to, jump->place + 1);
            }
            range.to = std::max(range.to, range.from + 1);
            m_found.push_back(range);
        }
    }

    static ShownText wordsOf(const FlatText& text, Units from, Units to)
    {
        ShownText shown;
        text.eachRun(from, to, [&](Units at, QStringView run, const CharStyleRef& style) {
            if (!style || !style->mention) {
                shown.words += run;
                return;
            }
            for (qsizetype i = 0; i < run.size(); ++i) {
                const auto start = static_cast<int>(shown.words.size());
                shown.words += style->mention->label;
                shown.jumps.push_back(
                    {at - from + i, start, static_cast<int>(shown.words.size()) - start});
            }
        });
        return shown;
    }

    const FlatText& m_text;
    const QStringMatcher m_matcher;
    const int m_length;
    std::vector<TextRange> m_found;
};

} // namespace

std::vector<TextRange> findInPage(const FlatText& text, const QString& words)
{
    return words.isEmpty() ? std::vector<TextRange>() : Finder(text, words).all();
}

} // namespace corvelle
