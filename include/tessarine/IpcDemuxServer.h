#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tessarine/ConnectionListener.h"
#include "tessarine/Export.h"
#include "tessarine/IpcDemuxServerListener.h"
#include "tessarine/ServerSocket.h"
#include "tessarine/protocol/Sockets.h"

namespace tessarine {

class ClientWatch;

// Serves the section-filter channel: a stream of 32-bit command words (host
// byte order) with their arguments, handed to one listener on the server's
// thread. Only read_section (13) is answered: the length, then the bytes.
class TESSARINE_API IpcDemuxServer {
public:
    // Serves DEMUX_SOCKET_PATH.
    IpcDemuxServer();
    // Serves another path (at most 107 characters), so tests and side-by-side
    // bridges do not touch the production socket.
    explicit IpcDemuxServer(std::string path);
    // Stops the server if it runs.
    virtual ~IpcDemuxServer();

    IpcDemuxServer(const IpcDemuxServer&) = delete;
    IpcDemuxServer& operator=(const IpcDemuxServer&) = delete;

    // Replaces the listener; null makes the server drop commands. Safe while
    // the server runs; a call in progress finishes with the listener it had.
    void setListener(IpcDemuxServerListener* listener);

    // Tells `listener` when a client connects and when it has gone: as soon
    // as its hang-up is seen, also while a command (a section read) is in
    // progress, from a thread of the server's own. A host whose section read
    // waits ends the wait then, so that a departed client cannot hold the
    // server's thread. Not told when stop() ends a connection. A call in
    // progress has ended when this returns; null (the default): nobody.
    void setConnectionListener(ConnectionListener* listener);

    // Opens, binds and listens (backlog 1), then starts the server thread.
    // Does nothing while running; failures are written to stderr.
    void start();

    // Ends the thread (also when blocked in accept, a receive or a send),
    // waits for it, then closes both descriptors. Does nothing when not
    // running. Must not be called from the server thread.
    void stop();

    // Server-thread body; `self` is the server. Returns null.
    static void* run(void* self);

    bool isRunning() const { return running_.load(); }
    const std::string& path() const { return path_; }

private:
    void serve();
    void serveClient();
    // Carries out one command; false when the connection must end.
    bool handleCommand(std::int32_t command);
    // Receives from the client; while capturing, keeps the bytes of the command.
    std::size_t receive(void* data, std::size_t length);
    // Hands the kept bytes of the command to the capture, once.
    void captureCommand();
    bool receiveWord(std::int32_t& value);
    // A command's value: false when it was cut inside (some bytes came).
    bool receiveValue(std::int32_t& value);
    bool receiveString(std::vector<unsigned char>& bytes);
    // False when the client did not take it whole: the connection then ends.
    bool sendSection(const std::vector<unsigned char>& section);

    std::atomic<IpcDemuxServerListener*> listener_{nullptr};
    std::string path_;
    std::atomic<bool> running_{false};
    std::thread thread_;
    ServerSocket socket_;
    std::unique_ptr<ClientWatch> watch_;
    bool capturing_ = false;               // the command being received is captured
    std::vector<unsigned char> command_;   // its bytes so far
};

}  // namespace tessarine
