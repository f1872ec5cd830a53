#include "sim/Scheduler.h"

namespace tessarine {
namespace sim {

Scheduler::Scheduler() : thread_([this] { run(); }) {}

Scheduler::~Scheduler() { stop(); }

void Scheduler::at(Clock::time_point when, std::function<void()> task) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_) return;
        queue_.push({when, nextOrder_++, std::move(task)});
    }
    changed_.notify_all();
}

void Scheduler::after(std::chrono::duration<double> delay, std::function<void()> task) {
    at(Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), std::move(task));
}

void Scheduler::stop() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) thread_.join();
}

void Scheduler::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopping_) {
        if (queue_.empty()) {
            changed_.wait(lock);
            continue;
        }
        // A copy: the queue may grow, and move its entries, while we wait.
        const Clock::time_point due = queue_.top().when;
        if (Clock::now() < due) {
            changed_.wait_until(lock, due);
            continue;
        }
        auto task = std::move(const_cast<Entry&>(queue_.top()).task);
        queue_.pop();
        lock.unlock();
        task();
        lock.lock();
    }
}

}  // namespace sim
}  // namespace tessarine
