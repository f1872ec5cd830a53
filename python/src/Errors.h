#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "tessarine/client/Error.h"

namespace tessarine {
namespace python {

// tessarine.Error and one subclass per client::ErrorCode, each carrying the
// library's message.
void defineErrors(pybind11::module_& module);

// The exception for `error`, as an object (for on_disconnected) or raised.
pybind11::object errorObject(const client::Error& error);
[[noreturn]] void raise(const client::Error& error);
[[noreturn]] void raise(client::ErrorCode code, const std::string& detail);

}  // namespace python
}  // namespace tessarine
