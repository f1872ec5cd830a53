#pragma once

#include <condition_variable>
#include <mutex>

#include "Socket.h"

namespace tessarine {
namespace client {
namespace detail {

// Lets one holder at a time through (a call; a connection's reading turn),
// waiting at most until a deadline.
// (A std::timed_mutex would do, but its timed lock is invisible to
// ThreadSanitizer on current glibc, which then reports every unlock.)
class CallGate {
public:
    class Pass {
    public:
        explicit Pass(CallGate& gate, Clock::time_point deadline) : gate_(&gate) {
            std::unique_lock<std::mutex> lock(gate.mutex_);
            if (!gate.free_.wait_until(lock, deadline, [&] { return !gate.busy_; })) {
                gate_ = nullptr;
                return;
            }
            gate.busy_ = true;
        }
        ~Pass() {
            if (!gate_) return;
            {
                std::lock_guard<std::mutex> lock(gate_->mutex_);
                gate_->busy_ = false;
            }
            gate_->free_.notify_one();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        // False when the deadline passed first.
        bool granted() const { return gate_ != nullptr; }

    private:
        CallGate* gate_;
    };

private:
    std::mutex mutex_;
    std::condition_variable free_;
    bool busy_ = false;
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
