#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tessarine {

// Every record on the control socket has exactly this size, in both directions.
constexpr std::size_t MESSAGE_SIZE = 1960;
// Fixed text fields hold at most TEXT_FIELD_SIZE - 1 characters and always end in NUL.
constexpr std::size_t TEXT_FIELD_SIZE = 255;
// Characters of a DSM-CC command text carried by one record.
constexpr std::size_t CHUNK_SIZE = 1920;

// Offsets of the two text fields that many record types share.
constexpr std::size_t FIRST_TEXT_OFFSET = 12;
constexpr std::size_t SECOND_TEXT_OFFSET = FIRST_TEXT_OFFSET + TEXT_FIELD_SIZE;  // 267

enum message_type : std::int32_t {
    MSG_VIDEO = 0,
    MSG_APP_STATE = 1,
    MSG_PROPERTY = 2,
    MSG_AUDIO = 3,
    MSG_TUNER = 4,
    MSG_CAROUSEL = 5,
    MSG_SI = 6,
    MSG_LIST_HEADER = 7,
    MSG_MEDIA = 8,
    MSG_DSMCC = 9,
    MSG_VERSION = 10,
};

// The control record. Peers exchange it as raw memory in host byte order.
// The area from `code` on is 8-byte aligned so that doubles in payloads sit
// at multiples of 8 (for example at byte 16).
struct alignas(8) message {
    std::int32_t type;
    unsigned char padding[4];
    std::int32_t code;
    unsigned char payload[MESSAGE_SIZE - 12];

    // Raw view of the whole record; offsets below count from its first byte.
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(this); }
    const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(this); }

    void clear() { std::memset(bytes(), 0, MESSAGE_SIZE); }

    // Copies a trivially copyable value out of / into the record at a byte
    // offset. memcpy keeps this free of alignment and aliasing hazards.
    template <typename T>
    T get(std::size_t offset) const {
        static_assert(std::is_trivially_copyable<T>::value, "wire values are plain bytes");
        T value;
        std::memcpy(&value, bytes() + offset, sizeof(T));
        return value;
    }
    template <typename T>
    void put(std::size_t offset, const T& value) {
        static_assert(std::is_trivially_copyable<T>::value, "wire values are plain bytes");
        std::memcpy(bytes() + offset, &value, sizeof(T));
    }
};

static_assert(sizeof(message) == MESSAGE_SIZE, "the record is 1960 bytes");
static_assert(offsetof(message, type) == 0, "type at byte 0");
static_assert(offsetof(message, padding) == 4, "padding at bytes 4-7");
static_assert(offsetof(message, code) == 8, "code at byte 8");
static_assert(offsetof(message, payload) == 12, "payload from byte 12");
static_assert(alignof(message) == 8, "the area from byte 8 is aligned to 8");
static_assert(std::is_trivially_copyable<message>::value, "records travel as raw memory");

}  // namespace tessarine
