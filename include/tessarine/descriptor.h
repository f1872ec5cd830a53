#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tessarine {

// A raw descriptor: a 12-byte wire record, then `length` bytes of trailing data.
struct descriptor {
    std::uint16_t id = 0;
    std::vector<unsigned char> data;

    struct wire {
        std::uint16_t id;
        unsigned char padding[2];
        std::uint32_t length;
        std::uint32_t data;  // handle: zero, ignored by readers
    };
    static constexpr std::size_t WIRE_SIZE = 12;

    void encode(unsigned char* out) const {
        wire w;
        std::memset(&w, 0, sizeof w);
        w.id = id;
        w.length = static_cast<std::uint32_t>(data.size());
        std::memcpy(out, &w, sizeof w);
    }
    // Reads the id; the bytes follow as trailing data, length() of them.
    static descriptor decode(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        descriptor d;
        d.id = w.id;
        return d;
    }
    static std::uint32_t length(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        return w.length;
    }
};

static_assert(sizeof(descriptor::wire) == descriptor::WIRE_SIZE, "descriptor is 12 bytes");
static_assert(offsetof(descriptor::wire, length) == 4, "length at offset 4");
static_assert(offsetof(descriptor::wire, data) == 8, "data at offset 8");

}  // namespace tessarine
