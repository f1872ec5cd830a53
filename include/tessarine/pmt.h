#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tessarine {

// A program map table entry, 16 bytes on the wire: four values in order.
struct pmt {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0;

    static constexpr std::size_t WIRE_SIZE = 16;
    void encode(unsigned char* out) const { std::memcpy(out, this, WIRE_SIZE); }
    static pmt decode(const unsigned char* in) {
        pmt p;
        std::memcpy(&p, in, WIRE_SIZE);
        return p;
    }
};

static_assert(sizeof(pmt) == pmt::WIRE_SIZE, "pmt is 16 bytes");
static_assert(offsetof(pmt, value3) == 12, "value3 at offset 12");

}  // namespace tessarine
