// What can be followed in a page: mentions, links, and the cards of items.
#pragma once

#include "interface/page/PageFind.h"

#include <memory>
#include <vector>

namespace corvelle {

struct PageTarget
{
    QString item;                     // a mentioned or embedded one
    std::shared_ptr<const Link> link; // else an address

    bool isNothing() const { return item.isEmpty() && !link; }
};

struct TargetInPage
{
    TextRange range;
    PageTarget target;
    QString label; // of a mention or a card
};

// In the order of the page.
std::vector<TargetInPage> pageTargets(const FlatText& text);

} // namespace corvelle
