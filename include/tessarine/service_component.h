#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tessarine {

// A service component, 24 bytes on the wire: six values in order.
struct service_component {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0, value4 = 0, value5 = 0;

    static constexpr std::size_t WIRE_SIZE = 24;
    void encode(unsigned char* out) const { std::memcpy(out, this, WIRE_SIZE); }
    static service_component decode(const unsigned char* in) {
        service_component c;
        std::memcpy(&c, in, WIRE_SIZE);
        return c;
    }
};

static_assert(sizeof(service_component) == service_component::WIRE_SIZE, "service_component is 24 bytes");
static_assert(offsetof(service_component, value5) == 20, "value5 at offset 20");

}  // namespace tessarine
