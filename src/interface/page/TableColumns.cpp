#include "interface/page/TableColumns.h"

#include "interface/page/TableCells.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvelle {

namespace {

constexpr double widestSide = 12, leastColumn = 48;
constexpr double readable = 76;     // words and pictures that want more can do with this
constexpr double longestWord = 200; // that isn't broken
constexpr double widestStored = 2'000;
constexpr size_t sampledCells = 400;  // whose words tell how wide columns want to be,
constexpr Units sampledUnits = 2'000; // and how many of each
constexpr int sampledPictures = 24;

struct Want
{
    double wanted = 0, least = 0;

    void add(double wide, double narrow)
    {
        wanted = std::max(wanted, wide);
        least = std::max(least, std::min(wide, narrow));
    }
};

class CellMeasure
{
public:
    explicit CellMeasure(const PieceFacts& facts)
        : m_facts(facts)
        , m_body(facts.style->inCell(false))
        , m_head(facts.style->inCell(true))
    {}

    Want of(const FlatText& text, bool isHead)
    {
        const PageStyle& style = isHead ? m_head : m_body;
        Want want;
        text.eachBlock(0, [&](const FlatText::BlockAt& block) {
            const auto object = objectIn(text, block);
            if (!object)
                addWords(text.text(block.start, std::min(block.end, block.start + sampledUnits)),
                    style, block.what(), want);
            else if (object->kind == PageNode::Type::Image)
                addPicture(*object, want);
            else if (object->kind == PageNode::Type::Table)
                addTable(*object, want);
            else
                want.add(200 * zoom(), 2 * readable * zoom());
            return block.end < sampledUnits;
        });
        return want;
    }

private:
    double zoom() const { return m_facts.style->zoom(); }

    static std::shared_ptr<const BlockAttachment> objectIn(
        const FlatText& text, const FlatText::BlockAt& block)
    {
        const CharStyleRef only = block.length() == 1 ? text.styleAt(block.start) : CharStyleRef();
        return only ? only->attachment : nullptr;
    }

    void addWords(
        const QString& words, const PageStyle& style, const BlockStyle& block, Want& want) const
    {
        const QFontMetricsF metrics(style.font(block.kind));
        const double inset = style.inset(block.kind) + block.depth * style.indent() +
                             (block.isQuoted() ? style.quoteInset() : 0);
        double widest = 0;
        for (const QString& line : words.split(lineBreak))
            widest = std::max(widest, metrics.horizontalAdvance(line.left(200)));
        // Of the words the one with the most letters is about the widest.
        qsizetype from = 0, length = 0, start = 0;
        for (qsizetype i = 0; i <= words.size(); ++i) {
            if (i < words.size() && !words[i].isSpace())
                continue;
            if (i - start > length) {
                from = start;
                length = i - start;
            }
            start = i + 1;
        }
        const double word = std::min(longestWord * zoom(),
            metrics.horizontalAdvance(words.mid(from, std::min<qsizetype>(length, 60))));
        want.add(inset + widest + 1, inset + std::max(word + 1, readable * zoom()));
    }

    void addPicture(const BlockAttachment& picture, Want& want)
    {
        if (m_pictures++ >= sampledPictures)
            return;
        const auto found = m_facts.pictures->find(picture);
        if (found.data.isShown())
            want.add(found.data.size->width() * zoom(), readable * zoom());
        else
            want.add(200 * zoom(), 2 * readable * zoom());
    }

    void addTable(const BlockAttachment& table, Want& want) const
    {
        PieceFacts inner = m_facts;
        if (++inner.depth >= deepestTable)
            return;
        const ColumnWants wants = columnWants(*tableCells(table), inner);
        const double least = std::accumulate(wants.least.begin(), wants.least.end(), 0.0);
        want.add(
            std::max(least, std::accumulate(wants.wanted.begin(), wants.wanted.end(), 0.0)), least);
    }

