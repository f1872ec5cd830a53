#include "EventQueue.h"

namespace tessarine {
namespace python {

void EventQueue::push(Event event) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) return;
        if (events_.size() == CAPACITY) events_.pop_front();
        events_.push_back(std::move(event));
    }
    arrived_.notify_all();
}

std::optional<Event> EventQueue::pop(Clock::time_point until) {
    std::unique_lock<std::mutex> lock(mutex_);
    arrived_.wait_until(lock, until, [&] { return closed_ || !events_.empty(); });
    if (closed_ || events_.empty()) return std::nullopt;
    Event event = std::move(events_.front());
    events_.pop_front();
    return event;
}

void EventQueue::close() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        events_.clear();
    }
    arrived_.notify_all();
}

bool EventQueue::closed() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return closed_;
}

}  // namespace python
}  // namespace tessarine
