#include "platform/MountTable.h"

#include "base/Text.h"

#include <QFile>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

const char tablePath[] = "/proc/self/mountinfo";

// Space, tab, newline and backslash are written as three octal digits.
QByteArray withoutEscapes(const QByteArray& text)
{
    const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
    QByteArray plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && isOctal(text[i + 1]) &&
            isOctal(text[i + 2]) && isOctal(text[i + 3])) {
            plain += static_cast<char>(text.mid(i + 1, 3).toInt(nullptr, 8));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

} // namespace

Mounts mountsFrom(const QByteArray& table)
{
    Mounts mounts;
    for (const QByteArray& line : table.split('\n')) {
        const QByteArrayList fields = line.split(' ');
        if (fields.size() < 5 || !fields[4].startsWith('/'))
            continue;
        bool isNumber = false;
        Mount mount{fields[0].toULongLong(&isNumber), false};
        // Any number of optional fields end with a hyphen; the file system's kind follows.
        const qsizetype end = fields.indexOf("-", 6);
        mount.isTrigger = end >= 0 && end + 1 < fields.size() && fields[end + 1] == "autofs";
        if (isNumber)
            mounts.insert(QFile::decodeName(withoutEscapes(fields[4])), mount);
    }
    return mounts;
}

Mounts readMounts()
{
    QFile table{QString::fromLatin1(tablePath)};
    return table.open(QIODevice::ReadOnly) ? mountsFrom(table.readAll()) : Mounts();
}

QSet<QString> differingMounts(const Mounts& before, const Mounts& after)
{
    QSet<QString> differing;
    for (auto mount = before.cbegin(); mount != before.cend(); ++mount)
        if (after.value(mount.key()) != mount.value())
            differing.insert(mount.key());
    for (auto mount = after.cbegin(); mount != after.cend(); ++mount)
        if (!before.contains(mount.key()))
            differing.insert(mount.key());
    return differing;
}

QString mountOf(const QString& path, const Mounts& mounts)
{
    for (QString above = path; !above.isEmpty(); above = parentPath(above))
        if (mounts.contains(above))
            return above;
    return u"/"_s;
}

bool wouldMount(const QString& path, const Mounts& mounts)
{
    return mounts.value(mountOf(path, mounts)).isTrigger;
}

MountWatcher::MountWatcher(QObject* parent)
    : QObject(parent)
    , m_table(::open(tablePath, O_RDONLY | O_CLOEXEC))
{
    if (m_table < 0)
        return;
    // The kernel calls a changed table an exceptional condition of the file.
    m_notifier = std::make_unique<QSocketNotifier>(m_table, QSocketNotifier::Exception);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &MountWatcher::changed);
}

MountWatcher::~MountWatcher()
{
    m_notifier.reset();
    if (m_table >= 0)
        ::close(m_table);
}

} // namespace corvelle
