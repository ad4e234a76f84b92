// Whether what lies at a path may go away by itself.
#pragma once

#include <QString>

namespace corvelle {

// A resolved path in a folder for temporary files, caches, run-time files or deleted things, or on
// a volume that can only be read: such a file is copied, not linked.
bool isVolatile(const QString& path);

} // namespace corvelle
