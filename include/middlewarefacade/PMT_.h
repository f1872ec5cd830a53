#pragma once

namespace middlewarefacade {

// A program map table entry as the SI facade gives it. Field order is the binary contract.
struct PMT_ {
    int value0;
    int value1;
    int value2;
    int value3;
};

}  // namespace middlewarefacade
