#pragma once

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>
#include <variant>

#include "tessarine/client/Error.h"

namespace tessarine {
namespace client {

namespace detail {
[[noreturn]] inline void valueOfFailedResult(const Error& error) {
    std::fprintf(stderr, "tessarine::client: value() of a failed result: %s\n", error.message().c_str());
    std::abort();
}
}  // namespace detail

// The value of a call, or the Error that prevented it. Check ok() (or the
// bool conversion) before value(); value() of a failed result aborts.
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    const T& value() const& {
        if (!ok()) detail::valueOfFailedResult(error());
        return std::get<0>(state_);
    }
    T& value() & {
        if (!ok()) detail::valueOfFailedResult(error());
        return std::get<0>(state_);
    }
    T&& value() && {
        if (!ok()) detail::valueOfFailedResult(error());
        return std::get<0>(std::move(state_));
    }
    const T& operator*() const& { return value(); }
    T& operator*() & { return value(); }
    const T* operator->() const { return &value(); }
    T* operator->() { return &value(); }

    T value_or(T fallback) const { return ok() ? std::get<0>(state_) : std::move(fallback); }

    // Only valid when !ok().
    const Error& error() const { return std::get<1>(state_); }

private:
    std::variant<T, Error> state_;
};

// A call that yields nothing but success or an Error.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : error_(std::move(error)) {}

    bool ok() const { return !error_.has_value(); }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return *error_; }

private:
    std::optional<Error> error_;
};

}  // namespace client
}  // namespace tessarine
