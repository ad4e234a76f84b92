#include "interface/theme/Icons.h"

#include "interface/theme/SvgPath.h"

#include <QMutex>
#include <QPainter>
#include <QPainterPath>

#include <array>
#include <map>
#include <tuple>

namespace corvelle {
namespace {

struct Outline
{
    const char* path;
    bool filled = false;
};

// In the order of Icon.
constexpr std::array<Outline, iconCount> outlines = {{
    // back
    {"M12.25 4.5 6.75 10l5.5 5.5"},
    // forward
    {"M7.75 4.5l5.5 5.5-5.5 5.5"},
    // chevronDown
    {"M5.5 7.75 10 12.25l4.5-4.5"},
    // chevronRight
    {"M7.75 5.5 12.25 10l-4.5 4.5"},
    // chevronUp
    {"M5.5 12.25 10 7.75l4.5 4.5"},
    // home
    {"M3.5 8.9 10 3.4l6.5 5.5v6.35a1.25 1.25 0 0 1-1.25 1.25H12v-4.75H8v4.75H4.75A1.25 1.25 0"
     " 0 1 3.5 15.25z"},
    // search
    {"M14.25 9a5.25 5.25 0 1 1-10.5 0 5.25 5.25 0 0 1 10.5 0zM12.9 12.9l3.85 3.85"},
    // page
    {"M4.75 4.25a1.5 1.5 0 0 1 1.5-1.5h5.25l3.75 3.75v9.25a1.5 1.5 0 0 1-1.5 1.5h-7.5a1.5 1.5"
     " 0 0 1-1.5-1.5zM11.25 2.9v2.6a1 1 0 0 0 1 1h2.85M7.75 10h4.5M7.75 13.25h3"},
    // folder
    {"M2.75 5.75a1.5 1.5 0 0 1 1.5-1.5h2.9a1.5 1.5 0 0 1 1.15.53l1.02 1.22h6.43a1.5 1.5 0 0 1"
     " 1.5 1.5v6.75a1.5 1.5 0 0 1-1.5 1.5H4.25a1.5 1.5 0 0 1-1.5-1.5z"},
    // globe
    {"M17.25 10a7.25 7.25 0 1 1-14.5 0 7.25 7.25 0 0 1 14.5 0zM2.9 10h14.2M10 2.8c2.05 1.95"
     " 3.1 4.35 3.1 7.2s-1.05 5.25-3.1 7.2c-2.05-1.95-3.1-4.35-3.1-7.2s1.05-5.25 3.1-7.2z"},
    // upload
    {"M10 12.25V3.5M6.5 6.75 10 3.25l3.5 3.5M3.25 12.5v2.75a1.5 1.5 0 0 0 1.5 1.5h10.5a1.5"
     " 1.5 0 0 0 1.5-1.5V12.5"},
    // download
    {"M10 3.25v8.75M6.5 8.75 10 12.25l3.5-3.5M3.25 12.75v2.5a1.5 1.5 0 0 0 1.5 1.5h10.5a1.5"
     " 1.5 0 0 0 1.5-1.5v-2.5"},
    // file
    {"M4.75 4.25a1.5 1.5 0 0 1 1.5-1.5h5.25l3.75 3.75v9.25a1.5 1.5 0 0 1-1.5 1.5h-7.5a1.5 1.5"
     " 0 0 1-1.5-1.5zM11.25 2.9v2.6a1 1 0 0 0 1 1h2.85"},
    // image
    {"M2.75 5.5a1.75 1.75 0 0 1 1.75-1.75h11a1.75 1.75 0 0 1 1.75 1.75v9a1.75 1.75 0 0 1-1.75"
     " 1.75h-11A1.75 1.75 0 0 1 2.75 14.5zM8.25 7.9a1.25 1.25 0 1 1-2.5 0 1.25 1.25 0 0 1 2.5"
     " 0zM3 14.4l3.7-3.3 2.8 2.4 3.25-3.4 4.3 4.1"},
    // feather
    {"M16.6 3.4C11 3.5 6.9 6 5.9 10.1c-.55 2.2.1 4 .1 4s1.8.6 3.95 0c4.1-1.1 6.55-5.2"
     " 6.65-10.7zM3.25 16.75l8-8M9.5 13.9l-.05-3.35"},
    // plus
    {"M10 4.25v11.5M4.25 10h11.5"},
    // minus
    {"M4.5 10h11"},
    // close
    {"M5.5 5.5l9 9M14.5 5.5l-9 9"},
    // more
    {"M5.6 10a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0zM11.15 10a1.15 1.15 0 1 1-2.3 0"
     " 1.15 1.15 0 0 1 2.3 0zM16.7 10a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0z",
        true},
    // check
    {"M4.5 10.5l3.6 3.6 7.4-8"},
    // checkCircle
    {"M17.25 10a7.25 7.25 0 1 1-14.5 0 7.25 7.25 0 0 1 14.5 0zM6.75 10.25l2.3 2.3 4.3-4.85"},
    // alert
    {"M17.25 10a7.25 7.25 0 1 1-14.5 0 7.25 7.25 0 0 1 14.5 0zM10 6.4v4.1M10 13.35v.05"},
    // trash
    {"M3.75 5.75h12.5M7.75 5.6V4.5A1.25 1.25 0 0 1 9 3.25h2a1.25 1.25 0 0 1 1.25 1.25v1.1M5.1"
     " 5.75l.65 9.6a1.5 1.5 0 0 0 1.5 1.4h5.5a1.5 1.5 0 0 0 1.5-1.4l.65-9.6M8.4 9l.15 4.5"
     "M11.6 9l-.15 4.5"},
    // undo
    {"M4 8h7.75a4.12 4.12 0 0 1 0 8.25H8.5M7.1 4.75 3.85 8l3.25 3.25"},
    // restore
    {"M3.9 10.9A6.4 6.4 0 1 0 5.4 5.6L3.6 7.4M3.5 3.75V7.5h3.75"},
    // copy
    {"M7.25 8.75a1.5 1.5 0 0 1 1.5-1.5h6.5a1.5 1.5 0 0 1 1.5 1.5v6.5a1.5 1.5 0 0 1-1.5"
     " 1.5h-6.5a1.5 1.5 0 0 1-1.5-1.5zM12.75 7V4.75a1.5 1.5 0 0 0-1.5-1.5h-6.5a1.5 1.5 0 0"
     " 0-1.5 1.5v6.5a1.5 1.5 0 0 0 1.5 1.5H7"},
    // duplicate
    {"M3.25 5.25a1.5 1.5 0 0 1 1.5-1.5h4.5a1.5 1.5 0 0 1 1.5 1.5v9.5a1.5 1.5 0 0 1-1.5"
     " 1.5h-4.5a1.5 1.5 0 0 1-1.5-1.5zM13.25 3.75h2a1.5 1.5 0 0 1 1.5 1.5v9.5a1.5 1.5 0 0"
     " 1-1.5 1.5h-2"},
    // beside
    {"M2.75 5.5A1.5 1.5 0 0 1 4.25 4h11.5a1.5 1.5 0 0 1 1.5 1.5v9a1.5 1.5 0 0 1-1.5 1.5H4.25"
     "a1.5 1.5 0 0 1-1.5-1.5zM11.25 4v12"},
    // open
    {"M8 4.25H5.25a1.5 1.5 0 0 0-1.5 1.5v9a1.5 1.5 0 0 0 1.5 1.5h9a1.5 1.5 0 0 0 1.5-1.5V12"
     "M11.75 3.75h4.5v4.5M16 4 9.25 10.75"},
    // pencil
    {"M12.6 4.4l3 3-8.5 8.5-3.6.6.6-3.6zM10.9 6.1l3 3"},
    // clock
    {"M17.25 10a7.25 7.25 0 1 1-14.5 0 7.25 7.25 0 0 1 14.5 0zM10 5.9v4.3l2.75 1.65"},
    // fan
    {"M3.25 8.5a1.25 1.25 0 0 1 1.25-1.25h6a1.25 1.25 0 0 1 1.25 1.25v7a1.25 1.25 0 0 1-1.25"
     " 1.25h-6a1.25 1.25 0 0 1-1.25-1.25zM6.75 5.25h5.75A1.25 1.25 0 0 1 13.75 6.5v7.25M9.75"
     " 3.25h5.75a1.25 1.25 0 0 1 1.25 1.25v7.25"},
    // text
    {"M4 5.25h12M4 10h12M4 14.75h7"},
    // listBullet
    {"M8 5.25h8.25M8 10h8.25M8 14.75h8.25M4.25 5.25v.01M4.25 10v.01M4.25 14.75v.01"},
    // listNumber
    {"M8.5 5.25h7.75M8.5 10h7.75M8.5 14.75h7.75M3.5 4.4l1.25-.65v3.5M3.4 13.2c.3-.75 2.1-.8"
     " 2.1.35 0 .85-2.1 1.6-2.1 2.7h2.2"},
    // todo
    {"M3 4.75a1 1 0 0 1 1-1h2.5a1 1 0 0 1 1 1v2.5a1 1 0 0 1-1 1H4a1 1 0 0 1-1-1zM3 14l1.5 1.5"
     " 3-3.25M10.5 6h6M10.5 14h6"},
    // h1
    {"M3.25 5v10M10.25 5v10M3.25 10h7M13.4 8.3 15.6 7v8"},
    // h2
    {"M3 5v10M9.5 5v10M3 10h6.5M12.5 9.1c.2-2.7 4.4-2.6 4.4.1 0 2-4.4 3.3-4.4 5.8h4.5"},
    // h3
    {"M3 5v10M9.5 5v10M3 10h6.5M12.6 8.3c.6-2 4.2-1.7 4.2.5 0 1.3-1.1 1.95-2.3 1.95 1.3 0"
     " 2.5.7 2.5 2.1 0 2.6-4 2.8-4.6.6"},
    // quote
    {"M4 4.75v10.5M7.75 6h8.5M7.75 10h8.5M7.75 14h5"},
    // code
    {"M6.75 6 2.9 10l3.85 4M13.25 6l3.85 4-3.85 4M11.2 4.5l-2.4 11"},
    // table
    {"M2.75 5.25a1.5 1.5 0 0 1 1.5-1.5h11.5a1.5 1.5 0 0 1 1.5 1.5v9.5a1.5 1.5 0 0 1-1.5"
     " 1.5H4.25a1.5 1.5 0 0 1-1.5-1.5zM2.9 8h14.2M2.9 12.1h14.2M8.25 8v8.1"},
    // divider
    {"M3.25 10h13.5"},
    // at
    {"M13.1 10a3.1 3.1 0 1 1-6.2 0 3.1 3.1 0 0 1 6.2 0zM13.1 6.9v3.9c0 2.6 4.15 2.4"
     " 4.15-.8A7.25 7.25 0 1 0 13.6 16.3"},
    // send
    {"M10 15.75V4.5M5.25 9.1 10 4.35l4.75 4.75"},
    // stop
    {"M5.75 7A1.25 1.25 0 0 1 7 5.75h6A1.25 1.25 0 0 1 14.25 7v6A1.25 1.25 0 0 1 13"
     " 14.25H7A1.25 1.25 0 0 1 5.75 13z",
        true},
    // cleanup
    {"M3.25 4.5A1.25 1.25 0 0 1 4.5 3.25h3A1.25 1.25 0 0 1 8.75 4.5v3A1.25 1.25 0 0 1 7.5"
     " 8.75h-3A1.25 1.25 0 0 1 3.25 7.5zM11.25 4.5a1.25 1.25 0 0 1 1.25-1.25h3a1.25 1.25 0 0"
     " 1 1.25 1.25v3a1.25 1.25 0 0 1-1.25 1.25h-3a1.25 1.25 0 0 1-1.25-1.25zM3.25 12.5a1.25"
     " 1.25 0 0 1 1.25-1.25h3a1.25 1.25 0 0 1 1.25 1.25v3a1.25 1.25 0 0 1-1.25 1.25h-3a1.25"
     " 1.25 0 0 1-1.25-1.25zM11.25 12.5a1.25 1.25 0 0 1 1.25-1.25h3a1.25 1.25 0 0 1 1.25"
     " 1.25v3a1.25 1.25 0 0 1-1.25 1.25h-3a1.25 1.25 0 0 1-1.25-1.25z"},
    // fold
    {"M8.25 3.75v4.5h-4.5M11.75 16.25v-4.5h4.5M8 8 3.5 3.5M12 12l4.5 4.5"},
    // expand
    {"M11.75 3.5h4.75v4.75M8.25 16.5H3.5v-4.75M16.25 3.75 11.5 8.5M3.75 16.25 8.5 11.5"},
    // grip
    {"M8.5 5a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0zM13.8 5a1.15 1.15 0 1 1-2.3 0 1.15"
     " 1.15 0 0 1 2.3 0zM8.5 10a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0zM13.8 10a1.15"
     " 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0zM8.5 15a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1"
     " 2.3 0zM13.8 15a1.15 1.15 0 1 1-2.3 0 1.15 1.15 0 0 1 2.3 0z",
        true},
    // drop
    {"M10 3.1c2.75 3.05 4.6 5.4 4.6 8.2a4.6 4.6 0 0 1-9.2 0c0-2.8 1.85-5.15 4.6-8.2z"},
    // link
    {"M8.4 11.6a3 3 0 0 0 4.25 0l2.75-2.75a3 3 0 0 0-4.25-4.25l-.9.9M11.6 8.4a3 3 0 0 0-4.25"
     " 0L4.6 11.15a3 3 0 0 0 4.25 4.25l.9-.9"},
    // spark
    {"M10 3.25v3M10 13.75v3M3.25 10h3M13.75 10h3M5.3 5.3l1.9 1.9M12.8 12.8l1.9 1.9M14.7"
     " 5.3l-1.9 1.9M7.2 12.8l-1.9 1.9"},
    // near
    {"M12.5 10a2.5 2.5 0 1 1-5 0 2.5 2.5 0 0 1 5 0zM5.2 5.4a6.6 6.6 0 0 0 0 9.2M14.8 5.4a6.6"
     " 6.6 0 0 1 0 9.2"},
    // help
    {"M17.25 10a7.25 7.25 0 1 1-14.5 0 7.25 7.25 0 0 1 14.5 0zM7.9 8c.2-2.6 4.3-2.5 4.3.1 0"
     " 1.7-2.2 1.75-2.2 3.3M10 13.9v.05"},
    // bold
    {"M6 4.5h4.5a2.75 2.75 0 0 1 0 5.5H6zM6 10h5.25a2.75 2.75 0 0 1 0 5.5H6z"},
    // italic
    {"M8.5 4.5h5M6.5 15.5h5M11.25 4.5l-2.5 11"},
    // strike
    {"M14 6.6c-.4-1.3-1.9-2.1-4-2.1-2.3 0-3.9 1-3.9 2.7 0 1 .6 1.7 1.6 2.1M3.5 10.5h13M6 13.4"
     "c.4 1.3 1.9 2.1 4 2.1 2.3 0 4-1 4-2.7 0-.5-.15-.95-.4-1.3"},
    // underline
    {"M5.75 4v5.25a4.25 4.25 0 0 0 8.5 0V4M4.75 16.25h10.5"},
}};

constexpr double grid = 20;

const QPainterPath& outlinePath(Icon icon)
{
    static const std::array<QPainterPath, iconCount> paths = [] {
        std::array<QPainterPath, iconCount> all;
        for (std::size_t i = 0; i < all.size(); ++i)
            all[i] = svgPath(outlines[i].path);
        return all;
    }();
    return paths[static_cast<std::size_t>(icon)];
}

constexpr std::array<const char*, iconCount> iconNames = {"back", "forward", "chevronDown",
    "chevronRight", "chevronUp", "home", "search", "page", "folder", "globe", "upload", "download",
    "file", "image", "feather", "plus", "minus", "close", "more", "check", "checkCircle", "alert",
    "trash", "undo", "restore", "copy", "duplicate", "beside", "open", "pencil", "clock", "fan",
    "text", "listBullet", "listNumber", "todo", "h1", "h2", "h3", "quote", "code", "table",
    "divider", "at", "send", "stop", "cleanup", "fold", "expand", "grip", "drop", "link", "spark",
    "near", "help", "bold", "italic", "strike", "underline"};

} // namespace

void drawIcon(QPainter& painter, Icon icon, const QRectF& square, const QColor& color)
{
    const double scale = square.width() / grid;
    const double stroke = square.width() < 17.5 ? 1.2 : 1.5;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(square.topLeft());
    painter.scale(scale, scale);
    if (outlines[static_cast<std::size_t>(icon)].filled)
        painter.fillPath(outlinePath(icon), color);
    else
        painter.strokePath(outlinePath(icon),
            QPen(color, stroke / scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.restore();
}

QImage iconImage(Icon icon, int size, const QColor& color, double devicePixelRatio)
{
    using Key = std::tuple<int, int, QRgb, int>;
    // Pictures are asked for by painting code on several threads.
    static QMutex mutex;
    static std::map<Key, QImage> made;

    const int pixels = qRound(size * devicePixelRatio);
    const Key key{static_cast<int>(icon), size, color.rgba(), pixels};
    const QMutexLocker lock(&mutex);
    QImage& image = made[key];
    if (image.isNull()) {
        image = QImage(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(devicePixelRatio);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        drawIcon(painter, icon, QRectF(0, 0, size, size), color);
    }
    return image;
}

Icon kindIcon(NodeKind kind, bool isPicture)
{
    switch (kind) {
    case NodeKind::Folder:
        return Icon::Folder;
    case NodeKind::Page:
        return Icon::Page;
    case NodeKind::Link:
        return Icon::Globe;
    case NodeKind::File:
        break;
    }
    return isPicture ? Icon::Image : Icon::File;
}

QString iconName(Icon icon)
{
    return QString::fromLatin1(iconNames[static_cast<size_t>(icon)]);
}

} // namespace corvelle
