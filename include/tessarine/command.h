#pragma once

#include <cstdint>

namespace tessarine {

// The `code` of a MSG_VIDEO record and the first field of video_data.
enum command : std::int32_t {
    VIDEO_SET_BOUNDS = 0,
    VIDEO_GET_BOUNDS = 1,
    VIDEO_RESET = 2,  // also the end-of-connection record's code
    VIDEO_GET_LANGUAGE_3 = 3,
    VIDEO_GET_LANGUAGES = 4,
    VIDEO_GET_LANGUAGE_5 = 5,
    VIDEO_SET_TEXT_6 = 6,
    VIDEO_SET_FLAG_7 = 7,
    VIDEO_SET_FLAG_8 = 8,
    VIDEO_GET_RATE_9 = 9,
    VIDEO_GET_RATE_10 = 10,
    VIDEO_GET_RATE_11 = 11,
    VIDEO_GET_RATE_12 = 12,
    VIDEO_GET_RATE_13 = 13,
    VIDEO_GET_RATE_14 = 14,
    VIDEO_GET_RATE_15 = 15,
    VIDEO_GET_RATE_16 = 16,
    VIDEO_GRAPHICS_SETTINGS = 17,  // also the graphics-settings event's code
    VIDEO_UPDATE_REGION = 18,
};

static_assert(sizeof(command) == 4, "a command is 32 bits on the wire");

}  // namespace tessarine
