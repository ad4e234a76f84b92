#include "documents/ZipArchive.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace corvelle {

namespace {

constexpr quint32 localSignature = 0x04034B50;
constexpr quint32 centralSignature = 0x02014B50;
constexpr quint32 endSignature = 0x06054B50;
constexpr qint64 localSize = 30, centralSize = 46, endSize = 22;
constexpr qint64 mostCommentBytes = 65'535;
constexpr qint64 mostNameBytes = 16LL << 20; // of all names together
constexpr qint64 mappedFrom = 64LL << 20;
constexpr int methodStored = 0, methodDeflated = 8;
constexpr qint64 mostExpansion = 1032; // deflate can't do more

template<class T>
T numberAt(const QByteArray& bytes, qint64 at)
{
    return qFromLittleEndian<T>(bytes.constData() + at);
}

// The beginning of an entry's data; none when its header isn't there or its data isn't whole.
std::optional<qint64> dataOffset(const QByteArray& bytes, const ZipArchive::Entry& entry)
{
    const qint64 header = entry.headerOffset;
    if (header + localSize > bytes.size() || numberAt<quint32>(bytes, header) != localSignature)
        return std::nullopt;
    const qint64 data = header + localSize + numberAt<quint16>(bytes, header + 26) +
                        numberAt<quint16>(bytes, header + 28);
    if (data + entry.compressedSize > bytes.size())
        return std::nullopt;
    return data;
}

qint64 endRecord(const QByteArray& bytes)
{
    const qint64 last = bytes.size() - endSize;
    for (qint64 at = last; at >= std::max<qint64>(0, last - mostCommentBytes); --at)
        if (numberAt<quint32>(bytes, at) == endSignature)
            return at;
    return -1;
}

// Raw deflate. Owns zlib's state.
class Inflater
{
public:
    explicit Inflater(QByteArrayView from)
    {
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(from.data()));
        m_stream.avail_in = static_cast<uInt>(from.size());
        m_isOpen = inflateInit2(&m_stream, -MAX_WBITS) == Z_OK;
    }
    ~Inflater()
    {
        if (m_isOpen)
            inflateEnd(&m_stream);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    // Fewer than `most` at the end and where the data is broken.
    qsizetype read(char* into, qsizetype most)
    {
        if (!m_isOpen)
            return 0;
        m_stream.next_out = reinterpret_cast<Bytef*>(into);
        m_stream.avail_out = static_cast<uInt>(most);
        while (m_stream.avail_out > 0 && inflate(&m_stream, Z_SYNC_FLUSH) == Z_OK) {
        }
        return most - static_cast<qsizetype>(m_stream.avail_out);
    }

private:
    z_stream m_stream = {};
    bool m_isOpen = false;
};

} // namespace

struct ZipArchive::Shared
{
    // Fixed after construction.
    QByteArray bytes;
    std::unique_ptr<QFile> file; // whose mapping the bytes are
    QHash<QString, Entry> entries;
    // Any thread.
    std::once_flag foldedOnce;
    QHash<QString, QString> folded; // a name without case to the first name in code order
    std::atomic<qint64> inflated = 0;

    void readDirectory();
    std::optional<Entry> find(const QString& name);
    // Takes so much of what one open archive may inflate.
    bool spend(qint64 count)
    {
        return inflated.fetch_add(count, std::memory_order_relaxed) + count <= mostInflatedBytes;
    }
};

void ZipArchive::Shared::readDirectory()
{
    const qint64 end = endRecord(bytes);
    if (end < 0)
        return;
    qint64 at = numberAt<quint32>(bytes, end + 16);
    qint64 nameBytes = 0;
    while (at + centralSize <= bytes.size() && numberAt<quint32>(bytes, at) == centralSignature) {
        const qint64 nameSize = numberAt<quint16>(bytes, at + 28);
        nameBytes += nameSize;
        if (at + centralSize + nameSize > bytes.size() || nameBytes > mostNameBytes ||
            entries.size() >= mostEntries)
            return;
        Entry entry;
        entry.method = numberAt<quint16>(bytes, at + 10);
        entry.compressedSize = numberAt<quint32>(bytes, at + 20);
        entry.size = numberAt<quint32>(bytes, at + 24);
        entry.headerOffset = numberAt<quint32>(bytes, at + 42);
        entries.insert(
            QString::fromUtf8(QByteArrayView(bytes).sliced(at + centralSize, nameSize)), entry);
        at += centralSize + nameSize + numberAt<quint16>(bytes, at + 30) +
              numberAt<quint16>(bytes, at + 32);
    }
}

