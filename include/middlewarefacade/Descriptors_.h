#pragma once

#include <list>

namespace middlewarefacade {

// A raw descriptor as the SI facade gives it. Field order is the binary contract.
struct Descriptors_ {
    unsigned short id;
    std::list<unsigned char> data;
};

}  // namespace middlewarefacade
