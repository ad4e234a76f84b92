// Writes a zip archive into memory.
//
// A value, of one thread. An archive holds at most 65,535 entries, and sizes, offsets and names fit
// the format's 32 and 16 bits: callers see to it.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QSet>
#include <QString>

namespace corvelle {

class ZipWriter
{
public:
    // The time of all entries, written in its own time zone; none is the earliest that can be
    // written.
    explicit ZipWriter(const QDateTime& date);

    // Adds a file, and before it the folders of its path that aren't there yet.
    void add(const QString& name, const QByteArray& data);

    // The whole archive; nothing may be added behind it.
    QByteArray finish() const;

private:
    enum class Pack { Stored, Deflated };
    void write(const QByteArray& name, const QByteArray& data, Pack pack);

    QByteArray m_local, m_central;
    int m_count = 0;
    QSet<QString> m_folders;
    quint16 m_time = 0, m_date = 0; // as DOS writes them
};

} // namespace corvelle
