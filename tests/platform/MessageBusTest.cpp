#include "platform/MessageBus.h"

#include <gtest/gtest.h>

using namespace corvelle;

TEST(MessageBus, aMessageArrivesAsItWasSent)
{
    const BusMessage messages[] = {
        {"app.corvelle.show", "", ""},
        {"app.corvelle.open-item", "a \"quoted\" id\n", "token-7"},
        {"app.corvelle.library-changed", QString::fromUtf8("/home/ä/日本 📁"), ""},
    };
    for (const BusMessage& message : messages)
        EXPECT_EQ(decodedMessage(encodedMessage(message)), message);
}

TEST(MessageBus, whatIsNoMessageOfOursIsNone)
{
    const char* datagrams[] = {"", "show", "[]", "\"name\"", "{}", R"({"name":""})",
        R"({"name":7})", R"({"object":"x"})", R"({"name":"x")"};
    for (const char* datagram : datagrams)
        EXPECT_EQ(decodedMessage(datagram), std::nullopt) << datagram;
}

TEST(MessageBus, partsThatAreMissingOrNoTextAreEmpty)
{
    EXPECT_EQ(decodedMessage(R"({"name":"x","object":7,"other":[]})"), (BusMessage{"x", "", ""}));
}
