#include "sim/Scheduler.h"

#include <algorithm>

namespace tessarine {
namespace sim {

Scheduler::Scheduler() : thread_([this] { run(); }) {}

Scheduler::~Scheduler() { stop(); }

void Scheduler::at(Clock::time_point when, std::function<void()> task, Group group) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_) return;
        queue_.push_back({when, nextOrder_++, std::move(task), group});
        std::push_heap(queue_.begin(), queue_.end(), std::greater<Entry>());
    }
    changed_.notify_all();
}

void Scheduler::after(std::chrono::duration<double> delay, std::function<void()> task, Group group) {
    at(Clock::now() + std::chrono::duration_cast<Clock::duration>(delay), std::move(task), group);
}

void Scheduler::cancel(Group group) {
    std::lock_guard<std::mutex> lock(mutex_);
    queue_.erase(std::remove_if(queue_.begin(), queue_.end(), [group](const Entry& e) { return e.group == group; }),
                 queue_.end());
    std::make_heap(queue_.begin(), queue_.end(), std::greater<Entry>());
}

std::size_t Scheduler::queued() {
    std::lock_guard<std::mutex> lock(mutex_);
    return queue_.size();
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
        // A copy: the queue may change, and move its entries, while we wait.
        const Clock::time_point due = queue_.front().when;
        if (Clock::now() < due) {
            changed_.wait_until(lock, due);
            continue;
        }
        std::pop_heap(queue_.begin(), queue_.end(), std::greater<Entry>());
        auto task = std::move(queue_.back().task);
        queue_.pop_back();
        lock.unlock();
        task();
        lock.lock();
    }
}

}  // namespace sim
}  // namespace tessarine
