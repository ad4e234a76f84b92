// What a page says of the items that it mentions, as they are now.
#pragma once

#include "library/Library.h"
#include "pages/PageNode.h"

namespace corvelle {

// A page that is gone counts as a page.
MentionFacts itemFacts(const Library& library, const QString& id);

} // namespace corvelle
