#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace tessarine {
namespace client {
namespace detail {

// The one thread on which a client runs its callbacks, in arrival order.
// Work is queued without blocking the reader; it runs with no lock held, so
// a callback may call the client.
class EventDispatcher {
public:
    EventDispatcher();
    // Stops the thread; work still queued is dropped. From the dispatcher
    // thread itself (a callback destroying its client) the thread is left to
    // finish the running callback on its own.
    ~EventDispatcher();
    EventDispatcher(const EventDispatcher&) = delete;
    EventDispatcher& operator=(const EventDispatcher&) = delete;

    void post(std::function<void()> work);
    // Waits until nothing is queued or running, or `deadline` passes; false
    // then. From the dispatcher thread it returns at once (false).
    bool drain(std::chrono::steady_clock::time_point deadline);
    bool onDispatcherThread() const { return std::this_thread::get_id() == thread_.get_id(); }

private:
    // Shared with the thread, so that a detached thread never touches a
    // destroyed dispatcher.
    struct State {
        std::mutex mutex;
        std::condition_variable wake;
        std::condition_variable idle;
        std::deque<std::function<void()>> queue;
        bool running = false;  // a piece of work is running
        bool stopping = false;
    };
    static void run(std::shared_ptr<State> state);

    std::shared_ptr<State> state_;
    std::thread thread_;
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
