#pragma once

#include "library/Node.h"

#include <QJsonObject>

namespace corvelle {

// Every stored field of a node by its name, absent ones as null, plus `inTrash`.
QJsonObject nodeJson(const Node& node, const SeenFile& seen, bool inTrash);

} // namespace corvelle
