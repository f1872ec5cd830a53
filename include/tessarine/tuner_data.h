#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Offsets.h"

namespace tessarine {

// The payload of a MSG_TUNER list request, bytes 8-15 of the record.
struct tuner_data {
    std::int32_t code;       // kind of identifier list, TUNER_IDS_1 to TUNER_IDS_4
    std::int32_t parameter;  // argument of that kind's query
};

static_assert(sizeof(tuner_data) == 8, "tuner_data is 8 bytes");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(tuner_data, parameter) == TUNER_PARAMETER_OFFSET,
              "parameter at byte 12 of the record");

}  // namespace tessarine
