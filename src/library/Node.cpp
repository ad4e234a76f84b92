#include "library/Node.h"

#include "base/CardPlacement.h"

namespace corvelle {

QSizeF cardSize(const Node& node)
{
    return cardSize(
        CardShape{node.kind, node.isPicture(), node.width.value_or(0), node.height.value_or(0)});
}

} // namespace corvelle
