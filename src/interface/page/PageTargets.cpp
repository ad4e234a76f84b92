#include "interface/page/PageTargets.h"

#include "interface/page/TableCells.h"

namespace corvelle {

namespace {

class TargetList
{
public:
    // Of a text that the way so far leads to.
    void addText(const FlatText& text)
    {
        text.eachBlock(0, [&](const FlatText::BlockAt& block) {
            const CharStyleRef only =
                block.length() == 1 ? text.styleAt(block.start) : CharStyleRef();
            if (only && only->attachment)
                addObject(block.start, *only->attachment);
            else
                addWords(text, block.start, block.end);
            return true;
        });
    }

    std::vector<TargetInPage> take() { return std::move(m_targets); }

private:
    void addObject(Units at, const BlockAttachment& object)
    {
        if (object.kind == PageNode::Type::Table && m_cells.size() < deepestTable) {
            const auto table = tableCells(object);
            for (size_t i = 0; i < table->texts.size(); ++i) {
                m_cells.push_back({at, static_cast<int>(i)});
                addText(table->texts[i]);
                m_cells.pop_back();
            }
        } else if (object.kind == PageNode::Type::Embed) {
            const PageEmbed embed = embedOf(nodeFromJson(object.node));
            m_targets.push_back({{m_cells, at, at + 1}, {embed.id, {}}, embed.label});
        }
    }

    void addWords(const FlatText& text, Units from, Units to)
    {
        text.eachRun(from, to, [&](Units at, QStringView run, const CharStyleRef& style) {
            if (!style)
                return;
            if (style->mention) {
                for (Units i = at; i < at + run.size(); ++i)
                    m_targets.push_back(
                        {{m_cells, i, i + 1}, {style->mention->id, {}}, style->mention->label});
            } else if (style->link) {
                addLink({m_cells, at, at + run.size()}, style->link);
            }
        });
    }

    // A link goes on where only its marks change.
    void addLink(const TextRange& range, const std::shared_ptr<const Link>& link)
    {
        TargetInPage* last = m_targets.empty() ? nullptr : &m_targets.back();
        const bool goesOn = last && last->target.link && last->range.cells == range.cells &&
                            last->range.to == range.from && *last->target.link == *link;
        if (goesOn)
            last->range.to = range.to;
        else
            m_targets.push_back({range, {{}, link}, {}});
    }

    CellPath m_cells;
    std::vector<TargetInPage> m_targets;
};

} // namespace

std::vector<TargetInPage> pageTargets(const FlatText& text)
{
    TargetList list;
    list.addText(text);
    return list.take();
}

} // namespace corvelle
