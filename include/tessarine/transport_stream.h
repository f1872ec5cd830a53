#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tessarine {

// A transport stream, 280 bytes on the wire (bytes 12-291 of a message).
struct transport_stream {
    std::int32_t value0 = 0;
    std::int32_t value1 = 0;  // -1: there is no transport stream
    std::int32_t value2 = 0;
    std::int32_t value3 = 0;
    std::int32_t value4 = 0;  // 1, 2 or 3; 0 for anything else

    struct wire {
        std::int32_t value0, value1, value2;
        std::int32_t reserved;
        std::int32_t value3, value4;
        unsigned char reserved_tail[256];
    };
    static constexpr std::size_t WIRE_SIZE = 280;

    void encode(unsigned char* out) const {
        wire w;
        std::memset(&w, 0, sizeof w);
        w.value0 = value0;
        w.value1 = value1;
        w.value2 = value2;
        w.value3 = value3;
        w.value4 = value4;
        std::memcpy(out, &w, sizeof w);
    }
    static transport_stream decode(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        transport_stream t;
        t.value0 = w.value0;
        t.value1 = w.value1;
        t.value2 = w.value2;
        t.value3 = w.value3;
        t.value4 = w.value4;
        return t;
    }
};

static_assert(sizeof(transport_stream::wire) == transport_stream::WIRE_SIZE, "transport_stream is 280 bytes");
static_assert(offsetof(transport_stream::wire, reserved) == 12, "reserved at offset 12");
static_assert(offsetof(transport_stream::wire, value3) == 16, "value3 at offset 16");
static_assert(offsetof(transport_stream::wire, value4) == 20, "value4 at offset 20");
static_assert(offsetof(transport_stream::wire, reserved_tail) == 24, "reserved tail at offset 24");

}  // namespace tessarine
