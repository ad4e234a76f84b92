// Datagrams that any program of the person may send to the socket.

#include "platform/MessageBus.h"

#include "Check.h"

using namespace corvelle;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto message = decodedMessage(bytesOf(data, size));
    if (!message)
        return 0;
    check(!message->name.isEmpty(), "a message has a name");

    // Half a surrogate pair is not sent on; all else is.
    const QByteArray sent = encodedMessage(*message);
    const auto again = decodedMessage(sent);
    check(again.has_value(), "what was received can be sent on");
    check(encodedMessage(*again) == sent, "a message that is sent on stays the same");
    return 0;
}
