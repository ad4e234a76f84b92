// Markdown to page blocks and back: CommonMark's shape with GitHub's tables, to-dos and strikes.
//
// Reading never fails: what isn't understood is text. Linear in its input, and quotes and lists
// nest at most 100 deep. Pure; any thread.
#pragma once

#include "pages/PageNode.h"

#include <QStringView>

#include <optional>
#include <vector>

namespace corvelle {

struct PageMarkdown
{
    static constexpr int deepest = 100; // deeper markers of quotes and lists are text

    struct Block
    {
        PageNode node;
        qsizetype lineStart = 0, lineEnd = 0; // half-open
    };
    // With the lines that each block stands on. Front matter counts only at the very beginning.
    static std::vector<Block> parse(QStringView markdown);

    // The blocks of a document; one empty paragraph when there are none.
    static PageNodes docFromMarkdown(QStringView markdown);

    // Of one block, as it reads back.
    static QString markdownFromNode(const PageNode& node);
    // Of a document, its blocks apart by blank lines. Front matter is written only at its
    // beginning.
    static QString markdownFromNodes(const PageNodes& nodes);

    enum class Pictures { Kept, Named }; // those whose bytes stand in the page
    // For a file that others read: mentions and embedded items are addresses.
    static QString markdownFromDoc(const PageNodes& nodes, Pictures pictures);

    // Whether anything stands in it that Markdown can't hold.
    static bool holdsPicturesOrEmbeds(const PageNode& node);
};

} // namespace corvelle
