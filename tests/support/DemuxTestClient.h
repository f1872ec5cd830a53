#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/TestSocket.h"

namespace tessarine {
namespace testing {

// The application's end of the section-filter channel, for tests.
class DemuxTestClient : public TestSocket {
public:
    using TestSocket::TestSocket;

    // A byte string: its length, then its bytes.
    bool sendString(const std::vector<unsigned char>& bytes) {
        return sendWord(static_cast<std::int32_t>(bytes.size())) &&
               (bytes.empty() || sendBytes(bytes.data(), bytes.size()));
    }

    // Sends read_section (13) and reads the answer: length, then bytes.
    std::optional<std::vector<unsigned char>> readSection(std::chrono::milliseconds timeout = 3000ms) {
        if (!sendWord(13)) return std::nullopt;
        auto length = receiveWord(timeout);
        if (!length || *length < 0) return std::nullopt;
        if (*length == 0) return std::vector<unsigned char>{};
        return receiveBytes(static_cast<std::size_t>(*length), timeout);
    }
};

}  // namespace testing
}  // namespace tessarine
