#include "library/EditWords.h"

#include <cerrno>

using namespace Qt::StringLiterals;

namespace corvelle {

QString reasonText(const Failure& failure)
{
    const int error = failure.systemError();
    return error == ENOSPC || error == EDQUOT
               ? u": there isn’t enough space on the disk. Free up some space, then try again."_s
               : u". Try again."_s;
}

} // namespace corvelle
