#include "bench/OneProcessor.h"

#include <dirent.h>

#include <cstdlib>
#include <memory>

namespace tessarine {
namespace bench {

namespace {

std::vector<pid_t> threadsOfThisProcess() {
    std::vector<pid_t> threads;
    std::unique_ptr<DIR, int (*)(DIR*)> tasks(::opendir("/proc/self/task"), ::closedir);
    if (!tasks) return threads;
    while (const dirent* entry = ::readdir(tasks.get())) {
        if (entry->d_name[0] != '.') threads.push_back(static_cast<pid_t>(std::atoi(entry->d_name)));
    }
    return threads;
}

}  // namespace

OneProcessor::OneProcessor() {
    const int here = ::sched_getcpu();
    if (here < 0) return;
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(here, &only);
    bool refused = false;
    for (const pid_t thread : threadsOfThisProcess()) {
        cpu_set_t before;
        if (::sched_getaffinity(thread, sizeof before, &before) != 0) continue;  // it has ended
        if (::sched_setaffinity(thread, sizeof only, &only) != 0) {
            refused = true;
            continue;
        }
        previous_.emplace_back(thread, before);
    }
    // Without the thread list nothing was confined, not even this thread.
    confined_ = !refused && !previous_.empty();
}

OneProcessor::~OneProcessor() {
    for (const auto& [thread, before] : previous_) ::sched_setaffinity(thread, sizeof before, &before);
}

}  // namespace bench
}  // namespace tessarine
