#include "Socket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "tessarine/protocol/Limits.h"

namespace tessarine {
namespace client {
namespace detail {

int millisecondsUntil(Clock::time_point deadline) {
    // Rounded up: a poll that returns early would be taken for a time-out.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return 0;
    return left > 1000000 ? 1000000 : static_cast<int>(left);
}

FileDescriptor connectUnix(const std::string& path, Clock::time_point deadline) {
    sockaddr_un address{};
    if (path.size() > MAX_SOCKET_PATH_LENGTH) {
        errno = ENAMETOOLONG;
        return {};
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    for (;;) {
        // Non-blocking, so that a full backlog (the bridge serves one client
        // at a time) gives EAGAIN instead of an unbounded wait.
        FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (!fd.valid()) return fd;
        if (::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
            const int flags = ::fcntl(fd.get(), F_GETFL);
            ::fcntl(fd.get(), F_SETFL, flags & ~O_NONBLOCK);
            return fd;
        }
        const int error = errno;
        fd.reset();
        if (error != EAGAIN) {
            errno = error;
            return fd;
        }
        if (Clock::now() >= deadline) {
            errno = ETIMEDOUT;
            return fd;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

IoStatus writeAll(int fd, const void* data, std::size_t length, Clock::time_point deadline) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (length > 0) {
        const ssize_t sent = ::send(fd, bytes, length, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            bytes += sent;
            length -= static_cast<std::size_t>(sent);
            continue;
        }
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd p{fd, POLLOUT, 0};
            const int ready = ::poll(&p, 1, millisecondsUntil(deadline));
            if (ready == 0) return IoStatus::TimedOut;
            if (ready < 0 && errno != EINTR) return IoStatus::Failed;
            continue;
        }
        return (sent < 0 && errno == EPIPE) ? IoStatus::Closed : IoStatus::Failed;
    }
    return IoStatus::Ok;
}

IoStatus readExact(int fd, void* data, std::size_t length, std::optional<Clock::time_point> deadline) {
    auto* bytes = static_cast<unsigned char*>(data);
    while (length > 0) {
        if (deadline) {
            pollfd p{fd, POLLIN, 0};
            const int ready = ::poll(&p, 1, millisecondsUntil(*deadline));
            if (ready == 0) return IoStatus::TimedOut;
            if (ready < 0) {
                if (errno == EINTR) continue;
                return IoStatus::Failed;
            }
        }
        const ssize_t got = ::recv(fd, bytes, length, 0);
        if (got > 0) {
            bytes += got;
            length -= static_cast<std::size_t>(got);
            continue;
        }
        if (got == 0) return IoStatus::Closed;
        // EAGAIN: a receive time-out that a StreamReader set on the socket.
        if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK) continue;
        return errno == ECONNRESET ? IoStatus::Closed : IoStatus::Failed;
    }
    return IoStatus::Ok;
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
