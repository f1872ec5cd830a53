#pragma once

#include <pybind11/pybind11.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>

#include "EventQueue.h"

namespace tessarine {
namespace python {

// Hands each event of one client to its Python callback, on the client's
// event thread with the GIL taken there, and then to the queue that
// client.events() reads (callback or not). A callback that raises is
// reported through sys.unraisablehook; the event thread goes on.
//
// The client's handlers share it, so it stays valid for the event thread
// even when a callback drops the last reference to the Python client. The
// Python callbacks are touched only with the GIL held, and close() drops
// them, so the last reference may go on any thread.
class EventRouter {
public:
    EventRouter();
    ~EventRouter();
    EventRouter(const EventRouter&) = delete;
    EventRouter& operator=(const EventRouter&) = delete;

    const std::shared_ptr<EventQueue>& queue() const { return queue_; }

    // With the GIL held: the callback of the events whose Event index is
    // `kind`; None removes it.
    void setCallback(std::size_t kind, pybind11::object callback);
    // With the GIL held: no more callbacks, and the queue's readers end.
    void close();
    // This thread is running one of this router's callbacks.
    bool inCallback() const;

    // On the event thread; returns the application-state answer (0 when
    // no callback gave one).
    std::uint8_t deliver(Event event);

private:
    std::shared_ptr<EventQueue> queue_;
    std::array<pybind11::object, std::variant_size_v<Event>> callbacks_;
    bool closed_ = false;
};

}  // namespace python
}  // namespace tessarine
