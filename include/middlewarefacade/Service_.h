#pragma once

#include <string>

namespace middlewarefacade {

// A service as the SI facade gives it. Field order is the binary contract.
struct Service_ {
    int value0;
    int value1;
    int value2;
    std::string text0;
    int value3;
    int value4;
    std::string text1;  // not carried to the client
};

}  // namespace middlewarefacade
