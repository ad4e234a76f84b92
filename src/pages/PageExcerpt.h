// The first lines of a page, which its card shows without opening it. Pure; any thread.
#pragma once

#include "pages/FlatText.h"

#include <vector>

namespace corvelle {

struct ExcerptRow
{
    Block kind = Block::Paragraph;
    QString text; // one line
    int depth = 0;
    int number = 1; // of an item in a numbered list
    bool isDone = false;

    bool operator==(const ExcerptRow&) const = default;
};

struct PageExcerpt
{
    static constexpr int mostRows = 14;

    std::vector<ExcerptRow> rows; // of blocks that have words
    qsizetype words = 0;          // in the whole page: runs without white space
};

PageExcerpt pageExcerpt(const FlatText& text, int limit = PageExcerpt::mostRows);
PageExcerpt pageExcerpt(const QByteArray& json, int limit = PageExcerpt::mostRows);

} // namespace corvelle
