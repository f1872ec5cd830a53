#pragma once

#include <string>

#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// Receives carousel download notices. Slot order is the binary contract;
// no virtual destructor (it would take slots).
class MIDDLEWAREFACADE_API CarouselListener {
public:
    virtual void downloadComplete(std::string first) = 0;                      // slot 0
    virtual void downloadComplete(std::string first, std::string second) = 0;  // slot 1

protected:
    ~CarouselListener() = default;
};

}  // namespace middlewarefacade
