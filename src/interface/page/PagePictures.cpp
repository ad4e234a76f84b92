#include "interface/page/PagePictures.h"

#include "platform/PictureFacts.h"

#include <QMimeDatabase>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int mostKiB = 96 << 10;
constexpr int mostPixels = 1600; // of a picture's width; more shows nothing more on a page
constexpr int tallest = 1 << 13;
constexpr int checkMs = 5'000;
constexpr qint64 unusedMs = 120'000;
constexpr size_t keptPictures = 32;
constexpr qsizetype keptPictureBytes = 64 << 20;

// Of a "data:" address in base64.
QByteArray bytesOf(QStringView src)
{
    const qsizetype comma = src.indexOf(u',');
    if (comma < 0 || !src.first(comma).endsWith(u";base64", Qt::CaseInsensitive))
        return {};
    return QByteArray::fromBase64(src.mid(comma + 1).toLatin1());
}

PictureData dataOf(const QByteArray& bytes)
{
    PictureData data;
    data.bytes = bytes;
    data.key = QString::number(data.bytes.size()) + u'@' + QString::number(qHash(data.bytes));
    if (!data.bytes.isEmpty())
        data.size = pictureSize(data.bytes);
    return data;
}

} // namespace

PagePictures::PagePictures(QObject* parent)
    : QObject(parent)
    , m_entries(mostKiB)
    , m_queue(u"corvelle.page-pictures"_s)
{
    m_check.setInterval(checkMs);
    connect(&m_check, &QTimer::timeout, this, &PagePictures::checkUse);
}

PagePictures::~PagePictures() = default;

PagePictures::Found PagePictures::find(const BlockAttachment& picture)
{
    for (const auto& [node, found] : m_found)
        if (node.isSharedWith(picture.node) || node == picture.node)
            return found;
    Found found{pictureOf(nodeFromJson(picture.node)), {}};
    if (found.told.src.startsWith(u"data:", Qt::CaseInsensitive)) {
        found.data = dataOf(bytesOf(found.told.src));
        found.told.src.clear();
    } else if (const QByteArray bytes = m_source ? m_source(found.told.src) : QByteArray();
               !bytes.isEmpty()) {
        found.data = dataOf(bytes);
        found.told.src.clear();
    }
    keep(picture.node, found);
    return found;
}

void PagePictures::putInBytes(PageNodes& nodes) const
{
    if (!m_source)
        return;
    for (PageNode& node : nodes) {
        putInBytes(node.content);
        if (node.type != PageNode::Type::Image)
            continue;
        PagePicture picture = pictureOf(node);
        const QByteArray bytes = m_source(picture.src);
        if (bytes.isEmpty())
            continue;
        picture.src = u"data:%1;base64,%2"_s.arg(
            QMimeDatabase().mimeTypeForData(bytes).name(), QString::fromLatin1(bytes.toBase64()));
        node = pictureNode(picture);
    }
}

void PagePictures::keep(const QByteArray& node, const Found& found)
{
    m_found.emplace_front(node, found);
    qsizetype bytes = 0;
    size_t kept = 0;
    for (const auto& [each, read] : m_found) {
        bytes += each.size() + read.data.bytes.size();
        if (kept > 0 && bytes > keptPictureBytes)
            break;
        ++kept;
    }
    m_found.resize(std::min(kept, keptPictures));
}

QImage PagePictures::ready(const PictureData& picture, int width)
{
    m_lastUse.start();
    if (!m_check.isActive())
        m_check.start();
    const int wanted =
        std::clamp(std::min(width, picture.size ? picture.size->width() : 0), 1, mostPixels);
    const Entry* entry = m_entries.object(picture.key);
    if (entry && entry->width * 5 >= wanted * 4)
        return entry->image;
    if (!m_decoding.contains(picture.key)) {
        m_decoding.insert(picture.key);
        m_queue.run(
            [picture, wanted] { return scaledPicture(picture.bytes, QSize(wanted, tallest)); },
            this,
            [this, key = picture.key, wanted](QImage image) {
                m_decoding.remove(key);
                const auto cost = static_cast<int>(image.sizeInBytes() / 1024) + 1;
                m_entries.insert(key, new Entry{std::move(image), wanted}, cost);
                emit decoded(key);
            });
    }
    return entry ? entry->image : QImage();
}

void PagePictures::checkUse()
{
    if (m_lastUse.elapsed() < unusedMs)
        return;
    m_entries.clear();
    m_found.clear();
    m_check.stop();
}

} // namespace corvelle
