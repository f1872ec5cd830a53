#include "Errors.h"

namespace py = pybind11;

namespace tessarine {
namespace python {

namespace {

using client::ErrorCode;

// Created once by defineErrors and kept for the life of the process, as
// the module that holds them is.
PyObject* base = nullptr;
PyObject* byCode[5] = {};

PyObject* typeOf(ErrorCode code) { return byCode[static_cast<int>(code)]; }

}  // namespace

void defineErrors(py::module_& module) {
    base = PyErr_NewExceptionWithDoc("tessarine.Error", "A call of a tessarine client failed.", nullptr, nullptr);
    module.attr("Error") = py::handle(base);
    // A second base where Python has one for the same failure, so that
    // `except TimeoutError` and `except ValueError` work too.
    const struct {
        ErrorCode code;
        const char* name;
        PyObject* standard;
        const char* doc;
    } kinds[] = {
        {ErrorCode::NotConnected, "NotConnected", nullptr, "No bridge listens at the socket path."},
        {ErrorCode::TimedOut, "TimedOut", PyExc_TimeoutError, "No whole answer within the call's time limit."},
        {ErrorCode::ConnectionLost, "ConnectionLost", nullptr, "The bridge went away before or while answering."},
        {ErrorCode::MalformedAnswer, "MalformedAnswer", nullptr, "The bridge sent what the protocol does not allow."},
        {ErrorCode::InvalidArgument, "InvalidArgument", PyExc_ValueError, "The request cannot go on the wire."},
    };
    for (const auto& kind : kinds) {
        const std::string qualified = std::string("tessarine.") + kind.name;
        py::object bases = kind.standard ? py::object(py::make_tuple(py::handle(base), py::handle(kind.standard)))
                                         : py::reinterpret_borrow<py::object>(base);
        PyObject* type = PyErr_NewExceptionWithDoc(qualified.c_str(), kind.doc, bases.ptr(), nullptr);
        if (!type) throw py::error_already_set();
        byCode[static_cast<int>(kind.code)] = type;
        module.attr(kind.name) = py::handle(type);
    }
}

py::object errorObject(const client::Error& error) { return py::handle(typeOf(error.code()))(error.message()); }

void raise(const client::Error& error) {
    PyErr_SetString(typeOf(error.code()), error.message().c_str());
    throw py::error_already_set();
}

void raise(ErrorCode code, const std::string& detail) { raise(client::Error(code, detail)); }

}  // namespace python
}  // namespace tessarine
