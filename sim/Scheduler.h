#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
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

    // Tasks may belong to a group, whose queued tasks cancel() drops at once:
    // a task made stale (a client gone, a player stopped) must not wait in
    // the queue until its time, or repeated requests pile them up.
    using Group = unsigned;
    static constexpr Group NO_GROUP = 0;
    Group newGroup() { return ++lastGroup_; }

    void at(Clock::time_point when, std::function<void()> task, Group group = NO_GROUP);
    void after(std::chrono::duration<double> delay, std::function<void()> task, Group group = NO_GROUP);
    // Drops the group's tasks still queued; one already running finishes.
    void cancel(Group group);
    std::size_t queued();

    // Waits for a task in progress and drops the rest; later tasks are ignored.
    void stop();

private:
    struct Entry {
        Clock::time_point when;
        unsigned long order;  // keeps tasks due at the same time in order
        std::function<void()> task;
        Group group;
        bool operator>(const Entry& other) const {
            return when != other.when ? when > other.when : order > other.order;
        }
    };

    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    // A heap ordered by std::greater, so the earliest task is at the front;
    // a plain vector so that cancel() can remove from it.
    std::vector<Entry> queue_;
    unsigned long nextOrder_ = 0;
    std::atomic<Group> lastGroup_{NO_GROUP};
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace sim
}  // namespace tessarine
