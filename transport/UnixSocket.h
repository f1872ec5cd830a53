#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "tessarine/FileDescriptor.h"
#include "tessarine/protocol/Limits.h"

namespace tessarine {
namespace unix_socket {

// A Unix-domain stream socket (close-on-exec, so a host's child processes
// never inherit it). Invalid, with "Can't create socket" on stderr, on failure.
FileDescriptor create();

// Removes a stale file at the path, binds the first `length` characters of
// `path` and listens with LISTEN_BACKLOG. Reports "Can't bind filename" or
// "Can't listen socket" with the system's error text and returns false.
bool bindAndListen(int fd, const std::string& path, std::size_t length);

// Accepts one connection (close-on-exec), retrying on EINTR. -1 on failure.
int acceptClient(int listenFd);

// Bytes of a control connection's stream that the kernel may hold unread by
// the client (it doubles the figure for its bookkeeping). At the system's
// default (about 208 KiB) the server thread waited for room 30 to 50 times
// in a 10 000-service answer; with this, a 1000-record answer leaves without
// waiting. Bounded, because a client that stops reading keeps it queued
// until the connection is dropped.
constexpr int CONTROL_SEND_BUFFER = 1024 * 1024;

// Asks the kernel for a send buffer of `bytes` on `fd`. Best effort: the
// system caps it (net.core.wmem_max) and a refusal leaves the default.
void setSendBuffer(int fd, int bytes);

// SEND_TIME_LIMIT in the unit sendAll takes, for both servers.
constexpr int STALL_LIMIT_MS = static_cast<int>(std::chrono::milliseconds(SEND_TIME_LIMIT).count());

// Sends all bytes with MSG_NOSIGNAL (never SIGPIPE), continuing after partial
// sends and EINTR. With `stallLimitMs` at 0 or more it gives up when no byte
// has gone for that long (errno EAGAIN); below 0 it waits as long as it takes.
// Returns the number sent; below `length`, errno says why.
std::size_t sendAll(int fd, const void* data, std::size_t length, int stallLimitMs = -1);

// Receives until `length` bytes have arrived, the peer closes, or an error.
// Returns the number received; below `length`, errno says why (0 on close).
std::size_t receiveAll(int fd, void* data, std::size_t length);

}  // namespace unix_socket
}  // namespace tessarine
