#pragma once

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

#include "bench/CountDown.h"
#include "tests/support/TempDir.h"
#include "tessarine/FileDescriptor.h"

namespace tessarine {
namespace bench {

// The baseline: the best this machine does with the same socket kind as the
// bridge (a Unix stream socket bound in a private directory), with nothing
// but the system calls in between. A thread on the far end either answers
// every request of `requestSize` bytes with `answer` in one send, or, with
// a request size of 0, only reads, in large reads, counting the bytes.
class RawPeer {
public:
    RawPeer(std::size_t requestSize, std::vector<unsigned char> answer);
    ~RawPeer();
    RawPeer(const RawPeer&) = delete;
    RawPeer& operator=(const RawPeer&) = delete;

    // The near end, connected.
    int fd() const { return near_.get(); }
    // What the reading far end has taken in, in bytes (request size 0 only).
    CountDown& received() { return received_; }

    // Sends and receives exactly `length` bytes; aborts on failure, which
    // would make every figure meaningless.
    static void sendAll(int fd, const void* data, std::size_t length);
    static void receiveAll(int fd, void* data, std::size_t length);

private:
    void serve();

    testing::TempDir directory_;
    std::size_t requestSize_;
    std::vector<unsigned char> answer_;
    FileDescriptor near_;
    FileDescriptor far_;
    CountDown received_;
    std::thread thread_;
};

}  // namespace bench
}  // namespace tessarine
