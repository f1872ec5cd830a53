#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "sim/RequestLog.h"

namespace tessarine {
namespace sim {

// What became of a notice.
enum class Delivery {
    Sent,
    NoListener,  // nobody registered for it
    NoClient,    // held back: no client connected, or the simulator is stopping
    NotSent,     // the bridge could not send it: the client's connection failed
};

// Every notice the simulator sends to the bridge passes through one gate.
// It lets notices through only while a client is connected (the bridge
// would lose them otherwise), and closing it waits for a notice in flight
// and lets none through afterwards, so the bridge can be torn down while
// simulator threads still run. A notice counts as an event sent only when
// it went out.
class EventGate {
public:
    explicit EventGate(RequestLog& log) : log_(log) {}

    // Runs `deliver` when a client is connected and the gate is open, then
    // logs the event (`family`, `code`, `summary`) when it went out. A
    // notice not sent is noted as `what`.
    template <typename Deliver>
    Delivery pass(const std::string& what, Family family, int code, const std::string& summary, Deliver&& deliver) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) return Delivery::NoClient;
        if (!client_) {
            log_.note(what + " dropped: no client connected");
            return Delivery::NoClient;
        }
        const std::uint64_t before = sent_ ? sent_() : 0;
        deliver();
        if (sent_ && sent_() == before) {
            log_.note(what + " not sent: the client's connection failed");
            return Delivery::NotSent;
        }
        log_.event(family, code, summary);
        return Delivery::Sent;
    }

    // `sent` counts the notices the bridge got out; one that does not move
    // it was not sent (notices pass one at a time). Without it, a notice
    // handed to the listeners counts as sent.
    void countSentWith(std::function<std::uint64_t()> sent) {
        std::lock_guard<std::mutex> lock(mutex_);
        sent_ = std::move(sent);
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
    std::function<std::uint64_t()> sent_;
    bool client_ = false;
    bool closed_ = false;
};

}  // namespace sim
}  // namespace tessarine
