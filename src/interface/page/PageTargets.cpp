#include "interface/page/PageTargets.h"

#include "interface/page/TableCells.h"

namespace corvelle {

namespace {

void addTargets(const FlatText& text, Units from, Units to, const TextRange& where,
    std::vector<TargetInPage>& targets)
{
    text.eachRun(from, to, [&](Units at, QStringView run, const CharStyleRef& style) {
        if (!style)
            return;
        TextRange range = where;
        range.from = at - from;
        range.to = range.from + run.size();
        if (style->mention) {
            for (Units i = 0; i < run.size(); ++i) {
                range.to = range.from + 1;
                targets.push_back({range, {style->mention->id, {}}, style->mention->label});
                ++range.from;
            }
        } else if (style->link) {
            // A link goes on where only its marks change.
            TargetInPage* last = targets.empty() ? nullptr : &targets.back();
            const bool goesOn = last && last->target.link && last->range.block == range.block &&
                                last->range.cell == range.cell && last->range.to == range.from &&
                                *last->target.link == *style->link;
            if (goesOn)
                last->range.to = range.to;
            else
                targets.push_back({range, {{}, style->link}, {}});
        }
    });
}

} // namespace

std::vector<TargetInPage> pageTargets(const FlatText& text)
{
    std::vector<TargetInPage> targets;
    text.eachBlock(0, [&](const FlatText::BlockAt& block) {
        const CharStyleRef only = block.length() == 1 ? text.styleAt(block.start) : CharStyleRef();
        if (!only || !only->attachment) {
            addTargets(text, block.start, block.end, {block.index, -1, 0, 0}, targets);
        } else if (only->attachment->kind == PageNode::Type::Table) {
            const auto cells = tableCells(*only->attachment);
            for (size_t i = 0; i < cells->texts.size(); ++i)
                addTargets(cells->texts[i], 0, cells->texts[i].length(),
                    {block.index, static_cast<int>(i), 0, 0}, targets);
        } else if (only->attachment->kind == PageNode::Type::Embed) {
            const PageEmbed embed = embedOf(nodeFromJson(only->attachment->node));
            targets.push_back({{block.index, -1, 0, 1}, {embed.id, {}}, embed.label});
        }
        return true;
    });
    return targets;
}

} // namespace corvelle
