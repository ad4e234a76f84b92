// The saved keys of the person, in the desktop's secret store.
#pragma once

#include "base/Result.h"

#include <QString>

namespace corvelle {

// Saves the key under its name, such as "ANTHROPIC_API_KEY". Fails at once where there is no secret
// service. May wait for the person to unlock the store: never on the main thread.
Result<void> saveKey(const QString& name, const QString& key);

} // namespace corvelle
