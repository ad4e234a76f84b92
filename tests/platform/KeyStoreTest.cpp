#include "platform/KeyStore.h"

#include "support/Printing.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(KeyStore, withoutASecretServiceSavingFails)
{
    const QByteArray bus = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
    const auto saved = saveKey("TEST", "key");
    bus.isNull() ? qunsetenv("DBUS_SESSION_BUS_ADDRESS") : qputenv("DBUS_SESSION_BUS_ADDRESS", bus);
    ASSERT_FALSE(saved);
    // The service is missing, not the library that asks for it.
    EXPECT_NE(saved.failure().sentence(), "libsecret is not installed");
    EXPECT_FALSE(saved.failure().sentence().isEmpty());
}
