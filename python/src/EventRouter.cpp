#include "EventRouter.h"

#include "Errors.h"
#include "ToPython.h"

namespace py = pybind11;

namespace tessarine {
namespace python {

namespace {

thread_local const EventRouter* runningCallbackOf = nullptr;

// What a Python callback receives: the state number of an application-state
// request, the exception of a lost connection, the event record otherwise.
py::object callbackArgument(const Event& event) {
    if (const auto* request = std::get_if<AppStateAnswered>(&event)) return py::int_(request->state);
    if (const auto* ended = std::get_if<ConnectionEnded>(&event)) return errorObject(ended->error);
    return toPython(event);
}

std::uint8_t appStateAnswer(const py::object& result) {
    if (!py::isinstance<py::int_>(result)) {
        PyErr_Format(PyExc_TypeError, "an application-state callback returns an int from 0 to 255, not %s",
                     Py_TYPE(result.ptr())->tp_name);
        throw py::error_already_set();
    }
    const long long value = PyLong_AsLongLong(result.ptr());
    if (value == -1 && PyErr_Occurred()) throw py::error_already_set();
    if (value < 0 || value > 255) {
        PyErr_Format(PyExc_ValueError, "an application-state callback returns an int from 0 to 255, not %lld", value);
        throw py::error_already_set();
    }
    return static_cast<std::uint8_t>(value);
}

// With the GIL held. A failure is reported, never thrown into the event
// thread; the application-state answer is then 0, "not handled".
std::uint8_t runCallback(const py::object& callback, const Event& event) {
    try {
        py::object result = callback(callbackArgument(event));
        return std::holds_alternative<AppStateAnswered>(event) ? appStateAnswer(result) : 0;
    } catch (py::error_already_set& error) {
        error.discard_as_unraisable(callback);
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
        PyErr_WriteUnraisable(callback.ptr());
    }
    return 0;
}

}  // namespace

EventRouter::EventRouter() : queue_(std::make_shared<EventQueue>()) {}

// close() has dropped the callbacks unless the client never existed in
// Python; either way no Python object is left to release here.
EventRouter::~EventRouter() = default;

void EventRouter::setCallback(std::size_t kind, py::object callback) {
    if (closed_) raise(client::ErrorCode::NotConnected, "the client is closed");
    callbacks_.at(kind) = callback.is_none() ? py::object() : std::move(callback);
}

void EventRouter::close() {
    closed_ = true;
    for (auto& callback : callbacks_) callback = py::object();
    queue_->close();
}

bool EventRouter::inCallback() const { return runningCallbackOf == this; }

std::uint8_t EventRouter::deliver(Event event) {
    std::uint8_t answer = 0;
    {
        py::gil_scoped_acquire acquired;
        py::object callback = closed_ ? py::object() : callbacks_[event.index()];
        if (callback) {
            runningCallbackOf = this;
            answer = runCallback(callback, event);
            runningCallbackOf = nullptr;
        }
    }
    if (auto* request = std::get_if<AppStateAnswered>(&event)) request->answer = answer;
    queue_->push(std::move(event));
    return answer;
}

}  // namespace python
}  // namespace tessarine
