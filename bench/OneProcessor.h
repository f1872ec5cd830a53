#pragma once

#include <sched.h>
#include <sys/types.h>

#include <utility>
#include <vector>

namespace tessarine {
namespace bench {

// Keeps every thread of this process (those that exist now, and those they
// start, which inherit it) on the processor the constructing thread runs
// on, and gives each thread its previous processors back when destroyed.
// With both ends of a round trip on one processor no wake-up crosses
// processors, so the figure shows the work each end does, not what a
// virtual machine's sleeping processors take to wake.
class OneProcessor {
public:
    OneProcessor();
    ~OneProcessor();
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

    // False when the process could not be confined (its figures then mean
    // nothing more than the unconfined case's).
    bool confined() const { return confined_; }

private:
    std::vector<std::pair<pid_t, cpu_set_t>> previous_;
    bool confined_ = false;
};

}  // namespace bench
}  // namespace tessarine
