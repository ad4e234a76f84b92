// Counts the items of numbered lists, level by level, from a page's first block to its last.
#pragma once

#include "pages/FlatText.h"

#include <algorithm>
#include <vector>

namespace corvelle {

class ListNumbers
{
public:
    // Of the next block. Means nothing for one that isn't an item of a numbered list.
    int next(const BlockStyle& style)
    {
        const auto depth = static_cast<size_t>(std::clamp(style.depth, 0, 1'000));
        const bool known = m_levels.size() > depth;
        m_levels.resize(depth + 1); // deeper lists end here
        Level& level = m_levels[depth];
        const bool goesOn = known && style.kind == Block::Ordered && level.kind == Block::Ordered &&
                            level.isQuoted == style.isQuoted();
        level = {style.kind, style.isQuoted(), goesOn ? level.number + 1 : style.listStart};
        return level.number;
    }

private:
    struct Level
    {
        Block kind = Block::Paragraph;
        bool isQuoted = false;
        int number = 1;
    };
    std::vector<Level> m_levels;
};

} // namespace corvelle
