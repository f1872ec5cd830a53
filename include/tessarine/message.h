#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Limits.h"
#include "tessarine/protocol/Offsets.h"

namespace tessarine {

// Copies a trivially copyable value out of raw record bytes at a byte
// offset: the one reader for a record's fields, whether it lies in a
// `message` or in a read buffer. memcpy keeps this free of alignment and
// aliasing hazards.
template <typename T>
T valueAt(const unsigned char* record, std::size_t offset) {
    static_assert(std::is_trivially_copyable<T>::value, "wire values are plain bytes");
    T value;
    std::memcpy(&value, record + offset, sizeof(T));
    return value;
}

// The control record. Peers exchange it as raw memory in host byte order.
// The area from `code` on is 8-byte aligned so that doubles in payloads sit
// at multiples of 8 (for example at byte 16).
struct alignas(8) message {
    std::int32_t type;
    unsigned char padding[4];
    std::int32_t code;
    unsigned char payload[MESSAGE_SIZE - PAYLOAD_OFFSET];

    // Raw view of the whole record; offsets below count from its first byte.
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(this); }
    const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(this); }

    void clear() { std::memset(bytes(), 0, MESSAGE_SIZE); }

    // Copies a trivially copyable value out of / into the record at a byte offset.
    template <typename T>
    T get(std::size_t offset) const {
        return valueAt<T>(bytes(), offset);
    }
    template <typename T>
    void put(std::size_t offset, const T& value) {
        static_assert(std::is_trivially_copyable<T>::value, "wire values are plain bytes");
        std::memcpy(bytes() + offset, &value, sizeof(T));
    }
};

static_assert(sizeof(message) == MESSAGE_SIZE, "the record is 1960 bytes");
static_assert(offsetof(message, type) == TYPE_OFFSET, "type at byte 0");
static_assert(offsetof(message, padding) == 4, "padding at bytes 4-7");
static_assert(offsetof(message, code) == CODE_OFFSET, "code at byte 8");
static_assert(offsetof(message, payload) == PAYLOAD_OFFSET, "payload from byte 12");
static_assert(alignof(message) == 8, "the area from byte 8 is aligned to 8");
static_assert(std::is_trivially_copyable<message>::value, "records travel as raw memory");

}  // namespace tessarine
