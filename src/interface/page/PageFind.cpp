#include "interface/page/PageFind.h"

#include "interface/page/ShownText.h"
#include "interface/page/SpokenPage.h"
#include "interface/page/TableCells.h"

#include <QStringMatcher>

#include <algorithm>

namespace corvelle {

namespace {

constexpr size_t mostFound = 10'000;

class Finder
{
public:
    explicit Finder(const QString& words)
        : m_matcher(words, Qt::CaseInsensitive)
        , m_length(static_cast<int>(words.size()))
    {}

    // In a text that the way so far leads to.
    void lookIn(const FlatText& text)
    {
        text.eachBlock(0, [&](const FlatText::BlockAt& block) {
            const CharStyleRef only =
                block.length() == 1 ? text.styleAt(block.start) : CharStyleRef();
            if (only && only->attachment)
                lookIn(block.start, *only->attachment);
            else
                lookIn(text, block.start, block.end);
            return m_found.size() < mostFound;
        });
    }

    std::vector<TextRange> take() { return std::move(m_found); }

private:
    void lookIn(Units at, const BlockAttachment& object)
    {
        const bool isTable = object.kind == PageNode::Type::Table;
        if (isTable && m_cells.size() < deepestTable) {
            const auto table = tableCells(object);
            for (size_t i = 0; i < table->texts.size() && m_found.size() < mostFound; ++i) {
                m_cells.push_back({at, static_cast<int>(i)});
                lookIn(table->texts[i]);
                m_cells.pop_back();
            }
        } else if (isTable || object.kind == PageNode::Type::Embed) {
            if (m_matcher.indexIn(wordsForObject(object)) >= 0)
                m_found.push_back({m_cells, at, at + 1});
        }
    }

    void lookIn(const FlatText& text, Units from, Units to)
    {
        TextRange range{m_cells, 0, 0};
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
            range.from += from;
            range.to += from;
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

    const QStringMatcher m_matcher;
    const int m_length;
    CellPath m_cells; // the way to the text that is looked through
    std::vector<TextRange> m_found;
};

} // namespace

std::vector<TextRange> findInPage(const FlatText& text, const QString& words)
{
    if (words.isEmpty())
        return {};
    Finder finder(words);
    finder.lookIn(text);
    return finder.take();
}

} // namespace corvelle
