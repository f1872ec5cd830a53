#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarine/message.h"

namespace tessarine {

// A system property in a MSG_PROPERTY record, bytes 8-523.
struct system_property {
    std::int32_t code;              // the request's code; meaningless in list items
    char name[TEXT_FIELD_SIZE];     // bytes 12-266
    char value[TEXT_FIELD_SIZE];    // bytes 267-521
    unsigned char padding[2];       // bytes 522-523
};

static_assert(sizeof(system_property) == 516, "system_property is 516 bytes");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(system_property, name) == FIRST_TEXT_OFFSET, "name at byte 12");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(system_property, value) == SECOND_TEXT_OFFSET,
              "value at byte 267 of the record");
static_assert(offsetof(system_property, padding) == 514, "padding at bytes 522-523 of the record");

}  // namespace tessarine
