#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "support/ControlTestClient.h"

namespace tessarine {
namespace testing {

// A scripted stand-in for the bridge's control socket: the test decides
// every byte it sends, including ones the real bridge never would.
class FakeBridge {
public:
    explicit FakeBridge(const std::string& path) {
        listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        ::unlink(path.c_str());
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(listener_, 4) != 0) {
            ::close(listener_);
            listener_ = -1;
        }
    }
    ~FakeBridge() {
        dropClient();
        if (listener_ >= 0) ::close(listener_);
    }
    FakeBridge(const FakeBridge&) = delete;
    FakeBridge& operator=(const FakeBridge&) = delete;

    bool listening() const { return listener_ >= 0; }

    // Takes the next client, dropping the current one.
    bool accept(std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        dropClient();
        pollfd p{listener_, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(timeout.count())) != 1) return false;
        client_ = ::accept(listener_, nullptr, nullptr);
        return client_ >= 0;
    }
    void dropClient() {
        if (client_ >= 0) ::close(client_);
        client_ = -1;
    }

    std::optional<message> receive(std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        message record;
        auto* bytes = record.bytes();
        std::size_t got = 0;
        while (got < MESSAGE_SIZE) {
            pollfd p{client_, POLLIN, 0};
            if (::poll(&p, 1, static_cast<int>(timeout.count())) != 1) return std::nullopt;
            const ssize_t n = ::recv(client_, bytes + got, MESSAGE_SIZE - got, 0);
            if (n <= 0) return std::nullopt;
            got += static_cast<std::size_t>(n);
        }
        return record;
    }

    bool send(const message& record) { return sendRaw(record.bytes(), MESSAGE_SIZE); }
    bool sendRaw(const void* data, std::size_t length) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        while (length > 0) {
            const ssize_t n = ::send(client_, bytes, length, MSG_NOSIGNAL);
            if (n <= 0) return false;
            bytes += n;
            length -= static_cast<std::size_t>(n);
        }
        return true;
    }
    template <typename T>
    bool sendValue(const T& value) { return sendRaw(&value, sizeof value); }

private:
    int listener_ = -1;
    int client_ = -1;
};

}  // namespace testing
}  // namespace tessarine
