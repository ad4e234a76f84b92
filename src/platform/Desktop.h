#pragma once

#include <QString>

namespace corvelle {

// Shows the folder or file in the desktop's file manager, by its D-Bus service, or opens the folder
// where there is none.
void showInFileManager(const QString& path);

} // namespace corvelle
