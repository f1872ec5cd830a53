#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <variant>

#include "tessarine/client/Error.h"
#include "tessarine/client/Events.h"

namespace tessarine {
namespace python {

// An application-state request and the answer the client gave.
struct AppStateAnswered {
    std::int32_t state = 0;
    std::uint8_t answer = 0;
};

// The connection ended without the client closing it.
struct ConnectionEnded {
    client::Error error;
};

// Every event a client can see; the index of each kind is also the slot of
// its Python callback.
using Event = std::variant<client::DownloadComplete, client::GraphicsSettings, client::EndOfMedia, client::DsmccCommand,
                           AppStateAnswered, ConnectionEnded>;

// The events that client.events() reads, in arrival order.
class EventQueue {
public:
    using Clock = std::chrono::steady_clock;
    // Events kept for a reader that comes late; beyond it the oldest go,
    // so that a client that only uses callbacks does not grow without end.
    static constexpr std::size_t CAPACITY = 1024;

    void push(Event event);
    // The next event, waiting until `until`; empty on expiry or once closed.
    std::optional<Event> pop(Clock::time_point until);
    // Wakes every reader; later pops return at once.
    void close();
    bool closed() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Event> events_;
    bool closed_ = false;
};

}  // namespace python
}  // namespace tessarine
