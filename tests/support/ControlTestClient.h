#pragma once

#include <optional>
#include <cstring>
#include <string>

#include "support/TestSocket.h"
#include "tessarine/message.h"

namespace tessarine {
namespace testing {

// A record built from cleared bytes with the given type and code.
inline message makeRecord(std::int32_t type, std::int32_t code) {
    message record;
    record.clear();
    record.type = type;
    record.code = code;
    return record;
}

// The application's end of the control channel, for tests.
class ControlTestClient : public TestSocket {
public:
    using TestSocket::TestSocket;

    bool send(const message& record) { return sendBytes(record.bytes(), MESSAGE_SIZE); }

    std::optional<message> receive(std::chrono::milliseconds timeout = 3000ms) {
        auto bytes = receiveBytes(MESSAGE_SIZE, timeout);
        if (!bytes) return std::nullopt;
        message record;
        std::memcpy(record.bytes(), bytes->data(), MESSAGE_SIZE);
        return record;
    }
};

}  // namespace testing
}  // namespace tessarine
