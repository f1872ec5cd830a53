#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarine {

// Selectors of an audio request (the `code` of audio_data).
enum audio_selector : std::int32_t {
    AUDIO_SOUND_LEVEL = 0,
    AUDIO_BALANCE_LEVEL = 1,
    AUDIO_BASS_LEVEL = 2,
    AUDIO_TREBLE_LEVEL = 3,
    AUDIO_MUTE = 4,
};

// The payload of a MSG_AUDIO request, bytes 8-23 of the record.
struct alignas(8) audio_data {
    std::int32_t code;              // selector
    unsigned char padding[4];       // not read
    union {
        double level;               // selectors 0-3, bytes 16-23
        bool mute;                  // selector 4, byte 16
    };
};

static_assert(sizeof(audio_data) == 16, "audio_data is 16 bytes");
static_assert(offsetof(audio_data, level) == 8, "level at byte 16 of the record");
static_assert(offsetof(audio_data, mute) == 8, "mute at byte 16 of the record");

}  // namespace tessarine