std::optional<ZipArchive::Entry> ZipArchive::Shared::find(const QString& name)
{
    if (const auto found = entries.constFind(name); found != entries.cend())
        return *found;
    std::call_once(foldedOnce, [this] {
        for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
            QString& first = folded[it.key().toCaseFolded()];
            if (first.isNull() || it.key() < first)
                first = it.key();
        }
    });
    if (const auto found = folded.constFind(name.toCaseFolded()); found != folded.cend())
        return entries.value(*found);
    return std::nullopt;
}

ZipArchive::ZipArchive(QByteArray bytes)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->bytes = std::move(bytes);
    m_shared->readDirectory();
}

ZipArchive ZipArchive::ofFile(const QString& path)
{
    // Opening anything else than a file may wait for ever.
    auto file = std::make_unique<QFile>(path);
    if (!QFileInfo(path).isFile() || !file->open(QIODevice::ReadOnly))
        return {};
    if (file->size() <= mappedFrom)
        return ZipArchive(file->read(mappedFrom));
    const uchar* mapped = file->map(0, file->size());
    if (!mapped)
        return {};
    ZipArchive archive(
        QByteArray::fromRawData(reinterpret_cast<const char*>(mapped), file->size()));
    archive.m_shared->file = std::move(file);
    return archive;
}

QStringList ZipArchive::names() const
{
    QStringList names = m_shared->entries.keys();
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<ZipArchive::Entry> ZipArchive::entry(const QString& name) const
{
    return m_shared->find(name);
}

std::optional<QByteArray> ZipArchive::read(const QString& name, std::optional<qint64> limit) const
{
    const auto entry = m_shared->find(name);
    if (!entry)
        return std::nullopt;
    const auto data = dataOffset(m_shared->bytes, *entry);
    if (!data || (entry->method != methodStored && entry->method != methodDeflated))
        return std::nullopt;

    qint64 wanted = entry->method == methodStored ? entry->compressedSize : entry->size;
    if (entry->method == methodDeflated && entry->size / mostExpansion > entry->compressedSize)
        return std::nullopt;
    wanted = std::max<qint64>(0, std::min(wanted, limit.value_or(wanted)));
    if (wanted > mostEntryBytes || !m_shared->spend(wanted))
        return std::nullopt;
    if (entry->method == methodStored)
        return QByteArray(m_shared->bytes.constData() + *data, wanted);
    if (wanted == 0)
        return QByteArray("");
    QByteArray result(wanted, Qt::Uninitialized);
    Inflater inflater(QByteArrayView(m_shared->bytes).sliced(*data, entry->compressedSize));
    if (inflater.read(result.data(), wanted) != wanted)
        return std::nullopt;
    return result;
}

ByteSource ZipArchive::source(const QString& name) const
{
    const auto entry = m_shared->find(name);
    if (!entry)
        return {};
    const auto data = dataOffset(m_shared->bytes, *entry);
    if (!data)
        return {};
    const QByteArrayView packed =
        QByteArrayView(m_shared->bytes).sliced(*data, entry->compressedSize);

    if (entry->method == methodStored)
        return [shared = m_shared, rest = packed](char* into, qsizetype most) mutable -> qsizetype {
            const qsizetype count = std::min(most, rest.size());
            if (!shared->spend(count))
                return -1;
            std::copy_n(rest.data(), count, into);
            rest = rest.sliced(count);
            return count;
        };
    if (entry->method != methodDeflated || entry->size / mostExpansion > entry->compressedSize)
        return {};
    return [shared = m_shared, inflater = std::make_shared<Inflater>(packed), left = entry->size](
               char* into, qsizetype most) mutable -> qsizetype {
        const qsizetype wanted = std::min<qint64>(most, left);
        if (wanted == 0)
            return 0;
        if (!shared->spend(wanted) || inflater->read(into, wanted) != wanted)
            return -1;
        left -= wanted;
        return wanted;
    };
}

} // namespace corvelle
