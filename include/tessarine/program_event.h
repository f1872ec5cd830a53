#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tessarine/TextField.h"

namespace tessarine {

// A program event: values and texts in its 848-byte wire record, and six
// owned lists that travel after the record as trailing data (the three byte
// lists raw, then each string of the three string lists as a uint32 length
// and its bytes).
struct program_event {
    std::int32_t value0 = 0;
    std::int32_t value1 = 0;  // -1: there is no event
    std::int32_t value2 = 0;
    std::int32_t value3 = 0;
    std::int32_t value4 = 0;
    std::int32_t value5 = 0;
    std::int32_t value6 = 0;
    std::string text0, text1, text2;  // written by the text-field rule
    std::vector<unsigned char> bytes0, bytes1, bytes2;
    std::vector<std::string> strings0, strings1, strings2;  // carried whole

    // The wire record, exactly as it lies in bytes 12-859 of a message.
    struct wire {
        std::int32_t value0, value1, value2, value3;
        std::int32_t reserved;
        std::int32_t value4, value5, value6;
        char text0[TEXT_FIELD_SIZE];
        char text1[TEXT_FIELD_SIZE];
        char text2[TEXT_FIELD_SIZE];
        unsigned char padding[3];
        std::uint32_t byte_count0, byte_count1, byte_count2;
        std::uint32_t string_count0, string_count1, string_count2;
        std::uint32_t bytes0, bytes1, bytes2;        // handles: zero, ignored by readers
        std::uint32_t strings0, strings1, strings2;  // handles: zero, ignored by readers
    };
    static constexpr std::size_t WIRE_SIZE = 848;

    // Writes the wire record (counts from the lists, handles zero) to `out`.
    void encode(unsigned char* out) const {
        wire w;
        std::memset(&w, 0, sizeof w);
        w.value0 = value0;
        w.value1 = value1;
        w.value2 = value2;
        w.value3 = value3;
        w.value4 = value4;
        w.value5 = value5;
        w.value6 = value6;
        writeTextField(w.text0, text0);
        writeTextField(w.text1, text1);
        writeTextField(w.text2, text2);
        w.byte_count0 = static_cast<std::uint32_t>(bytes0.size());
        w.byte_count1 = static_cast<std::uint32_t>(bytes1.size());
        w.byte_count2 = static_cast<std::uint32_t>(bytes2.size());
        w.string_count0 = static_cast<std::uint32_t>(strings0.size());
        w.string_count1 = static_cast<std::uint32_t>(strings1.size());
        w.string_count2 = static_cast<std::uint32_t>(strings2.size());
        std::memcpy(out, &w, sizeof w);
    }

    // Reads the values and texts of a wire record; the lists stay empty (the
    // reader fills them from the trailing data, whose sizes counts() gives).
    static program_event decode(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        program_event e;
        e.value0 = w.value0;
        e.value1 = w.value1;
        e.value2 = w.value2;
        e.value3 = w.value3;
        e.value4 = w.value4;
        e.value5 = w.value5;
        e.value6 = w.value6;
        e.text0 = readTextField(w.text0);
        e.text1 = readTextField(w.text1);
        e.text2 = readTextField(w.text2);
        return e;
    }

    // The six counts of a wire record: byte_count0-2, then string_count0-2.
    static std::array<std::uint32_t, 6> counts(const unsigned char* in) {
        wire w;
        std::memcpy(&w, in, sizeof w);
        return {w.byte_count0, w.byte_count1, w.byte_count2, w.string_count0, w.string_count1, w.string_count2};
    }
};

static_assert(sizeof(program_event::wire) == program_event::WIRE_SIZE, "program_event is 848 bytes");
static_assert(offsetof(program_event::wire, reserved) == 16, "reserved at offset 16");
static_assert(offsetof(program_event::wire, value4) == 20, "value4 at offset 20");
static_assert(offsetof(program_event::wire, text0) == 32, "text0 at offset 32");
static_assert(offsetof(program_event::wire, text1) == 287, "text1 at offset 287");
static_assert(offsetof(program_event::wire, text2) == 542, "text2 at offset 542");
static_assert(offsetof(program_event::wire, byte_count0) == 800, "byte_count0 at offset 800");
static_assert(offsetof(program_event::wire, string_count0) == 812, "string_count0 at offset 812");
static_assert(offsetof(program_event::wire, bytes0) == 824, "bytes0 at offset 824");
static_assert(offsetof(program_event::wire, strings2) == 844, "strings2 at offset 844");

}  // namespace tessarine
