#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "Socket.h"

namespace tessarine {
namespace client {
namespace detail {

// Reads a socket through a buffer, so that a burst (a list answer, a run of
// events, a section with its length) costs one system call per buffer-full
// instead of one per record or field. One thread at a time.
class StreamReader {
public:
    StreamReader(int fd, std::size_t capacity) : fd_(fd), buffer_(capacity) {}

    // Exactly `length` bytes, as readExact (Closed, Failed, TimedOut alike).
    IoStatus read(void* data, std::size_t length, std::optional<Clock::time_point> deadline = std::nullopt);
    // Bytes in the buffer, read when it is empty, waiting for them until
    // `deadline` (none: for as long as it takes; a deadline past: only
    // looks). Closed, Failed or TimedOut when none came.
    IoStatus fill(std::optional<Clock::time_point> deadline);
    // The next `length` bytes (at most the buffer's size) where they lie in
    // the buffer, valid until the next read: a record decoded from here is
    // never copied out first. Null when they did not all come, with
    // `status` saying why (as read()).
    const unsigned char* next(std::size_t length, std::optional<Clock::time_point> deadline, IoStatus& status);
    // Bytes read from the socket and not yet taken.
    std::size_t buffered() const { return end_ - begin_; }
    // Forgets buffered bytes (a new connection on `fd`).
    void reset(int fd) {
        fd_ = fd;
        begin_ = end_ = 0;
        timeout_ = {};
    }

private:
    // Reads what has arrived into the free space after the buffered bytes.
    IoStatus receive(std::optional<Clock::time_point> deadline);

    int fd_;
    std::vector<unsigned char> buffer_;
    std::size_t begin_ = 0;  // unread bytes are buffer_[begin_, end_)
    std::size_t end_ = 0;
    std::chrono::microseconds timeout_{};  // the socket's receive time-out (0: none)
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
