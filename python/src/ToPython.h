#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "EventQueue.h"
#include "tessarine/client/ControlClient.h"

// The library's values as Python objects: records and events become the
// dataclasses of tessarine.records, byte lists `bytes`, "no value" None.
namespace tessarine {
namespace python {

pybind11::object toPython(bool value);
pybind11::object toPython(std::int32_t value);
pybind11::object toPython(std::uint8_t value);
// Texts are UTF-8; a byte that is not becomes U+FFFD instead of failing the call.
pybind11::object toPython(const std::string& text);
pybind11::object toPython(const std::vector<std::uint8_t>& bytes);
pybind11::object toPython(const client::Rectangle& value);
pybind11::object toPython(const client::SystemProperty& value);
pybind11::object toPython(const client::ProgramEvent& value);
pybind11::object toPython(const client::Service& value);
pybind11::object toPython(const client::ServiceComponent& value);
pybind11::object toPython(const client::Descriptor& value);
pybind11::object toPython(const client::Pmt& value);
pybind11::object toPython(const client::Network& value);
pybind11::object toPython(const client::TransportStream& value);
pybind11::object toPython(const client::RawFrame& value);
pybind11::object toPython(const Event& event);

template <typename T>
pybind11::object toPython(const std::optional<T>& value) {
    return value ? toPython(*value) : pybind11::none();
}

template <typename T>
pybind11::object toPython(const std::vector<T>& values) {
    pybind11::list list;
    for (const T& value : values) list.append(toPython(value));
    return std::move(list);
}

}  // namespace python
}  // namespace tessarine