    const PieceFacts& m_facts;
    const PageStyle m_body, m_head;
    int m_pictures = 0;
};

// Columns that want less than their share get that, those that need more get what they need; the
// others share the rest.
std::vector<double> shared(const ColumnWants& wants, double width)
{
    std::vector<double> given(wants.wanted.size(), -1);
    double left = width;
    auto open = static_cast<double>(given.size());
    const auto give = [&](const auto& amountOf) {
        bool gave = false;
        const double share = left / std::max(1.0, open);
        for (size_t i = 0; i < given.size(); ++i)
            if (const double amount = amountOf(i, share); given[i] < 0 && amount >= 0) {
                given[i] = amount;
                left -= amount;
                --open;
                gave = true;
            }
        return gave;
    };
    const auto needed = [&](size_t i, double share) {
        return wants.least[i] > share ? wants.least[i] : -1;
    };
    const auto modest = [&](size_t i, double share) {
        return wants.wanted[i] <= share ? wants.wanted[i] : -1;
    };
    while (open > 0 && (give(needed) || give(modest))) {
    }
    for (double& column : given)
        if (column < 0)
            column = left / open;
    return given;
}

} // namespace

double cellSide(double cellWidth, double zoom)
{
    return std::floor(std::min(widestSide * zoom, cellWidth / 4));
}

ColumnWants columnWants(const TableCells& cells, const PieceFacts& facts)
{
    const TablePlan& plan = cells.plan;
    const double zoom = facts.style->zoom(), sides = 2 * widestSide * zoom;
    ColumnWants wants;
    wants.wanted.assign(static_cast<size_t>(plan.columnCount), leastColumn);
    wants.least = wants.wanted;
    CellMeasure measure(facts);
    std::vector<std::pair<const TablePlan::Slot*, double>> merged; // with what they can do with
    for (size_t i = 0; i < std::min(plan.cells.size(), sampledCells); ++i) {
        const TablePlan::Slot& slot = plan.cells[i];
        const Want want = measure.of(cells.texts[i], slot.isHeader);
        if (slot.colSpan > 1) {
            merged.emplace_back(&slot, want.least + sides);
            continue;
        }
        const auto column = static_cast<size_t>(slot.column);
        wants.wanted[column] = std::max(wants.wanted[column], want.wanted + sides);
        wants.least[column] = std::max(wants.least[column], want.least + sides);
    }
    for (size_t i = 0; i < wants.wanted.size(); ++i)
        if (plan.widths[i] > 0)
            wants.wanted[i] = wants.least[i] =
                std::clamp(plan.widths[i] * zoom, leastColumn, widestStored * zoom);
    for (const auto& [slot, least] : merged) {
        const auto first = wants.least.begin() + slot->column;
        const auto last = first + slot->colSpan;
        const double lacking = (least - std::accumulate(first, last, 0.0)) / slot->colSpan;
        for (auto column = first; lacking > 0 && column != last; ++column)
            *column += lacking;
    }
    for (size_t i = 0; i < wants.wanted.size(); ++i)
        wants.wanted[i] = std::max(wants.wanted[i], wants.least[i]);
    return wants;
}

std::vector<double> columnEdges(ColumnWants wants, double width)
{
    const auto sumOf = [](const std::vector<double>& widths) {
        return std::accumulate(widths.begin(), widths.end(), 0.0);
    };
    if (sumOf(wants.least) >= width)
        wants.wanted = wants.least;
    else if (sumOf(wants.wanted) > width)
        wants.wanted = shared(wants, width);
    // What is over goes to all by what they have; edges stand on whole pixels.
    const double sum = sumOf(wants.wanted);
    const double factor = std::max(1.0, width / std::max(1.0, sum));
    std::vector<double> edges{0};
    double ideal = 0;
    for (const double column : wants.wanted) {
        ideal += column * factor;
        edges.push_back(std::round(ideal));
    }
    return edges;
}

} // namespace corvelle
