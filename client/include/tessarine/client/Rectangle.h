#pragma once

#include <cstdint>

namespace tessarine {
namespace client {

// A rectangle in the bridge's coordinates, carried unscaled. In answers a
// field of -1 means that the bridge had no value for it.
struct Rectangle {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    friend bool operator==(const Rectangle& a, const Rectangle& b) {
        return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
    }
    friend bool operator!=(const Rectangle& a, const Rectangle& b) { return !(a == b); }
};

}  // namespace client
}  // namespace tessarine
