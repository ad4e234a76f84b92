// The records of a library's tree, as they stand in the tables `nodes` and `spaces`.
#pragma once

#include "base/Clock.h"
#include "base/NodeKind.h"

#include <QRectF>
#include <QSizeF>
#include <QString>

#include <limits>
#include <optional>

namespace corvelle {

// One item. A null text stands for an absent optional one.
struct Node
{
    QString id; // lower-case UUID, never reused
    QString spaceID;
    QString parentID; // null at the top of the space
    NodeKind kind = NodeKind::File;
    NodeColor color = NodeColor::Gray;
    QString title;
    QString icon;
    double x = 0, y = 0; // the card's centre on the parent's canvas
    QString position;    // sort key among siblings
    QString path; // relative to the root; absolute for an item linked from outside; null for pages
                  // and websites
    double createdAt = distantPast;
    double updatedAt = distantPast;
    std::optional<double> deletedAt; // set while in the Trash
    QString mime;
    std::optional<qint64> byteSize;
    std::optional<int> width, height; // of a picture, in pixels
    QString url;

    bool isLive() const { return !deletedAt; }
    bool isLinked() const { return path.startsWith(u'/'); }
    bool isPicture() const { return kind == NodeKind::File && mime.startsWith(u"image/"); }

    bool operator==(const Node&) const = default;
};

// The size of its card, in canvas points.
QSizeF cardSize(const Node& node);
QRectF cardRect(const Node& node);

struct Space
{
    enum class Mode { Local, Synced, Shared }; // only Local is ever written

    QString id;
    QString slug;
    QString name;
    Mode mode = Mode::Local;
    QString folder; // relative to the root

    bool operator==(const Space&) const = default;
};

// How the disk last saw a node's file: the file identifier and the modification time, as stored.
struct SeenFile
{
    std::optional<quint64> fileID;
    std::optional<double> modified; // seconds since 1970; none for a folder

    bool operator==(const SeenFile&) const = default;
};

} // namespace corvelle
