#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "tessarine/protocol/Limits.h"
#include "tessarine/protocol/Sockets.h"

namespace tessarine {
namespace client {

// A per-call time limit; an empty one means the client's default.
using Timeout = std::optional<std::chrono::milliseconds>;

// The production socket paths.
inline const char* const DEFAULT_CONTROL_SOCKET = CONTROL_SOCKET_PATH;
inline const char* const DEFAULT_DEMUX_SOCKET = DEMUX_SOCKET_PATH;

struct ClientOptions {
    std::string socketPath = DEFAULT_CONTROL_SOCKET;
    // Time limit of a call that passes no Timeout of its own. It covers
    // waiting for earlier calls on the same client, connecting, sending and
    // the whole answer.
    std::chrono::milliseconds timeout = CLIENT_TIME_LIMIT;
    // Bounds on what the bridge may announce; an answer beyond them is
    // refused as malformed before anything is allocated for it.
    std::size_t maxListItems = CLIENT_MAX_LIST_ITEMS;
    std::size_t maxTrailingBytes = CLIENT_MAX_TRAILING_BYTES;  // one byte list, string or descriptor
    std::size_t maxStringsPerList = CLIENT_MAX_STRINGS_PER_LIST;
    std::size_t maxDsmccChunks = CLIENT_MAX_DSMCC_CHUNKS;
};

struct DemuxOptions {
    std::string socketPath = DEFAULT_DEMUX_SOCKET;
    std::chrono::milliseconds timeout = CLIENT_TIME_LIMIT;
    std::size_t maxSectionLength = MAX_SECTION_LENGTH;
};

}  // namespace client
}  // namespace tessarine
