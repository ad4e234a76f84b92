#include "platform/PictureFacts.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImageReader>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvelle {

namespace {

constexpr int greatestSide = 1 << 16; // pixels; more is no picture anybody laid on a canvas

// Opens a regular file and nothing else: a link is never followed, and a pipe would keep us waiting
// for its writer.
bool openFile(QFile& file, const QString& path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    struct stat facts = {};
    if (::fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode) &&
        file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    ::close(descriptor);
    return false;
}

bool turnsSideways(const QImageReader& reader)
{
    return reader.transformation() & QImageIOHandler::TransformationRotate90;
}

std::optional<QSize> sizeOf(QIODevice& device)
{
    QImageReader reader(&device);
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > greatestSide || size.height() > greatestSide)
        return std::nullopt;
    return turnsSideways(reader) ? size.transposed() : size;
}

QImage scaled(QIODevice& device, QSize within)
{
    QImageReader reader(&device);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.width() > greatestSide || size.height() > greatestSide)
        return {};
    if (!size.isEmpty()) {
        // The reader scales before it turns, so the target is told in unturned terms.
        const QSize box = turnsSideways(reader) ? within.transposed() : within;
        const QSize fitted = size.scaled(box, Qt::KeepAspectRatio);
        if (fitted.width() < size.width())
            reader.setScaledSize(fitted.expandedTo(QSize(1, 1)));
    }
    QImage picture = reader.read();
    if (picture.isNull())
        return {};
    if (picture.width() > within.width() || picture.height() > within.height())
        picture = picture.scaled(within, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (picture.colorSpace().isValid() && picture.colorSpace() != QColorSpace(QColorSpace::SRgb))
        picture.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    return picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

std::optional<QSize> pictureSize(const QString& path)
{
    QFile file;
    return openFile(file, path) ? sizeOf(file) : std::nullopt;
}

std::optional<QSize> pictureSize(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    return buffer.open(QIODevice::ReadOnly) ? sizeOf(buffer) : std::nullopt;
}

QImage scaledPicture(const QString& path, QSize within)
{
    QFile file;
    return openFile(file, path) ? scaled(file, within) : QImage();
}

QImage scaledPicture(const QByteArray& bytes, QSize within)
{
    QBuffer buffer;
    buffer.setData(bytes);
    return buffer.open(QIODevice::ReadOnly) ? scaled(buffer, within) : QImage();
}

} // namespace corvelle
