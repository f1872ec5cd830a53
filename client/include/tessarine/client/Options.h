#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tessarine {
namespace client {

// A per-call time limit; an empty one means the client's default.
using Timeout = std::optional<std::chrono::milliseconds>;

// The production socket paths.
inline const char* const DEFAULT_CONTROL_SOCKET = "/dev/shm/ipc.socket";
inline const char* const DEFAULT_DEMUX_SOCKET = "/dev/shm/ipcdemux.socket";

struct ClientOptions {
    std::string socketPath = DEFAULT_CONTROL_SOCKET;
    // Time limit of a call that passes no Timeout of its own. It covers
    // waiting for earlier calls on the same client, connecting, sending and
    // the whole answer.
    std::chrono::milliseconds timeout{5000};
    // Bounds on what the bridge may announce; an answer beyond them is
    // refused as malformed before anything is allocated for it.
    std::size_t maxListItems = 65536;
    std::size_t maxTrailingBytes = 1 << 20;   // one byte list, string or descriptor
    std::size_t maxStringsPerList = 65536;
    std::size_t maxDsmccChunks = 1024;        // about 2 MB of command text
};

struct DemuxOptions {
    std::string socketPath = DEFAULT_DEMUX_SOCKET;
    std::chrono::milliseconds timeout{5000};
    std::size_t maxSectionLength = 4096;
};

}  // namespace client
}  // namespace tessarine
