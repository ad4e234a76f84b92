#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

#include <optional>

namespace corvelle {

// The size of a picture in pixels as it is shown, its orientation applied. Reads the header alone,
// of a regular file only: links aren't followed. Any thread.
std::optional<QSize> pictureSize(const QString& path);
std::optional<QSize> pictureSize(const QByteArray& bytes);

// The picture scaled to fit `within` (never enlarged), upright and in sRGB; null when it can't be
// read. Links aren't followed. Memory is bounded by the reader's allocation limit. Any thread.
QImage scaledPicture(const QString& path, QSize within);
QImage scaledPicture(const QByteArray& bytes, QSize within);

} // namespace corvelle
