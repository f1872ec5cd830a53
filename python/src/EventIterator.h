#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>

#include "EventQueue.h"

namespace tessarine {
namespace python {

// client.events(timeout=...): the client's events in arrival order, waited
// for with the GIL released. With a time limit, TimedOut is raised once it
// passes (counted from the call of events()) before the next event; the
// iteration ends when the client is closed.
class EventIterator {
public:
    EventIterator(std::shared_ptr<EventQueue> queue, std::optional<double> timeout);

    // With the GIL held.
    pybind11::object next();

private:
    std::shared_ptr<EventQueue> queue_;
    std::optional<double> timeout_;
    std::optional<EventQueue::Clock::time_point> deadline_;
};

}  // namespace python
}  // namespace tessarine
