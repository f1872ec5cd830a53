#pragma once

#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// Receives end-of-media notices for a player handle. Slot order is the binary contract.
class MIDDLEWAREFACADE_API MediaListener {
public:
    virtual void endOfMedia(int handle) = 0;  // slot 0

protected:
    ~MediaListener() = default;
};

}  // namespace middlewarefacade
