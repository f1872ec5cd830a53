#include "EventDispatcher.h"

namespace tessarine {
namespace client {
namespace detail {

EventDispatcher::EventDispatcher() : state_(std::make_shared<State>()), thread_(run, state_) {}

EventDispatcher::~EventDispatcher() {
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopping = true;
        state_->queue.clear();
    }
    state_->wake.notify_all();
    if (onDispatcherThread()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void EventDispatcher::post(std::function<void()> work) {
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        if (state_->stopping) return;
        state_->queue.push_back(std::move(work));
    }
    state_->wake.notify_one();
}

bool EventDispatcher::drain(std::chrono::steady_clock::time_point deadline) {
    if (onDispatcherThread()) return false;
    std::unique_lock<std::mutex> lock(state_->mutex);
    return state_->idle.wait_until(lock, deadline, [&] { return state_->queue.empty() && !state_->running; });
}

void EventDispatcher::run(std::shared_ptr<State> state) {
    for (;;) {
        std::function<void()> work;
        {
            std::unique_lock<std::mutex> lock(state->mutex);
            state->running = false;
            if (state->queue.empty()) state->idle.notify_all();
            state->wake.wait(lock, [&] { return state->stopping || !state->queue.empty(); });
            if (state->stopping) return;
            work = std::move(state->queue.front());
            state->queue.pop_front();
            state->running = true;
        }
        work();
    }
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
