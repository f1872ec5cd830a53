#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "transport/PcapngWriter.h"

namespace tessarine {

// Copies the traffic of both channels into a pcapng file without holding up
// the threads that serve them: a record is copied into a bounded queue, and
// one writer thread empties the queue into the file. A record that finds the
// queue full is dropped and counted; the counts go into the file's closing
// statistics and onto stderr when the capture ends.
class CaptureTap {
public:
    enum Channel : std::uint32_t { CONTROL = 0, SECTIONS = 1 };  // the interface ids of the file

    static constexpr std::uint64_t DEFAULT_MAX_BYTES = 64ull << 20;
    static constexpr std::size_t DEFAULT_QUEUE_BYTES = 4u << 20;
    // How often the writer empties the queue when it is not woken earlier: a
    // killed host loses at most this much.
    static constexpr std::chrono::milliseconds WRITE_INTERVAL{200};

    explicit CaptureTap(std::size_t queueBytes = DEFAULT_QUEUE_BYTES);
    ~CaptureTap();
    CaptureTap(const CaptureTap&) = delete;
    CaptureTap& operator=(const CaptureTap&) = delete;

    // The process's tap, the one the servers feed (built on first use).
    static CaptureTap& global();
    // Whether the process's tap takes records: the whole cost of a hook while off.
    static bool capturing() { return globalActive_.load(std::memory_order_relaxed); }

    // Starts writing to `path`, at most `maxBytes` bytes (0: the default).
    // False, with one line on stderr, when the file cannot be created, or
    // when a capture is already running.
    bool start(const std::string& path, std::uint64_t maxBytes);
    // Writes what is queued and the closing statistics, joins the writer and
    // closes the file; reports the drops on stderr. Nothing when not started.
    void stop();
    bool active() const { return active_.load(std::memory_order_relaxed); }

    // Queues a copy of one record, command or answer (any thread, never blocks for I/O).
    void record(Channel channel, std::uint32_t direction, const void* data, std::size_t length);

    std::uint64_t dropped() const;

private:
    struct Entry {
        std::uint64_t micros;
        Channel channel;
        std::uint32_t direction;
        std::vector<unsigned char> bytes;
    };

    void writeLoop();
    // Writes `entries`; false when the capture has ended (limit or write error).
    bool writeEntries(std::vector<Entry>& entries);
    void writeClosing(const std::string& note);

    struct Global {};
    CaptureTap(Global, std::size_t queueBytes);

    // The process's tap's flag, constant-initialised so that a hook may read
    // it before any dynamic initialisation.
    static std::atomic<bool> globalActive_;

    const std::size_t queueLimit_;
    std::atomic<bool> ownActive_{false};
    std::atomic<bool>& active_;  // ownActive_, or globalActive_ for the process's tap
    std::mutex control_;  // one start or stop at a time
    mutable std::mutex lock_;  // guards the queue, the counts and stopping_
    std::condition_variable wake_;
    std::vector<Entry> queue_;
    std::size_t queuedBytes_ = 0;
    std::uint64_t dropped_[2] = {0, 0};
    bool stopping_ = false;
    bool wakeRequested_ = false;  // the queue passed half full since the writer last took it
    std::thread writer_;
    PcapngWriter file_;  // the writer thread's alone while it runs
    std::string path_;
    std::uint64_t maxBytes_ = DEFAULT_MAX_BYTES;
    std::uint64_t packets_ = 0;
    std::string endNote_;  // why the capture ended before stop(), if it did
};

}  // namespace tessarine
