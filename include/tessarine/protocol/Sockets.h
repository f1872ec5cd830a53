#pragma once

#include <string_view>

#include "tessarine/protocol/Limits.h"

// Where the two channels listen. Self-contained, so that the client library
// can install it with its own headers.
namespace tessarine {

// The production directory; a bridge can be told to use another (tests, tools).
inline constexpr const char* DEFAULT_SOCKET_DIRECTORY = "/dev/shm";
inline constexpr const char* CONTROL_SOCKET_NAME = "ipc.socket";
inline constexpr const char* DEMUX_SOCKET_NAME = "ipcdemux.socket";
// Names the socket directory for clients, tools and the simulator, so a user
// running a simulator elsewhere sets it once. The bridge inside a host never
// reads it: there its paths are fixed.
inline constexpr const char* SOCKET_DIRECTORY_VARIABLE = "TESSARINE_SOCKET_DIR";
// The production paths: the directory and the names.
inline constexpr const char* CONTROL_SOCKET_PATH = "/dev/shm/ipc.socket";
inline constexpr const char* DEMUX_SOCKET_PATH = "/dev/shm/ipcdemux.socket";

namespace sockets {
constexpr bool joins(std::string_view path, std::string_view directory, std::string_view name) {
    return path.size() == directory.size() + 1 + name.size() && path.substr(0, directory.size()) == directory &&
           path[directory.size()] == '/' && path.substr(directory.size() + 1) == name;
}
}  // namespace sockets

static_assert(sockets::joins(CONTROL_SOCKET_PATH, DEFAULT_SOCKET_DIRECTORY, CONTROL_SOCKET_NAME) &&
                  sockets::joins(DEMUX_SOCKET_PATH, DEFAULT_SOCKET_DIRECTORY, DEMUX_SOCKET_NAME),
              "the production paths are the directory and the names");
static_assert(std::string_view(DEMUX_SOCKET_PATH).size() <= MAX_SOCKET_PATH_LENGTH, "the paths fit an address");

}  // namespace tessarine
