#pragma once

#include <string>

namespace middlewarefacade {

// One system property. Field order is the binary contract (see Records.h).
struct Property_ {
    std::string name;
    std::string value;
};

}  // namespace middlewarefacade
