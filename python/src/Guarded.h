#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace tessarine {
namespace python {

// Owns an object that calls from several threads use, and destroys it once
// the calls in flight are done. Python may close a client while another
// Python thread is inside one of its calls (with the GIL released).
template <typename T>
class Guarded {
public:
    explicit Guarded(std::unique_ptr<T> object) : object_(std::move(object)) {}
    ~Guarded() { close(); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    // Runs use(object); false, without running it, once closing began.
    template <typename Use>
    bool use(Use&& use) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (closing_) return false;
            ++users_;
        }
        struct Leave {
            Guarded& guarded;
            ~Leave() {
                std::lock_guard<std::mutex> lock(guarded.mutex_);
                if (--guarded.users_ == 0) guarded.idle_.notify_all();
            }
        } leave{*this};
        use(*object_);
        return true;
    }

    // Refuses new calls, waits for the calls in flight, destroys the object.
    void close() {
        std::unique_ptr<T> object;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            closing_ = true;
            idle_.wait(lock, [&] { return users_ == 0; });
            object.swap(object_);
        }
    }

private:
    std::mutex mutex_;
    std::condition_variable idle_;
    int users_ = 0;
    bool closing_ = false;
    std::unique_ptr<T> object_;
};

}  // namespace python
}  // namespace tessarine
