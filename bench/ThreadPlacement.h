#pragma once

#include <sched.h>
#include <sys/types.h>

#include <utility>
#include <vector>

namespace tessarine {
namespace bench {

// Keeps the threads of this process on chosen processors for one case, and
// gives them their processors back when destroyed (threads started during
// the case get the processors the constructing thread had). Left alone, the
// scheduler sometimes runs both ends of a round trip on one processor and
// sometimes on two, and on this kind of virtual machine the two differ by a
// factor of two or more; a fixed placement shows the work of the two ends
// under one known layout.
class ThreadPlacement {
public:
    enum class Layout {
        // Every thread on the processor the constructing thread runs on: no
        // wake-up crosses processors.
        OneProcessor,
        // The calling thread on its processor, every other thread on another
        // one: every request and every answer crosses processors.
        EndsApart,
    };

    // Whether this process may use the processors `layout` needs.
    static bool possible(Layout layout);

    explicit ThreadPlacement(Layout layout);
    ~ThreadPlacement();
    ThreadPlacement(const ThreadPlacement&) = delete;
    ThreadPlacement& operator=(const ThreadPlacement&) = delete;

    // False when the threads could not be placed (the case's figures would
    // then mean nothing more than the unplaced case's).
    bool placed() const { return placed_; }

    // With EndsApart, until this is called the constructing thread stays
    // with the others, so the threads a case starts while it sets up (a raw
    // peer, a client's reader) join the far end; then it moves to its own
    // processor. Called when a case's timing begins; without a placement in
    // force, or from another thread, it does nothing.
    static void settleCaller();

private:
    std::vector<std::pair<pid_t, cpu_set_t>> previous_;
    cpu_set_t callerBefore_{};
    pid_t caller_ = 0;
    int callerProcessor_ = -1;  // where settleCaller() moves the caller; -1: stays
    bool placed_ = false;
};

}  // namespace bench
}  // namespace tessarine
