#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

// A service, 540 bytes on the wire (bytes 12-551 of a message).
struct service {
    std::int32_t value0 = 0;
    std::int32_t value1 = 0;
    std::int32_t value2 = 0;
    std::int32_t value3 = 0;
    std::int32_t value4 = 0;
    std::string text0;

    struct wire {
        std::int32_t value0, value1, value2, value3, value4;
        std::int32_t reserved;
        char text0[TEXT_FIELD_SIZE];
        unsigned char reserved_tail[261];
    };
    static constexpr std::size_t WIRE_SIZE = 540;

    void encode(unsigned char* out) const {
        wire w;
        std::memset(&w, 0, sizeof w);
        w.value0 = value0;
        w.value1 = value1;
        w.value2 = value2;
        w.value3 = value3;
        w.value4 = value4;
        writeTextField(w.text0, text0);
        std::memcpy(out, &w, sizeof w);
    }

    static service decode(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        service s;
        s.value0 = w.value0;
        s.value1 = w.value1;
        s.value2 = w.value2;
        s.value3 = w.value3;
        s.value4 = w.value4;
        s.text0 = readTextField(w.text0);
        return s;
    }
};

static_assert(sizeof(service::wire) == service::WIRE_SIZE, "service is 540 bytes");
static_assert(offsetof(service::wire, reserved) == 20, "reserved at offset 20");
static_assert(offsetof(service::wire, text0) == 24, "text0 at offset 24");
static_assert(offsetof(service::wire, reserved_tail) == 279, "reserved tail at offset 279");

}  // namespace tessarine
