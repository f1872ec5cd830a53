#include "transport/UnixSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "tessarine/protocol/Limits.h"
#include "transport/Diagnostics.h"

namespace tessarine {
namespace unix_socket {

FileDescriptor create() {
    FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.valid()) Diagnostics::systemError("Can't create socket");
    return fd;
}

bool bindAndListen(int fd, const std::string& path, std::size_t length) {
    ::unlink(path.c_str());  // a socket file left by an earlier run would block the bind

    sockaddr_un address;
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    const std::size_t copied = strnlen(path.c_str(), length);
    std::memcpy(address.sun_path, path.c_str(), copied);
    const auto addressLength = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + copied);

    if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), addressLength) == -1) {
        Diagnostics::systemError("Can't bind filename");
        return false;
    }
    if (::listen(fd, LISTEN_BACKLOG) != 0) {
        Diagnostics::systemError("Can't listen socket");
        return false;
    }
    return true;
}

int acceptClient(int listenFd) {
    for (;;) {
        const int fd = ::accept4(listenFd, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0 || errno != EINTR) return fd;
    }
}

void setSendBuffer(int fd, int bytes) { ::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes); }

std::size_t sendAll(int fd, const void* data, std::size_t length, int stallLimitMs) {
    using Clock = std::chrono::steady_clock;
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::size_t sent = 0;
    // One clock for the whole call, restarted by every byte that goes: a
    // client that stalls after taking part waits the limit once, not per send.
    auto lastProgress = Clock::now();
    while (sent < length) {
        const ssize_t n = ::send(fd, bytes + sent, length - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n > 0) {
            sent += static_cast<std::size_t>(n);
            lastProgress = Clock::now();
            continue;
        }
        if (n < 0 && errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) break;
        int wait = -1;
        if (stallLimitMs >= 0) {
            const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastProgress);
            wait = static_cast<int>(std::max<long long>(0, stallLimitMs - waited.count()));
        }
        pollfd room{fd, POLLOUT, 0};
        const int ready = ::poll(&room, 1, wait);
        if (ready == 0) {
            errno = EAGAIN;
            break;
        }
        if (ready < 0 && errno != EINTR) break;
    }
    return sent;
}

std::size_t receiveAll(int fd, void* data, std::size_t length) {
    auto* bytes = static_cast<unsigned char*>(data);
    std::size_t received = 0;
    while (received < length) {
        const ssize_t n = ::recv(fd, bytes + received, length - received, MSG_WAITALL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (n == 0) errno = 0;
            break;
        }
        received += static_cast<std::size_t>(n);
    }
    return received;
}

}  // namespace unix_socket
}  // namespace tessarine
