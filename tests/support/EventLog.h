#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace tessarine {
namespace testing {

// A thread-safe log that a test can wait on: entries appended by server
// threads, read by the test thread with a time limit.
template <typename Entry>
class EventLog {
public:
    void push(Entry entry) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            entries_.push_back(std::move(entry));
        }
        changed_.notify_all();
    }

    // Waits until at least `count` entries are logged; false on time-out.
    bool waitFor(std::size_t count, std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return entries_.size() >= count; });
    }

    std::vector<Entry> snapshot() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_;
    }
    std::size_t size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_.size();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Entry> entries_;
};

}  // namespace testing
}  // namespace tessarine
