#pragma once

#include <chrono>
#include <cstddef>
#include <cstdlib>
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

// The directory named by SOCKET_DIRECTORY_VARIABLE, or the production one.
inline std::string defaultSocketDirectory() {
    const char* directory = std::getenv(SOCKET_DIRECTORY_VARIABLE);
    return directory != nullptr && *directory != '\0' ? directory : DEFAULT_SOCKET_DIRECTORY;
}

inline std::string socketIn(const std::string& directory, const char* name) { return directory + "/" + name; }

struct ClientOptions {
    std::string socketPath = socketIn(defaultSocketDirectory(), CONTROL_SOCKET_NAME);
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

    // The defaults, with the control socket in `directory`.
    static ClientOptions inDirectory(const std::string& directory) {
        ClientOptions options;
        options.socketPath = socketIn(directory, CONTROL_SOCKET_NAME);
        return options;
    }
};

struct DemuxOptions {
    std::string socketPath = socketIn(defaultSocketDirectory(), DEMUX_SOCKET_NAME);
    std::chrono::milliseconds timeout = CLIENT_TIME_LIMIT;
    std::size_t maxSectionLength = MAX_SECTION_LENGTH;

    // The defaults, with the section-filter socket in `directory`.
    static DemuxOptions inDirectory(const std::string& directory) {
        DemuxOptions options;
        options.socketPath = socketIn(directory, DEMUX_SOCKET_NAME);
        return options;
    }
};

}  // namespace client
}  // namespace tessarine
