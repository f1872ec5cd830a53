#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Errors.h"
#include "Guarded.h"
#include "Seconds.h"
#include "ToPython.h"
#include "tessarine/client/Result.h"

// Turns a client method `Result<R> method(P..., Timeout)` into a Python
// method `method(p..., *, timeout=None)`: arguments converted with the GIL
// held, the call made with it released, a failure raised as the exception
// of its kind, the value converted back.
namespace tessarine {
namespace python {

// How each C++ parameter arrives from Python.
template <typename T>
struct PythonArgument {
    using Type = T;
    static T take(T value) { return value; }
};
template <>
struct PythonArgument<const std::string&> {
    using Type = std::string;
    static std::string take(std::string value) { return value; }
};
// Byte strings: anything with the buffer protocol (bytes, bytearray, memoryview).
template <>
struct PythonArgument<const std::vector<std::uint8_t>&> {
    using Type = pybind11::buffer;
    static std::vector<std::uint8_t> take(const pybind11::buffer& buffer) {
        const pybind11::buffer_info info = buffer.request();
        const auto* begin = static_cast<const std::uint8_t*>(info.ptr);
        return std::vector<std::uint8_t>(begin, begin + info.size * info.itemsize);
    }
};

// Runs call(object) with the GIL released; raises or converts its Result.
template <typename T, typename Call>
pybind11::object callReleased(Guarded<T>& guarded, Call&& call) {
    using R = std::invoke_result_t<Call, T&>;
    std::optional<R> result;
    {
        pybind11::gil_scoped_release released;
        guarded.use([&](T& object) { result.emplace(call(object)); });
    }
    if (!result) raise(client::ErrorCode::NotConnected, "the client is closed");
    if (!result->ok()) raise(result->error());
    if constexpr (std::is_same_v<R, client::Result<void>>) {
        return pybind11::none();
    } else {
        return toPython(result->value());
    }
}

template <typename Self, typename T, typename R, typename... P, std::size_t... I>
auto bindMethod(client::Result<R> (T::*method)(P...), std::index_sequence<I...>) {
    using Params = std::tuple<P...>;
    return [method](Self& self, typename PythonArgument<std::tuple_element_t<I, Params>>::Type... args,
                    std::optional<double> timeout) {
        auto values = std::make_tuple(PythonArgument<std::tuple_element_t<I, Params>>::take(std::move(args))...);
        const client::Timeout limit = toTimeout(timeout);
        return callReleased(self.guarded(), [&](T& object) {
            return std::apply([&](auto&... value) { return (object.*method)(value..., limit); }, values);
        });
    };
}

// The last parameter of every client method is its Timeout.
template <typename Self, typename T, typename R, typename... P>
auto bindMethod(client::Result<R> (T::*method)(P...)) {
    static_assert(std::is_same_v<std::tuple_element_t<sizeof...(P) - 1, std::tuple<P...>>, client::Timeout>);
    return bindMethod<Self>(method, std::make_index_sequence<sizeof...(P) - 1>());
}

}  // namespace python
}  // namespace tessarine
