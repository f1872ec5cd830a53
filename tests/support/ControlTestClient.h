#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

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

    // Sends a request and returns its answer; a test fails rather than hangs.
    message ask(const message& request) {
        EXPECT_TRUE(send(request));
        auto answer = receive();
        EXPECT_TRUE(answer.has_value()) << "no answer to type " << request.type << " code " << request.code;
        return answer.value_or(makeRecord(-1, -1));
    }
    // The items of a list answer: the header's count, then that many records.
    std::vector<message> askList(const message& request) {
        const message header = ask(request);
        EXPECT_EQ(header.type, MSG_LIST_HEADER);
        std::vector<message> items;
        for (int i = 0; i < header.code; ++i) {
            auto item = receive();
            if (!item) {
                ADD_FAILURE() << "list item " << i << " of " << header.code << " missing";
                break;
            }
            items.push_back(*item);
        }
        return items;
    }
};

}  // namespace testing
}  // namespace tessarine
