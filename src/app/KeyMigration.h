// Moves a key that stands in the open in keys.env into the desktop's secret store.
#pragma once

#include "base/Result.h"

#include <QByteArray>

#include <functional>
#include <optional>

namespace corvelle {

// What keys.env holds: the key, if there is one, and the file without its line.
struct KeysFile
{
    QString key; // empty when there is none
    QByteArray rest;
};

// Lines are split at their first "=", both sides trimmed; "ANTHROPIC_API_KEY" and "export
// ANTHROPIC_API_KEY" name the key. Quotes at its ends are taken off. `rest` keeps the bytes of its
// lines, in any encoding, and ends in a newline, unless it is empty.
KeysFile readKeysFile(const QByteArray& content);

// Moves the key of the file at `path` by `save`. A missing file, no key or a failed save leave
// everything as it was.
void migrateKey(const QString& path, const std::function<Result<void>(const QString& key)>& save);

// keys.env in the data folder of this person.
QString keysFilePath();

} // namespace corvelle
