// A zip archive (PKWARE's APPNOTE.TXT), read from its bytes or its file and never unpacked whole.
//
// A value: copies share the bytes, and any thread may read. A damaged archive has fewer entries,
// one that can't be read has none. Names are keys and never paths. Zip64 records, encryption and
// checksums aren't looked at; the central directory is believed, and what it claims is checked
// before it sizes anything.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace corvelle {

// Gives bytes piece by piece: how many were written to `into`, 0 at the end, -1 when they can't be
// had.
using ByteSource = std::function<qsizetype(char* into, qsizetype most)>;

class ZipArchive
{
public:
    struct Entry
    {
        int method = 0;
        qint64 compressedSize = 0, size = 0; // bytes, as the directory claims them
        qint64 headerOffset = 0;
    };

    static constexpr qint64 mostEntryBytes = 256LL << 20;    // of one entry that is read whole
    static constexpr qint64 mostInflatedBytes = 512LL << 20; // of all reading, for one open archive
    static constexpr qint64 mostEntries = 200'000;

    ZipArchive()
        : ZipArchive(QByteArray())
    {}
    explicit ZipArchive(QByteArray bytes);
    // A large file is mapped. One that can't be read gives an archive without entries.
    static ZipArchive ofFile(const QString& path);

    // In the order of code points.
    QStringList names() const;
    // Also by a name in another case, when the very name isn't there.
    std::optional<Entry> entry(const QString& name) const;

    // The entry's first `limit` bytes, or all. None when it isn't there, is damaged or too large.
    std::optional<QByteArray> read(
        const QString& name, std::optional<qint64> limit = std::nullopt) const;

    // The whole entry, inflated as it is asked for; null where read() would give none but for the
    // size. The source outlives the archive and belongs to one thread.
    ByteSource source(const QString& name) const;

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
};

} // namespace corvelle
