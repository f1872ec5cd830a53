#include "StreamReader.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tessarine {
namespace client {
namespace detail {

namespace {

// How far the socket's receive time-out may be from the time left before it
// is set again: calls with the same time limit never set it.
constexpr auto TIMEOUT_SLACK = std::chrono::milliseconds(1);

}  // namespace

IoStatus StreamReader::read(void* data, std::size_t length, std::optional<Clock::time_point> deadline) {
    auto* out = static_cast<unsigned char*>(data);
    for (;;) {
        const std::size_t take = std::min(length, end_ - begin_);
        if (take > 0) std::memcpy(out, buffer_.data() + begin_, take);
        begin_ += take;
        out += take;
        length -= take;
        if (length == 0) return IoStatus::Ok;
        // A piece as large as the buffer goes straight to its place.
        if (length >= buffer_.size()) return readExact(fd_, out, length, deadline);
        const IoStatus filled = fill(deadline);
        if (filled != IoStatus::Ok) return filled;
    }
}

const unsigned char* StreamReader::next(std::size_t length, std::optional<Clock::time_point> deadline,
                                        IoStatus& status) {
    status = IoStatus::Ok;
    if (end_ - begin_ < length) {
        // The part already here moves to the front, the rest is read after it.
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        while (end_ < length && status == IoStatus::Ok) status = receive(deadline);
        if (status != IoStatus::Ok) return nullptr;
    }
    const unsigned char* bytes = buffer_.data() + begin_;
    begin_ += length;
    return bytes;
}

IoStatus StreamReader::fill(std::optional<Clock::time_point> deadline) {
    if (begin_ != end_) return IoStatus::Ok;
    begin_ = end_ = 0;
    return receive(deadline);
}

IoStatus StreamReader::receive(std::optional<Clock::time_point> deadline) {
    for (;;) {
        // A deadline is kept by the socket's receive time-out, so that the
        // wait is the recv itself (a poll first costs a system call and a
        // second wake-up path per answer).
        int flags = 0;
        if (deadline) {
            const auto left = std::chrono::ceil<std::chrono::microseconds>(*deadline - Clock::now());
            if (left.count() <= 0) {
                flags = MSG_DONTWAIT;
            } else if (timeout_.count() == 0 || left > timeout_ + TIMEOUT_SLACK || left < timeout_ - TIMEOUT_SLACK) {
                const timeval limit{static_cast<time_t>(left.count() / 1000000),
                                    static_cast<suseconds_t>(left.count() % 1000000)};
                ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
                timeout_ = left;
            }
        }
        const ssize_t got = ::recv(fd_, buffer_.data() + end_, buffer_.size() - end_, flags);
        if (got == 0) return IoStatus::Closed;
        if (got < 0) {
            if (errno == EINTR) continue;
            // The time-out; without a deadline, one that a call left is waited out.
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                if (deadline && Clock::now() >= *deadline) return IoStatus::TimedOut;
                continue;
            }
            return errno == ECONNRESET ? IoStatus::Closed : IoStatus::Failed;
        }
        end_ += static_cast<std::size_t>(got);
        return IoStatus::Ok;
    }
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
