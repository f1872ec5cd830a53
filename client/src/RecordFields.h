#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tessarine/TextField.h"
#include "tessarine/client/Rectangle.h"
#include "tessarine/message.h"
#include "tessarine/video_region.h"

namespace tessarine {
namespace client {
namespace detail {

// Fields of a control record that the client reads and writes in several
// places, at the offsets that the protocol gives.

// A cleared record of `type` and `code`.
inline message requestRecord(std::int32_t type, std::int32_t code) {
    message record;
    record.clear();
    record.type = type;
    record.code = code;
    return record;
}

// Four int32 in the order x, y, width, height (a video_region).
inline Rectangle rectangleAt(const message& record, std::size_t offset) {
    const auto r = record.get<video_region>(offset);
    return Rectangle{r.x, r.y, r.width, r.height};
}

inline void putRectangle(message& record, std::size_t offset, const Rectangle& r) {
    record.put(offset, video_region{r.x, r.y, r.width, r.height});
}

// A text up to its first NUL, never past `limit` bytes (a text field by default).
inline std::string textAt(const message& record, std::size_t offset, std::size_t limit = TEXT_FIELD_SIZE) {
    return readTextField(reinterpret_cast<const char*>(record.bytes() + offset), limit);
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
