#pragma once

#include <cstdint>
#include <string>

#include "tessarine/client/Rectangle.h"

// Events the bridge sends on its own initiative.
namespace tessarine {
namespace client {

// A carousel download finished. The two texts are the middleware's (the
// second is empty when it gave only one), at most 254 characters each.
struct DownloadComplete {
    std::string first;
    std::string second;
};

// The graphics planes changed.
struct GraphicsSettings {
    Rectangle first;
    Rectangle second;
};

// A media player reached the end of its item.
struct EndOfMedia {
    std::int32_t handle = 0;
};

// A DSM-CC stream-event command; a text sent in several chunks arrives whole.
struct DsmccCommand {
    std::int32_t code = 0;
    std::int64_t value = 0;
    std::uint8_t byte = 0;
    std::string text;
};

}  // namespace client
}  // namespace tessarine
