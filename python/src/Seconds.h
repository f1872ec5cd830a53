#pragma once

#include <chrono>
#include <cmath>
#include <optional>

#include "Errors.h"
#include "tessarine/client/Options.h"

namespace tessarine {
namespace python {

// Python gives time limits in seconds (None: the client's default); the
// library takes milliseconds, rounded up so that a short limit is not 0.
inline std::chrono::milliseconds toMilliseconds(double seconds) {
    if (!(seconds >= 0) || seconds > 1e9)
        raise(client::ErrorCode::InvalidArgument, "a time limit is a number of seconds from 0 to 1e9");
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(seconds * 1000)));
}

inline client::Timeout toTimeout(std::optional<double> seconds) {
    if (!seconds) return std::nullopt;
    return toMilliseconds(*seconds);
}

}  // namespace python
}  // namespace tessarine
