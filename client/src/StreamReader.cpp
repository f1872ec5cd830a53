#include "StreamReader.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tessarine {
namespace client {
namespace detail {

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
        // With a deadline, the socket is polled only when it has nothing.
        const ssize_t got = ::recv(fd_, buffer_.data(), buffer_.size(), deadline ? MSG_DONTWAIT : 0);
        if (got == 0) return IoStatus::Closed;
        if (got < 0) {
            if (errno == EINTR) continue;
            if (deadline && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                if (!waitReadable(*deadline)) return IoStatus::TimedOut;
                continue;
            }
            return errno == ECONNRESET ? IoStatus::Closed : IoStatus::Failed;
        }
        begin_ = 0;
        end_ = static_cast<std::size_t>(got);
    }
}

bool StreamReader::waitReadable(Clock::time_point deadline) {
    if (begin_ < end_) return true;
    for (;;) {
        pollfd p{fd_, POLLIN, 0};
        const int ready = ::poll(&p, 1, millisecondsUntil(deadline));
        // A failed poll is left for the read to report.
        if (ready != 0 && !(ready < 0 && errno == EINTR)) return true;
        if (ready == 0 && Clock::now() >= deadline) return false;
    }
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
