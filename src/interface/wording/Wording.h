#pragma once

#include <QString>

namespace corvelle {

// The sentence with this desktop's words for the things that it speaks of: the file manager, the
// computer, the keys. For text that is about to be drawn; models, logs and stored text keep the
// sentence as it is.
QString shown(const QString& sentence);

} // namespace corvelle
