#pragma once

#include <cstddef>
#include <cstdint>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Offsets.h"

namespace tessarine {

// The payload of a MSG_AUDIO request, bytes 8-23 of the record.
struct alignas(8) audio_data {
    std::int32_t code;              // an audio_selector
    unsigned char padding[4];       // not read
    union {
        double level;               // selectors 0-3, bytes 16-23
        bool mute;                  // selector 4, byte 16
    };
};

static_assert(sizeof(audio_data) == 16, "audio_data is 16 bytes");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(audio_data, level) == AUDIO_LEVEL_OFFSET, "level at byte 16");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(audio_data, mute) == AUDIO_MUTE_OFFSET, "mute at byte 16");

}  // namespace tessarine
