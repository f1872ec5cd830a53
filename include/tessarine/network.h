#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

// A network, 260 bytes on the wire (bytes 12-271 of a message).
struct network {
    std::int32_t value0 = 0;  // -1: there is no network
    std::string text0;

    struct wire {
        std::int32_t value0;
        char text0[TEXT_FIELD_SIZE];
        unsigned char padding;
    };
    static constexpr std::size_t WIRE_SIZE = 260;

    void encode(unsigned char* out) const {
        wire w;
        std::memset(&w, 0, sizeof w);
        w.value0 = value0;
        writeTextField(w.text0, text0);
        std::memcpy(out, &w, sizeof w);
    }
    static network decode(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        network n;
        n.value0 = w.value0;
        n.text0 = readTextField(w.text0);
        return n;
    }
};

static_assert(sizeof(network::wire) == network::WIRE_SIZE, "network is 260 bytes");
static_assert(offsetof(network::wire, text0) == 4, "text0 at offset 4");
static_assert(offsetof(network::wire, padding) == 259, "padding at offset 259");

}  // namespace tessarine
