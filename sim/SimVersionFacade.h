#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "middlewarefacade/VersionFacade.h"
#include "sim/RequestLog.h"

namespace tessarine {
namespace sim {

// Answers 1 for the flags the scenario sets, 0 for the others.
class SimVersionFacade final : public middlewarefacade::VersionFacade {
public:
    SimVersionFacade(std::vector<int> flags, RequestLog& log) : flags_(std::move(flags)), log_(log) {}

    int checkVersionFlag(int flag) override {
        const int set = std::find(flags_.begin(), flags_.end(), flag) != flags_.end() ? 1 : 0;
        log_.request(Family::Version, flag, [&] {
            return "flag " + std::to_string(flag) + " -> " + std::to_string(set);
        });
        return set;
    }

private:
    const std::vector<int> flags_;
    RequestLog& log_;
};

}  // namespace sim
}  // namespace tessarine
