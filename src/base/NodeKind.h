// The words by which kinds and colours of nodes are stored.
#pragma once

#include <QAnyStringView>
#include <QString>

#include <array>

namespace corvelle {

enum class NodeKind : unsigned char { Folder, File, Page, Link };

enum class NodeColor : unsigned char {
    Gray,
    Brown,
    Orange,
    Yellow,
    Green,
    Blue,
    Purple,
    Pink,
    Red
};

inline constexpr std::array<NodeColor, 9> allNodeColors = {NodeColor::Gray, NodeColor::Brown,
    NodeColor::Orange, NodeColor::Yellow, NodeColor::Green, NodeColor::Blue, NodeColor::Purple,
    NodeColor::Pink, NodeColor::Red};

QString word(NodeKind kind);
QString word(NodeColor color);

// An unknown word reads as a file, and as gray.
NodeKind nodeKind(QAnyStringView word);
NodeColor nodeColor(QAnyStringView word);

} // namespace corvelle
