#pragma once

#include <cstddef>

#include "tessarine/command.h"
#include "tessarine/message.h"
#include "tessarine/video_region.h"

namespace tessarine {

// The payload of a MSG_VIDEO request, overlaying the record from byte 8.
// Its fields overlay one another; each command reads only its own.
struct video_data {
    command code;
    union {
        video_region bounds;          // VIDEO_SET_BOUNDS: x, y, width, height at bytes 12-27
        char text[TEXT_FIELD_SIZE];   // VIDEO_SET_TEXT_6: text field at bytes 12-266
        bool flag;                    // VIDEO_SET_FLAG_7 / _8: byte 12
    };
};

static_assert(TYPED_PAYLOAD_OFFSET + offsetof(video_data, code) == CODE_OFFSET, "code at byte 8 of the record");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(video_data, bounds) == VIDEO_BOUNDS_OFFSET, "bounds at byte 12");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(video_data, text) == FIRST_TEXT_OFFSET, "text at byte 12");
static_assert(TYPED_PAYLOAD_OFFSET + offsetof(video_data, flag) == VIDEO_FLAG_OFFSET, "flag at byte 12");
static_assert(TYPED_PAYLOAD_OFFSET + sizeof(video_data) <= MESSAGE_SIZE, "video_data fits the record from byte 8");

}  // namespace tessarine
