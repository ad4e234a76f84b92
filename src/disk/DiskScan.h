// What lies on the real disk, as the plan needs it. Reads names and facts, never contents; changes
// and mounts nothing.
//
// Only regular files, folders and symbolic links are told. A link is a file with facts of its own
// and isn't followed. Left out are skipped names, names that aren't UTF-8 and paths too long to
// open; the last two are told to the log once a scan, with their number. Generated folders are
// told, but neither they nor skipped folders are entered.
//
// Any thread; may take as long as a slow disk does.
#pragma once

#include "disk/DiskPlan.h"

#include <stop_token>

namespace corvelle::DiskPlan {

// Lists each of the folders, which are paths relative to the root ("" is the root). A folder is
// left out when it is gone or generated, lies in one that is skipped or generated or behind a
// symbolic link, or can't be read to its end. A stop that was asked for gives an empty map. The
// item at `leftOut`, a relative path, isn't told and not entered.
Scans scanFolders(const QString& root, std::span<const QString> folders, std::stop_token stop = {},
    const QString& leftOut = {});

// The same with all folders below the given ones, in which only the given folders themselves may
// have any name.
Scans scanTree(const QString& root, std::span<const QString> folders, std::stop_token stop = {},
    const QString& leftOut = {});

enum class NameRules { Apply, Ignore };

// The entry of one item, under the given relative path. None when it isn't there or is none of
// ours.
std::optional<Entry> entry(
    const QString& absolutePath, const QString& path, NameRules rules = NameRules::Apply);

// Whether the folder at this absolute path, whose last component is `name`, holds generated files.
bool isGeneratedFolder(QStringView name, const QString& absolutePath);

// Whether any component of the relative path, the last one included, is a generated folder.
bool isInsideGenerated(const QString& path, const QString& root);

} // namespace corvelle::DiskPlan
