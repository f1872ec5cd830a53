#pragma once

#include <cstddef>
#include <cstdint>

namespace tessarine {

// A rectangle in a MSG_VIDEO record, bytes 12-27, in the order of
// ipcutil::Rectangle_t.
struct video_region {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

static_assert(sizeof(video_region) == 16, "video_region is 16 bytes");
static_assert(offsetof(video_region, height) == 12, "height at bytes 24-27 of the record");

}  // namespace tessarine
