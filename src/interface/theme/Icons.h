// The signs of the interface: outlines on a 20-unit grid, drawn in any colour and size. Any thread.
#pragma once

#include "base/NodeKind.h"

#include <QColor>
#include <QImage>
#include <QString>

class QPainter;
class QRectF;

namespace corvelle {

enum class Icon : unsigned char {
    Back,
    Forward,
    ChevronDown,
    ChevronRight,
    ChevronUp,
    Home,
    Search,
    Page,
    Folder,
    Globe,
    Upload,
    Download,
    File,
    Image,
    Feather,
    Plus,
    Minus,
    Close,
    More,
    Check,
    CheckCircle,
    Alert,
    Trash,
    Undo,
    Restore,
    Copy,
    Duplicate,
    Beside,
    Open,
    Pencil,
    Clock,
    Fan,
    Text,
    ListBullet,
    ListNumber,
    Todo,
    H1,
    H2,
    H3,
    Quote,
    Code,
    Table,
    Divider,
    At,
    Send,
    Stop,
    Cleanup,
    Fold,
    Expand,
    Grip,
    Drop,
    Link,
    Spark,
    Near,
    Help,
    Bold,
    Italic,
    Strike,
    Underline
};
inline constexpr int iconCount = static_cast<int>(Icon::Underline) + 1;

// What stands for an item of a kind.
Icon kindIcon(NodeKind kind, bool isPicture);

// The sign's name, for scripts: "chevronDown".
QString iconName(Icon icon);

// Fills the square. The stroke stays 1.5 px from 18 px on and is 1.2 below.
void drawIcon(QPainter& painter, Icon icon, const QRectF& square, const QColor& color);

// The same as a picture of size x size logical pixels; drawn once and kept.
QImage iconImage(Icon icon, int size, const QColor& color, double devicePixelRatio);

} // namespace corvelle
