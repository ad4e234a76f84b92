// Names on disk for what a person calls a thing.
#pragma once

#include <QString>

#include <functional>

namespace corvelle {

// What is stored of a text that somebody typed: without NUL characters, and with what is no Unicode
// replaced, so that the database and the memory agree.
QString storableTitle(const QString& typed);

// A name that every file system takes, that leads nowhere else and isn't hidden: never empty, never
// starting with ".", without "/", under 241 bytes of UTF-8, its extension kept when it is one.
QString safeFileName(const QString& title);

// The extension behind the last "." of a name, without it; empty when there is none or nothing
// stands before or behind it.
QString fileExtension(const QString& name);

// How a name is cut when a number is put in: a folder has no extension.
enum class NameOf { File, Folder };

// The name itself when nothing in the folder has it, or when what has it is `self` (an absolute
// path; compared in lower case). Otherwise with " 2", " 3" … before the extension. `isTaken` may
// know of more absolute paths that aren't free.
QString uniqueName(const QString& name, const QString& folder, NameOf of, const QString& self = {},
    const std::function<bool(const QString& path)>& isTaken = {});

} // namespace corvelle
