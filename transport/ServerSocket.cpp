#include "tessarine/ServerSocket.h"

#include <sys/socket.h>

#include <cerrno>

#include "transport/Diagnostics.h"
#include "transport/UnixSocket.h"

namespace tessarine {

bool ServerSocket::open(const std::string& path, std::size_t length) {
    FileDescriptor fd = unix_socket::create();
    if (!fd.valid() || !unix_socket::bindAndListen(fd.get(), path, length)) return false;
    std::lock_guard<std::mutex> guard(lock_);
    listen_ = std::move(fd);
    interrupted_ = false;
    return true;
}

bool ServerSocket::accept() {
    // listen_ changes only while no server thread runs, so it is read unlocked.
    const int fd = unix_socket::acceptClient(listen_.get());
    const int acceptError = errno;
    std::lock_guard<std::mutex> guard(lock_);
    if (interrupted_) {
        if (fd >= 0) ::close(fd);
        return false;
    }
    if (fd < 0) {
        errno = acceptError;
        Diagnostics::systemError("Can't accept new connections");
        return false;
    }
    client_.reset(fd);
    return true;
}

int ServerSocket::client() const {
    std::lock_guard<std::mutex> guard(lock_);
    return client_.get();
}

bool ServerSocket::interrupted() const {
    std::lock_guard<std::mutex> guard(lock_);
    return interrupted_;
}

void ServerSocket::interrupt() {
    std::lock_guard<std::mutex> guard(lock_);
    interrupted_ = true;
    if (listen_.valid()) ::shutdown(listen_.get(), SHUT_RDWR);
    if (client_.valid()) ::shutdown(client_.get(), SHUT_RDWR);
}

void ServerSocket::closeClient() {
    std::lock_guard<std::mutex> guard(lock_);
    client_.reset();
}

void ServerSocket::closeAll() {
    std::lock_guard<std::mutex> guard(lock_);
    client_.reset();
    listen_.reset();
}

}  // namespace tessarine
