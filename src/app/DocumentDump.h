// `--docx-dump FILE`: a document's blocks as lines of text.
#pragma once

#include <QStringList>

#include <optional>

namespace corvelle {

// Prints to the standard output and gives the exit status; none when the arguments don't ask for
// it. A Word file that can't be read is told on the standard error, with 1. Starts nothing of the
// toolkit.
std::optional<int> dumpAsked(const QStringList& arguments);

} // namespace corvelle
