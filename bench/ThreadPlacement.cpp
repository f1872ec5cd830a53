#include "bench/ThreadPlacement.h"

#include <dirent.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>

namespace tessarine {
namespace bench {

namespace {

// The placement in force, if any (cases run one at a time).
std::atomic<ThreadPlacement*> active{nullptr};

std::vector<pid_t> threadsOfThisProcess() {
    std::vector<pid_t> threads;
    std::unique_ptr<DIR, int (*)(DIR*)> tasks(::opendir("/proc/self/task"), ::closedir);
    if (!tasks) return threads;
    while (const dirent* entry = ::readdir(tasks.get())) {
        if (entry->d_name[0] != '.') threads.push_back(static_cast<pid_t>(std::atoi(entry->d_name)));
    }
    return threads;
}

cpu_set_t only(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    return set;
}

// A processor this thread may use other than `here`, or -1.
int anotherProcessor(int here) {
    cpu_set_t allowed;
    if (::sched_getaffinity(0, sizeof allowed, &allowed) != 0) return -1;
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (processor != here && CPU_ISSET(processor, &allowed)) return processor;
    }
    return -1;
}

}  // namespace

bool ThreadPlacement::possible(Layout layout) {
    const int here = ::sched_getcpu();
    return here >= 0 && (layout == Layout::OneProcessor || anotherProcessor(here) >= 0);
}

ThreadPlacement::ThreadPlacement(Layout layout) : caller_(::gettid()) {
    const int here = ::sched_getcpu();
    if (here < 0 || ::sched_getaffinity(0, sizeof callerBefore_, &callerBefore_) != 0) return;
    int far = here;
    if (layout == Layout::EndsApart) {
        far = anotherProcessor(here);
        if (far < 0) return;
        callerProcessor_ = here;
    }
    const cpu_set_t target = only(far);
    bool refused = false;
    for (const pid_t thread : threadsOfThisProcess()) {
        cpu_set_t before;
        if (::sched_getaffinity(thread, sizeof before, &before) != 0) continue;  // it has ended
        if (::sched_setaffinity(thread, sizeof target, &target) != 0) {
            refused = true;
            continue;
        }
        previous_.emplace_back(thread, before);
    }
    // Without the thread list nothing was placed, not even this thread.
    placed_ = !refused && !previous_.empty();
    active.store(this);
}

ThreadPlacement::~ThreadPlacement() {
    active.store(nullptr);
    for (const pid_t thread : threadsOfThisProcess()) {
        const cpu_set_t* mask = &callerBefore_;  // a thread started during the case
        for (const auto& [known, before] : previous_) {
            if (known == thread) mask = &before;
        }
        ::sched_setaffinity(thread, sizeof *mask, mask);
    }
}

void ThreadPlacement::settleCaller() {
    ThreadPlacement* placement = active.load();
    if (placement == nullptr || placement->callerProcessor_ < 0 || ::gettid() != placement->caller_) return;
    const cpu_set_t own = only(placement->callerProcessor_);
    if (::sched_setaffinity(0, sizeof own, &own) != 0) placement->placed_ = false;
}

}  // namespace bench
}  // namespace tessarine
