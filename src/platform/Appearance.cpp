#include "platform/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

#include <functional>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int portalTimeoutMs =
    150; // the window waits for the answer, so that it doesn't change colour once it shows
constexpr uint prefersDark = 1;

const QString portal = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settings = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString schemeKey = u"color-scheme"_s;

// An answer comes wrapped once or twice, depending on the portal's age.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

// Hears the portal; a class of its own, so that nobody else has to know its types.
class PortalListener : public QObject
{
    Q_OBJECT

public:
    PortalListener(std::function<void(const QVariant&)> take, QObject* parent)
        : QObject(parent)
        , m_take(std::move(take))
    {}

public slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value)
    {
        if (group == appearanceGroup && key == schemeKey)
            m_take(value.variant());
    }

private:
    std::function<void(const QVariant&)> m_take;
};

Appearance::Appearance(QObject* parent)
    : QObject(parent)
    , m_isDark(QGuiApplication::palette().color(QPalette::Window).lightness() < 128)
{
    const QString wanted = qEnvironmentVariable("CORVELLE_APPEARANCE");
    if (wanted == u"dark" || wanted == u"light") {
        m_isDark = wanted == u"dark";
        return;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage question = QDBusMessage::createMethodCall(portal, portalPath, settings, u"Read"_s);
    question << appearanceGroup << schemeKey;
    const QDBusMessage answer = bus.call(question, QDBus::Block, portalTimeoutMs);
    if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty())
        take(answer.arguments().front());
    bus.connect(portal, portalPath, settings, u"SettingChanged"_s,
        new PortalListener([this](const QVariant& scheme) { take(scheme); }, this),
        SLOT(settingChanged(QString, QString, QDBusVariant)));
}

void Appearance::take(const QVariant& scheme)
{
    bool isNumber = false;
    const uint number = unwrapped(scheme).toUInt(&isNumber);
    const bool dark = number == prefersDark;
    if (!isNumber || dark == m_isDark)
        return;
    m_isDark = dark;
    emit changed();
}

} // namespace corvelle

#include "Appearance.moc"
