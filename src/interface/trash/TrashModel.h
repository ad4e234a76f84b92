// What the Trash lists: the things that somebody moved there, without what lies in them.
#pragma once

#include "library/NodeTree.h"

#include <QDateTime>

#include <vector>

namespace corvelle {

struct TrashRow
{
    QString id;
    NodeKind kind = NodeKind::File;
    NodeColor color = NodeColor::Gray;
    bool picture = false;
    QString title;
    QString about;   // "Picture · 3.1 MB"
    QString wasIn;   // the folder's title
    QString movedAt; // "Today, 14:06", "Thu 19 Nov"
    int daysLeft = 0;

    bool operator==(const TrashRow&) const = default;
};

inline constexpr int daysInTrash = 30;
inline constexpr int fewDaysLeft = 5;

// The newest first. `now` says which day is today, in its own time zone.
std::vector<TrashRow> trashRows(const NodeTree& tree, const QDateTime& now);

} // namespace corvelle
