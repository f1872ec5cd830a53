#include "demux/ClientWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "transport/ThreadSupport.h"

namespace tessarine {

namespace {
constexpr const char* LISTENER_FAILED = "Connection listener failed";
}

ClientWatch::~ClientWatch() { stop(); }

void ClientWatch::setListener(ConnectionListener* listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    listener_ = listener;
    if (told_ != listener) told_ = nullptr;
}

void ClientWatch::connected(int fd) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (listener_ == nullptr) return;
    told_ = listener_;
    runGuarded(LISTENER_FAILED, [this] { told_->clientConnected(); });
    if (!thread_.joinable() && !stopping_) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;  // then the end is told when the connection ends
        wakeRead_.reset(ends[0]);
        wakeWrite_.reset(ends[1]);
        if (!startThread(thread_, &ClientWatch::watch, this)) return;
    }
    fd_ = fd;
    changed_.notify_all();
}

void ClientWatch::disconnected(bool report) {
    std::unique_lock<std::mutex> lock(mutex_);
    fd_ = -1;
    if (polling_) {
        wake();
        changed_.wait(lock, [this] { return !polling_; });  // fd must not be closed while polled
    }
    if (report) tellGone();
    told_ = nullptr;
}

void ClientWatch::stop() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
        if (polling_) wake();
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void ClientWatch::resume() {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = false;
}

void ClientWatch::watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return stopping_ || (fd_ >= 0 && told_ != nullptr); });
        if (stopping_) return;
        // No events asked on the client: only its hang-up (or an error) ends the poll.
        pollfd watched[2] = {{fd_, 0, 0}, {wakeRead_.get(), POLLIN, 0}};
        polling_ = true;
        lock.unlock();
        const int ready = ::poll(watched, 2, -1);
        lock.lock();
        polling_ = false;
        changed_.notify_all();
        char drain[16];
        while (::read(wakeRead_.get(), drain, sizeof drain) > 0) {
        }
        const bool gone = ready > 0 && (watched[0].revents & (POLLHUP | POLLERR)) != 0;
        if (gone && !stopping_ && fd_ == watched[0].fd) tellGone();
    }
}

void ClientWatch::tellGone() {
    ConnectionListener* listener = told_;
    told_ = nullptr;
    if (listener != nullptr) runGuarded(LISTENER_FAILED, [listener] { listener->clientDisconnected(); });
}

void ClientWatch::wake() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wakeWrite_.get(), &byte, 1);  // a full pipe wakes as well
}

}  // namespace tessarine
