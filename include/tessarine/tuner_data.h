#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarine {

// MSG_TUNER code 0 asks the current transport stream id; other codes ask a list.
constexpr std::int32_t TUNER_CURRENT_TS_ID = 0;

// The payload of a MSG_TUNER list request, bytes 8-15 of the record.
struct tuner_data {
    std::int32_t code;       // kind of identifier list, 1 to 4
    std::int32_t parameter;  // argument of that kind's query
};

static_assert(sizeof(tuner_data) == 8, "tuner_data is 8 bytes");
static_assert(offsetof(tuner_data, parameter) == 4, "parameter at byte 12 of the record");

}  // namespace tessarine
