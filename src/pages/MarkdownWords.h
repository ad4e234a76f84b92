// Words and their marks as Markdown that reads back as the same.
#pragma once

#include "pages/PageNode.h"

namespace corvelle {

struct MarkdownWords
{
    enum class Place { Lines, OneLine }; // whether a break may end a line
    Place place = Place::Lines;
    bool forOthers = false; // mentions as addresses of items

    QString of(const PageNodes& nodes) const;
    QString of(const PageNode& block) const { return of(block.content); }
};

// An address between a link's parentheses.
QString markdownDestination(const QString& address);

} // namespace corvelle
