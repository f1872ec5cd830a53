#pragma once

namespace middlewarefacade {

// A service component as the SI facade gives it. Field order is the binary contract.
struct ServiceComponent_ {
    int value0;
    int value1;
    int value2;
    int value3;
    int value4;
    int value5;
};

}  // namespace middlewarefacade
