#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "tessarine/FileDescriptor.h"

namespace tessarine {
namespace client {
namespace detail {

using Clock = std::chrono::steady_clock;

enum class IoStatus { Ok, Closed, TimedOut, Failed };

// Connects a Unix stream socket to `path` before `deadline`. Returns the
// descriptor (blocking, close-on-exec), or an invalid one with errno set; a
// bridge whose one-connection backlog stays full until the deadline gives
// ETIMEDOUT.
FileDescriptor connectUnix(const std::string& path, Clock::time_point deadline);

// Writes every byte, waiting for room until `deadline`. Never raises SIGPIPE.
IoStatus writeAll(int fd, const void* data, std::size_t length, Clock::time_point deadline);

// Reads exactly `length` bytes. Without a deadline it blocks until they are
// there or the peer closes (a shutdown from another thread ends it).
IoStatus readExact(int fd, void* data, std::size_t length, std::optional<Clock::time_point> deadline = std::nullopt);

// Milliseconds left until `deadline`, at least 0, for poll().
int millisecondsUntil(Clock::time_point deadline);

}  // namespace detail
}  // namespace client
}  // namespace tessarine
