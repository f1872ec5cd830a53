#include "support/TestSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

namespace tessarine {
namespace testing {

namespace {

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

}  // namespace

TestSocket::TestSocket(const std::string& path, std::chrono::milliseconds patience) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const auto deadline = Clock::now() + patience;
    for (;;) {
        fd_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd_ < 0) return;
        if (::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return;
        close();
        if (Clock::now() >= deadline) return;
        std::this_thread::sleep_for(10ms);
    }
}

TestSocket::~TestSocket() { close(); }

void TestSocket::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void TestSocket::finishSending() { ::shutdown(fd_, SHUT_WR); }

bool TestSocket::sendBytes(const void* data, std::size_t length) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    while (length > 0) {
        const ssize_t n = ::send(fd_, bytes, length, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

std::optional<std::vector<unsigned char>> TestSocket::receiveBytes(std::size_t length,
                                                                   std::chrono::milliseconds timeout) {
    std::vector<unsigned char> out(length);
    std::size_t got = 0;
    const auto deadline = Clock::now() + timeout;
    while (got < length) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, remainingMs(deadline)) <= 0) return std::nullopt;
        const ssize_t n = ::recv(fd_, out.data() + got, length - got, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return std::nullopt;
        got += static_cast<std::size_t>(n);
    }
    return out;
}

std::optional<std::int32_t> TestSocket::receiveWord(std::chrono::milliseconds timeout) {
    auto bytes = receiveBytes(sizeof(std::int32_t), timeout);
    if (!bytes) return std::nullopt;
    std::int32_t word;
    std::memcpy(&word, bytes->data(), sizeof word);
    return word;
}

bool TestSocket::quietFor(std::chrono::milliseconds wait) {
    pollfd p{fd_, POLLIN, 0};
    return ::poll(&p, 1, static_cast<int>(wait.count())) == 0;
}

bool TestSocket::closedByPeer(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    unsigned char scratch[4096];
    for (;;) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, remainingMs(deadline)) <= 0) return false;
        const ssize_t n = ::recv(fd_, scratch, sizeof scratch, 0);
        if (n == 0) return true;
        if (n < 0 && errno != EINTR) return errno == ECONNRESET;
    }
}

}  // namespace testing
}  // namespace tessarine
