#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include "tessarine/FileDescriptor.h"

namespace tessarine {

// The listening socket and the one connected client of a socket server, with
// the wake-up that lets stop() end a thread blocked in accept, a receive or a
// send. Shared by the control and the demux server.
class ServerSocket {
public:
    // Creates, binds (the first `length` characters of `path`) and listens
    // with a backlog of 1; clears a previous stop. Failures are written to
    // stderr with the system's error text; false then.
    bool open(const std::string& path, std::size_t length);

    // Waits for the next client and keeps its descriptor. False when
    // interrupt() was called (a client accepted meanwhile is closed), or when
    // accept failed ("Can't accept new connections" on stderr).
    bool accept();

    // The connected client's descriptor, -1 between connections.
    int client() const;

    // True once interrupt() was called, until the next open().
    bool interrupted() const;

    // Marks the socket stopped and shuts both descriptors down, so that a
    // thread blocked on either returns. Safe from any thread.
    void interrupt();

    // Closes the client's descriptor; a later accept() takes the next client.
    void closeClient();
    // Closes both descriptors.
    void closeAll();

private:
    mutable std::mutex lock_;
    bool interrupted_ = false;
    FileDescriptor listen_;
    FileDescriptor client_;
};

}  // namespace tessarine
