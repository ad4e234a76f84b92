// Which elements of a new list stood in an old one.
#pragma once

#include <QString>

#include <vector>

namespace corvelle {

// For each new element the index of the old one that it is, or -1; indices ascend. The longest
// common subsequence where the lists are small enough, a bounded diff (Myers) above that, and equal
// offsets where most has changed.
std::vector<qsizetype> alignment(const std::vector<int>& old, const std::vector<int>& fresh);

// The same of any texts.
std::vector<qsizetype> alignment(
    const std::vector<QByteArray>& old, const std::vector<QByteArray>& fresh);

} // namespace corvelle
