#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

#include "tessarine/Export.h"
#include "tessarine/IpcListener.h"
#include "tessarine/SendBatch.h"
#include "tessarine/ServerSocket.h"
#include "tessarine/message.h"
#include "tessarine/protocol/Sockets.h"

namespace tessarine {

// Owns one Unix-domain stream socket and serves one client at a time on a
// receive thread: cuts the stream into 1960-byte records, hands each to the
// listener, reports connection start and end, and sends records back.
class TESSARINE_API IpcServer {
public:
    // Copies `path`; `length` characters of it are used. A length above 107
    // (a socket path holds 108 bytes with its NUL) or below 0 rejects the
    // path, which start() then reports. `listener` is not owned; null
    // discards every record.
    IpcServer(IpcListener* listener, const char* path, int length);
    virtual ~IpcServer();

    IpcServer(const IpcServer&) = delete;
    IpcServer& operator=(const IpcServer&) = delete;

    // Opens, binds and listens (backlog 1), then starts the receive thread.
    // Does nothing while running. Failures are written to stderr with the
    // system's error text and leave the server stopped.
    void start();

    // Ends the receive thread and closes both descriptors. A connection ended
    // this way gets neither the end-of-connection record nor
    // clientDisconnected(). Does nothing when not running. Must not be called
    // from the receive thread.
    void stop();

    // Sends one whole record to the connected client. False (and "Can't send
    // message" on stderr) when it could not be sent whole. A client that
    // takes none of it for 5 seconds is dropped: its connection is shut down
    // and ends as if the client had gone.
    bool sendMessage(message& record);
    // Sends raw bytes as they are. False (and "Can't send raw message") when
    // they could not be sent whole.
    bool sendMessage(const void* data, unsigned int length);
    // Sends a batch contiguously under one hold of the send lock. The first
    // piece that could not be sent is reported (one line for the batch), and
    // the rest is not attempted. Returns whether the whole batch was sent.
    bool send(const SendBatch& batch);

    // Receive-thread body; `self` is the server. Returns null.
    static void* run(void* self);

    bool isRunning() const { return running_.load(); }
    const std::string& path() const { return path_; }

private:
    friend class AnswerStream;  // sends under a hold of the send lock it keeps

    void serve();
    // Serves the connection; false when stop() ended it.
    bool serveClient();
    // Hands a record to the listener; an exception from it is reported, not passed on.
    void deliver(message& record);
    // Writes to the client under the send lock; the bytes written, with errno
    // set by the failed call when short. A connection that failed a send is
    // dropped: shut down, so that the receive thread ends it.
    std::size_t writeToClient(const unsigned char* data, std::size_t length);
    // send() with the send lock already held.
    bool sendLocked(const SendBatch& batch);
    void closeClient();

    IpcListener* listener_;
    std::thread thread_;
    std::mutex sendLock_;  // one record or batch leaves whole under it; held to close the client
    std::atomic<bool> running_{false};
    // Set when a send to the connected client failed; its queued requests
    // are then not served. Cleared for each new connection.
    std::atomic<bool> dropped_{false};
    bool pathValid_;
    std::string path_;
    int pathLength_;
    ServerSocket socket_;
};

}  // namespace tessarine
