#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

namespace tessarine {
namespace sim {

// Runs tasks at their time on one simulator thread, the way a middleware
// raises its notices on a thread of its own. Tasks run without the
// scheduler's lock, so a task may schedule another.
class Scheduler {
public:
    using Clock = std::chrono::steady_clock;

    Scheduler();
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    void at(Clock::time_point when, std::function<void()> task);
    void after(std::chrono::duration<double> delay, std::function<void()> task);

    // Waits for a task in progress and drops the rest; later tasks are ignored.
    void stop();

private:
    struct Entry {
        Clock::time_point when;
        unsigned long order;  // keeps tasks due at the same time in order
        std::function<void()> task;
        bool operator>(const Entry& other) const {
            return when != other.when ? when > other.when : order > other.order;
        }
    };

    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<Entry>> queue_;
    unsigned long nextOrder_ = 0;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace sim
}  // namespace tessarine
