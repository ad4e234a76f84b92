// Small messages between the programs of one person: datagrams between sockets in a private folder.
//
// A message never reaches its sender. Delivery is immediate and best-effort: a full or dead
// receiver loses it. Main thread only.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class QSocketNotifier;

namespace corvelle {

struct BusMessage
{
    QString name;   // such as "app.corvelle.library-changed"
    QString object; // what it is about; may be empty
    QString token;  // the desktop's activation token, where one program asks another to come to the
                    // front

    bool operator==(const BusMessage&) const = default;
};

// One datagram. Any program of this person can send one: what isn't a message of ours with a name
// is none.
QByteArray encodedMessage(const BusMessage& message);
std::optional<BusMessage> decodedMessage(const QByteArray& datagram);

class MessageBus : public QObject
{
    Q_OBJECT

public:
    // The folder of the sockets is $XDG_RUNTIME_DIR/corvelle, or a folder of mode 0700 under the
    // temporary folder.
    explicit MessageBus(QObject* parent = nullptr);
    ~MessageBus() override;

    // To all other programs.
    void post(const BusMessage& message);

    // To the program with this process id; false when it doesn't listen (yet).
    bool send(const BusMessage& message, qint64 processID);

signals:
    void received(const corvelle::BusMessage& message);

private:
    void readWaiting();
    bool deliver(const QByteArray& payload, const QString& socketName);

    QString m_folder;
    QString m_ownName;
    int m_socket = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace corvelle
