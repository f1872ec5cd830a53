#pragma once

#include <mutex>
#include <string>

#include "sim/RequestLog.h"

namespace tessarine {
namespace sim {

// Every notice the simulator sends to the bridge passes through one gate.
// It lets notices through only while a client is connected (the bridge
// would lose them otherwise), and closing it waits for a notice in flight
// and lets none through afterwards, so the bridge can be torn down while
// simulator threads still run.
class EventGate {
public:
    explicit EventGate(RequestLog& log) : log_(log) {}

    // Runs `deliver` when a client is connected and the gate is open; true
    // when it ran. A notice held back for want of a client is noted as
    // `what`.
    template <typename Deliver>
    bool pass(const std::string& what, Deliver&& deliver) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) return false;
        if (!client_) {
            log_.note(what + " dropped: no client connected");
            return false;
        }
        deliver();
        return true;
    }

    void setClient(bool connected) {
        std::lock_guard<std::mutex> lock(mutex_);
        client_ = connected;
    }

    void close() {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
    }

private:
    RequestLog& log_;
    std::mutex mutex_;
    bool client_ = false;
    bool closed_ = false;
};

}  // namespace sim
}  // namespace tessarine
