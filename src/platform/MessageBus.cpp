#include "platform/MessageBus.h"

#include "base/Ids.h"
#include "base/Log.h"
#include "base/MainThread.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qsizetype longestMessage = 64 * 1024; // bytes; ours hold a path and a token

// Nobody else may put a socket, or a link, into the folder that we send to.
QString privateFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString folder = runtime.isEmpty() ? QDir::tempPath() + u"/corvelle-%1"_s.arg(::getuid())
                                             : runtime + u"/corvelle"_s;
    const QByteArray path = QFile::encodeName(folder);
    ::mkdir(path.constData(), 0700);
    struct stat facts = {};
    const bool ours = ::lstat(path.constData(), &facts) == 0 && S_ISDIR(facts.st_mode) &&
                      facts.st_uid == ::getuid() && (facts.st_mode & 0077) == 0;
    return ours ? folder : QString();
}

bool address(const QString& path, sockaddr_un& result)
{
    const QByteArray bytes = QFile::encodeName(path);
    result = {};
    result.sun_family = AF_UNIX;
    if (static_cast<size_t>(bytes.size()) >= sizeof result.sun_path)
        return false;
    std::memcpy(result.sun_path, bytes.constData(), static_cast<size_t>(bytes.size()));
    return true;
}

} // namespace

QByteArray encodedMessage(const BusMessage& message)
{
    const QJsonObject object{
        {u"name"_s, message.name}, {u"object"_s, message.object}, {u"token"_s, message.token}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<BusMessage> decodedMessage(const QByteArray& datagram)
{
    const QJsonObject object = QJsonDocument::fromJson(datagram).object();
    BusMessage message{
        object[u"name"].toString(), object[u"object"].toString(), object[u"token"].toString()};
    if (message.name.isEmpty())
        return std::nullopt;
    return message;
}

MessageBus::MessageBus(QObject* parent)
    : QObject(parent)
    , m_folder(privateFolder())
{
    if (m_folder.isEmpty()) {
        logLine(u"messages: no private folder for sockets; other copies aren't heard"_s);
        return;
    }
    m_ownName = u"%1-%2"_s.arg(::getpid()).arg(newID().left(8));
    sockaddr_un own;
    m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_socket < 0 || !address(m_folder + u'/' + m_ownName, own) ||
        ::bind(m_socket, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
        logLine(u"messages: "_s + QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &MessageBus::readWaiting);
}

MessageBus::~MessageBus()
{
    m_notifier.reset();
    if (m_socket < 0)
        return;
    ::close(m_socket);
    QFile::remove(m_folder + u'/' + m_ownName);
}

void MessageBus::post(const BusMessage& message)
{
    Q_ASSERT(onMainThread());
    if (m_folder.isEmpty())
        return;
    const QByteArray payload = encodedMessage(message);
    for (const QString& name : QDir(m_folder).entryList(QDir::System | QDir::Files))
        if (name != m_ownName)
            deliver(payload, name);
}

bool MessageBus::send(const BusMessage& message, qint64 processID)
{
    if (m_folder.isEmpty())
        return false;
    bool delivered = false;
    const QStringList names =
        QDir(m_folder).entryList({u"%1-*"_s.arg(processID)}, QDir::System | QDir::Files);
    for (const QString& name : names)
        if (name != m_ownName)
            delivered |= deliver(encodedMessage(message), name);
    return delivered;
}

bool MessageBus::deliver(const QByteArray& payload, const QString& socketName)
{
    sockaddr_un other;
    if (m_socket < 0 || !address(m_folder + u'/' + socketName, other))
        return false;
    if (::sendto(m_socket, payload.constData(), static_cast<size_t>(payload.size()), MSG_NOSIGNAL,
            reinterpret_cast<const sockaddr*>(&other), sizeof other) >= 0)
        return true;
    if (errno == ECONNREFUSED) // left behind by a program that crashed
        QFile::remove(m_folder + u'/' + socketName);
    return false;
}

void MessageBus::readWaiting()
{
    QByteArray buffer(longestMessage, Qt::Uninitialized);
    while (true) {
        const ssize_t length =
            ::recv(m_socket, buffer.data(), static_cast<size_t>(buffer.size()), 0);
        if (length < 0)
            return;
        if (const auto message = decodedMessage(buffer.left(length)))
            emit received(*message);
    }
}

} // namespace corvelle
