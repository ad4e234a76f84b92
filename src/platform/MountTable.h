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

// What is mounted at a place.
struct Mount
{
    quint64 number = 0; // another one each time
    // An automounter stands there: the first who goes in waits until it has mounted a disk.
    bool isTrigger = false;

    bool operator==(const Mount&) const = default;
};

// By mount point, what was mounted there last. Any thread; asks no disk.
using Mounts = QHash<QString, Mount>;

// Reads the table's text: proc_pid_mountinfo(5). Lines that aren't as told are left out.
Mounts mountsFrom(const QByteArray& table);
Mounts readMounts();

// Mount points where another disk is mounted in one than in the other.
QSet<QString> differingMounts(const Mounts& before, const Mounts& after);

// The mount point that a path lies on.
QString mountOf(const QString& path, const Mounts& mounts);

// Whether looking at the path would have a disk mounted that isn't mounted now.
bool wouldMount(const QString& path, const Mounts& mounts);

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
