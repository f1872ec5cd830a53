#pragma once

#include <string>

namespace middlewarefacade {

// The network as the SI facade gives it. Field order is the binary contract.
struct Network_ {
    std::string text0;
    int value0;
};

}  // namespace middlewarefacade
