#pragma once

#include <string>

namespace middlewarefacade {

// The transport stream as the SI facade gives it. Field order is the binary contract.
struct TransportStream_ {
    int value0;
    int value1;
    std::string text0;  // not carried to the client
    int reserved;       // never read
    int value3;
    int value4;         // carried only when 1, 2 or 3
    int value2;
};

}  // namespace middlewarefacade
