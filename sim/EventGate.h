#pragma once

#include <mutex>

namespace tessarine {
namespace sim {

// Every notice the simulator sends to the bridge passes through one gate.
// Closing it waits for a notice in flight and lets none through afterwards,
// so the bridge can be torn down while simulator threads still run.
class EventGate {
public:
    // Runs `deliver` unless the gate is closed; true when it ran.
    template <typename Deliver>
    bool pass(Deliver&& deliver) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) return false;
        deliver();
        return true;
    }

    void close() {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
    }

private:
    std::mutex mutex_;
    bool closed_ = false;
};

}  // namespace sim
}  // namespace tessarine
