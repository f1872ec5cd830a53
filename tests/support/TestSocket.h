#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessarine {
namespace testing {

using namespace std::chrono_literals;

// A client end of a Unix stream socket with time-limited reads, so that a
// test fails instead of hanging when an answer never comes.
class TestSocket {
public:
    // Connects to `path`, retrying for up to `patience` while the server
    // comes up. connected() tells whether it succeeded.
    explicit TestSocket(const std::string& path, std::chrono::milliseconds patience = 2000ms);
    // Takes a connected descriptor (a server's accepted end).
    explicit TestSocket(int connected) : fd_(connected) {}
    ~TestSocket();
    TestSocket(const TestSocket&) = delete;
    TestSocket& operator=(const TestSocket&) = delete;

    bool connected() const { return fd_ >= 0; }
    void close();

    // Writes all bytes; false when the peer is gone.
    bool sendBytes(const void* data, std::size_t length);
    bool sendWord(std::int32_t word) { return sendBytes(&word, sizeof word); }
    // Tells the peer that nothing more will come (it reads end of stream).
    void finishSending();

    // Exactly `length` bytes, or nothing when they do not all arrive in time.
    std::optional<std::vector<unsigned char>> receiveBytes(std::size_t length,
                                                           std::chrono::milliseconds timeout = 3000ms);
    std::optional<std::int32_t> receiveWord(std::chrono::milliseconds timeout = 3000ms);
    // True when no byte arrives within `wait` (and the peer did not close).
    bool quietFor(std::chrono::milliseconds wait);
    // True when the peer closes the connection within `timeout`.
    bool closedByPeer(std::chrono::milliseconds timeout = 3000ms);

private:
    int fd_ = -1;
};

}  // namespace testing
}  // namespace tessarine
