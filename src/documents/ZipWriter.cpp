#include "documents/ZipWriter.h"

#include <QtEndian>

#include <zlib.h>

#include <algorithm>

namespace corvelle {

namespace {

constexpr quint16 utf8Names = 0x0800;
constexpr quint32 folderAttribute = 0x10;
constexpr qsizetype deflateRoom = 1024;

template<class T>
void append(QByteArray& to, T number)
{
    number = qToLittleEndian(number);
    to.append(reinterpret_cast<const char*>(&number), sizeof number);
}

quint16 bits16(qint64 number)
{
    return static_cast<quint16>(number);
}

quint32 bits32(qint64 number)
{
    return static_cast<quint32>(number);
}

// Raw deflate; empty when it fails.
QByteArray deflated(const QByteArray& data)
{
    z_stream stream = {};
    if (deflateInit2(
            &stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return {};
    QByteArray packed(data.size() + deflateRoom, Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.constData()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool isWhole = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.truncate(isWhole ? static_cast<qsizetype>(stream.total_out) : 0);
    deflateEnd(&stream);
    return packed;
}

} // namespace

ZipWriter::ZipWriter(const QDateTime& date)
{
    const QTime time = date.time();
    const QDate day = date.date();
    m_time =
        time.isValid() ? bits16(time.hour() * 2048 + time.minute() * 32 + time.second() / 2) : 0;
    m_date = bits16(std::clamp(day.year() - 1980, 0, 127) * 512 + std::max(day.month(), 1) * 32 +
                    std::max(day.day(), 1));
}

void ZipWriter::add(const QString& name, const QByteArray& data)
{
    for (qsizetype slash = name.indexOf(u'/'); slash >= 0; slash = name.indexOf(u'/', slash + 1)) {
        const QString folder = name.first(slash + 1);
        if (m_folders.contains(folder))
            continue;
        m_folders.insert(folder);
        write(folder.toUtf8(), {}, Pack::Stored);
    }
    write(name.toUtf8(), data, Pack::Deflated);
}

void ZipWriter::write(const QByteArray& name, const QByteArray& data, Pack pack)
{
    const QByteArray packed = pack == Pack::Deflated ? deflated(data) : QByteArray();
    const QByteArray& payload = packed.isEmpty() ? data : packed;
    const quint16 method = packed.isEmpty() ? 0 : 8;
    const auto crc = bits32(static_cast<qint64>(
        crc32_z(0, reinterpret_cast<const Bytef*>(data.constData()), size_t(data.size()))));
    const quint32 offset = bits32(m_local.size());

    // From the flags to the extra field's length, the two headers agree.
    QByteArray common;
    append(common, utf8Names);
    append(common, method);
    append(common, m_time);
    append(common, m_date);
    append(common, data.isEmpty() ? 0U : crc);
    append(common, bits32(payload.size()));
    append(common, bits32(data.size()));
    append(common, bits16(name.size()));
    append<quint16>(common, 0);

    append<quint32>(m_local, 0x04034B50);
    append<quint16>(m_local, 10); // the version that it takes
    m_local += common + name + payload;

    append<quint32>(m_central, 0x02014B50);
    append<quint16>(m_central, 20); // the version that wrote it
    append<quint16>(m_central, 10);
    m_central += common;
    append<quint16>(m_central, 0); // comment
    append<quint16>(m_central, 0); // disk
    append<quint16>(m_central, 0); // internal attributes
    append<quint32>(m_central, name.endsWith('/') ? folderAttribute : 0);
    append(m_central, offset);
    m_central += name;
    ++m_count;
}

QByteArray ZipWriter::finish() const
{
    QByteArray end;
    append<quint32>(end, 0x06054B50);
    append<quint32>(end, 0); // disks
    append(end, bits16(m_count));
    append(end, bits16(m_count));
    append(end, bits32(m_central.size()));
    append(end, bits32(m_local.size()));
    append<quint16>(end, 0); // comment
    return m_local + m_central + end;
}

} // namespace corvelle
