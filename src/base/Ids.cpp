#include "base/Ids.h"

#include <QUuid>

namespace corvelle {

QString newID()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace corvelle
