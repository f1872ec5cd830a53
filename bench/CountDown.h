#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tessarine {
namespace bench {

// Counts what arrives on another thread (events, bytes) and wakes a waiter
// once an expected total is reached, without the waiter spinning on a CPU
// the measured threads need.
class CountDown {
public:
    // Starts a new count towards `total`.
    void expect(std::uint64_t total) {
        std::lock_guard<std::mutex> lock(mutex_);
        count_ = 0;
        total_ = total;
    }
    void add(std::uint64_t amount = 1) {
        std::lock_guard<std::mutex> lock(mutex_);
        const bool wasShort = count_ < total_;
        count_ += amount;
        if (wasShort && count_ >= total_) reached_.notify_all();
    }
    // False when `patience` ran out first.
    bool wait(std::chrono::milliseconds patience) {
        std::unique_lock<std::mutex> lock(mutex_);
        return reached_.wait_for(lock, patience, [this] { return count_ >= total_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable reached_;
    std::uint64_t count_ = 0;
    std::uint64_t total_ = 0;
};

}  // namespace bench
}  // namespace tessarine
