#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "tessarine/ConnectionListener.h"
#include "tessarine/FileDescriptor.h"

namespace tessarine {

// Tells a host's ConnectionListener when a section-filter client connects and
// when it has gone. The server's thread may then be inside a command that
// waits for that client (a section read), so the hang-up is watched on a
// thread of the watch's own, started with the first connection that has a
// listener and kept for the next ones: a connection costs a wake-up or two,
// a command nothing. The listener is called with the watch's lock held.
class ClientWatch {
public:
    ClientWatch() = default;
    ~ClientWatch();
    ClientWatch(const ClientWatch&) = delete;
    ClientWatch& operator=(const ClientWatch&) = delete;

    // Replaces the listener; a call to the old one has ended when this
    // returns, and it hears nothing more. Null: nothing is watched.
    void setListener(ConnectionListener* listener);

    // On the server's thread: a client was accepted on `fd`.
    void connected(int fd);
    // On the server's thread, before `fd` is closed: the connection ends.
    // The listener is told, unless it was told already or `report` is false.
    void disconnected(bool report);

    // Ends the watch's thread and watches nothing until resume().
    void stop();
    void resume();

private:
    void watch();
    void tellGone();
    void wake();

    std::mutex mutex_;
    std::condition_variable changed_;
    ConnectionListener* listener_ = nullptr;
    ConnectionListener* told_ = nullptr;  // told of the connection, not yet of its end
    int fd_ = -1;                         // the connection watched, -1 for none
    bool polling_ = false;                // the thread waits on fd_ and the wake pipe
    bool stopping_ = false;
    FileDescriptor wakeRead_, wakeWrite_;
    std::thread thread_;
};

}  // namespace tessarine
