#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <memory>
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

    // Takes the next client, dropping the current one.
    bool accept(std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        dropClient();
        pollfd p{listener_, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(timeout.count())) != 1) return false;
        const int fd = ::accept(listener_, nullptr, nullptr);
        if (fd >= 0) client_ = std::make_unique<ControlTestClient>(fd);
        return client_ != nullptr;
    }
    void dropClient() { client_.reset(); }

    std::optional<message> receive(std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        return client_ ? client_->receive(timeout) : std::nullopt;
    }
    bool send(const message& record) { return client_ && client_->send(record); }
    bool sendRaw(const void* data, std::size_t length) { return client_ && client_->sendBytes(data, length); }
    template <typename T>
    bool sendValue(const T& value) { return sendRaw(&value, sizeof value); }

private:
    int listener_ = -1;
    std::unique_ptr<ControlTestClient> client_;
};

}  // namespace testing
}  // namespace tessarine
