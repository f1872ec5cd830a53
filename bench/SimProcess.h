#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tessarine {
namespace bench {

// tessarine-sim as a separate process, the bridge process a receiver would
// run, serving from `socketDirectory`. Stopped with SIGTERM, as at a
// receiver's shutdown, when this object goes.
class SimProcess {
public:
    SimProcess(const std::string& socketDirectory, const std::vector<std::string>& extraArguments);
    ~SimProcess();
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    // True once the simulator said it serves; false if it ended first.
    bool ready() const { return ready_; }
    // The resident set of the process in KiB (VmRSS), or -1.
    long residentKib() const;

private:
    pid_t pid_ = -1;
    bool ready_ = false;
};

}  // namespace bench
}  // namespace tessarine
