#include "library/Node.h"

#include "base/CardPlacement.h"

namespace corvelle {

QSizeF cardSize(const Node& node)
{
    return cardSize(
        CardShape{node.kind, node.isPicture(), node.width.value_or(0), node.height.value_or(0)});
}

QRectF cardRect(const Node& node)
{
    const QSizeF size = cardSize(node);
    return QRectF(QPointF(node.x - size.width() / 2, node.y - size.height() / 2), size);
}

} // namespace corvelle
