#include "EventIterator.h"

#include <algorithm>
#include <chrono>
#include <sstream>

#include "Errors.h"
#include "Seconds.h"
#include "ToPython.h"

namespace py = pybind11;

namespace tessarine {
namespace python {

namespace {
// The wait is cut into slices so that Ctrl-C reaches Python within one.
constexpr std::chrono::milliseconds SIGNAL_CHECK{100};
}  // namespace

EventIterator::EventIterator(std::shared_ptr<EventQueue> queue, std::optional<double> timeout)
    : queue_(std::move(queue)), timeout_(timeout) {
    if (timeout) deadline_ = EventQueue::Clock::now() + toMilliseconds(*timeout);
}

py::object EventIterator::next() {
    for (;;) {
        std::optional<Event> event;
        {
            py::gil_scoped_release released;
            auto until = EventQueue::Clock::now() + SIGNAL_CHECK;
            if (deadline_) until = std::min(until, *deadline_);
            event = queue_->pop(until);
        }
        if (event) return toPython(*event);
        if (queue_->closed()) throw py::stop_iteration();
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (deadline_ && EventQueue::Clock::now() >= *deadline_) {
            std::ostringstream text;
            text << "no event within " << *timeout_ << " s";
            raise(client::ErrorCode::TimedOut, text.str());
        }
    }
}

}  // namespace python
}  // namespace tessarine
