#include "bench/RawPeer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "transport/UnixSocket.h"

namespace tessarine {
namespace bench {

namespace {

// The reading end's buffer: large reads, as a stream consumer would do.
constexpr std::size_t READ_CHUNK = 64 * 1024;

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

}  // namespace

RawPeer::RawPeer(std::size_t requestSize, std::vector<unsigned char> answer)
    : requestSize_(requestSize), answer_(std::move(answer)) {
    const sockaddr_un address = addressOf(directory_.file("raw.socket"));
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    near_.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::bind(listener.get(), generic, sizeof address) != 0 || ::listen(listener.get(), 1) != 0 ||
        ::connect(near_.get(), generic, sizeof address) != 0) {
        std::abort();
    }
    far_.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!far_.valid()) std::abort();
    // The answering end as the bridge sets up its control connection: the
    // baseline is the same socket, configured the same way.
    unix_socket::setSendBuffer(far_.get(), unix_socket::CONTROL_SEND_BUFFER);
    thread_ = std::thread([this] { serve(); });
}

RawPeer::~RawPeer() {
    ::shutdown(near_.get(), SHUT_RDWR);
    thread_.join();
}

void RawPeer::serve() {
    if (requestSize_ == 0) {
        std::vector<unsigned char> sink(READ_CHUNK);
        for (;;) {
            const ssize_t n = ::recv(far_.get(), sink.data(), sink.size(), 0);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            received_.add(static_cast<std::uint64_t>(n));
        }
    }
    std::vector<unsigned char> request(requestSize_);
    for (;;) {
        std::size_t got = 0;
        while (got < request.size()) {
            const ssize_t n = ::recv(far_.get(), request.data() + got, request.size() - got, 0);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            got += static_cast<std::size_t>(n);
        }
        for (std::size_t sent = 0; sent < answer_.size();) {
            const ssize_t n = ::send(far_.get(), answer_.data() + sent, answer_.size() - sent, MSG_NOSIGNAL);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return;
            sent += static_cast<std::size_t>(n);
        }
    }
}

void RawPeer::sendAll(int fd, const void* data, std::size_t length) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (length > 0) {
        const ssize_t n = ::send(fd, bytes, length, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) std::abort();
        bytes += n;
        length -= static_cast<std::size_t>(n);
    }
}

void RawPeer::receiveAll(int fd, void* data, std::size_t length) {
    auto* bytes = static_cast<unsigned char*>(data);
    while (length > 0) {
        const ssize_t n = ::recv(fd, bytes, length, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) std::abort();
        bytes += n;
        length -= static_cast<std::size_t>(n);
    }
}

}  // namespace bench
}  // namespace tessarine
