// The disks that are mounted, as /proc/self/mountinfo tells them.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace corvelle {

// Mount point to the number of what is mounted there last. Any thread; asks no disk.
using Mounts = QHash<QString, quint64>;

// Reads the table's text: proc_pid_mountinfo(5). Lines that aren't as told are left out.
Mounts mountsFrom(const QByteArray& table);
Mounts readMounts();

// Mount points where another disk is mounted in one than in the other.
QSet<QString> differingMounts(const Mounts& before, const Mounts& after);

// The mount point that a path lies on.
QString mountOf(const QString& path, const Mounts& mounts);

// Tells when a disk came or went. On the main thread; costs nothing in between.
class MountWatcher : public QObject
{
    Q_OBJECT

public:
    explicit MountWatcher(QObject* parent = nullptr);
    ~MountWatcher() override;

signals:
    void changed();

private:
    int m_table = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace corvelle
